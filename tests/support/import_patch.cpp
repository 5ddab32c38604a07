#include "tests/support/import_patch.h"

ImportPatch::ImportPatch(LoadedLibrary library, std::initializer_list<const char*> names, void* replacement) {
    for (const char* name : names) {
        for (void** slot : ImportSlots(library, name)) {
            original_ = *slot;
            WriteImportSlot(slot, replacement);
            slots_.push_back(slot);
        }
    }
}

ImportPatch::~ImportPatch() {
    for (void** slot : slots_)
        WriteImportSlot(slot, original_);
}
