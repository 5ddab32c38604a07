// SPDX-License-Identifier: Apache-2.0
#include "tests/support/import_patch.h"

#include "platform/library.h"
#include "tests/support/import_slots.h"

ImportPatch::ImportPatch(platform::LibraryHandle library, std::initializer_list<const char*> names,
                         void* replacement) {
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
