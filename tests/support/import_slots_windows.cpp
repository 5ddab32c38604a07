// SPDX-License-Identifier: Apache-2.0
#include "tests/support/import_slots.h"

#include <windows.h>

#include <cstdint>
#include <cstring>

#include "platform/library.h"

std::vector<void**> ImportSlots(platform::LibraryHandle library, const char* name) {
    auto* base = static_cast<std::uint8_t*>(library);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    std::vector<void**> slots;
    if (imports.Size == 0) return slots;
    const auto* descriptor = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
    for (; descriptor->Name != 0; ++descriptor) {
        const auto* lookup =
            reinterpret_cast<const IMAGE_THUNK_DATA64*>(base + descriptor->OriginalFirstThunk);
        auto* address = reinterpret_cast<void**>(base + descriptor->FirstThunk);
        for (; lookup->u1.AddressOfData != 0; ++lookup, ++address) {
            if (IMAGE_SNAP_BY_ORDINAL64(lookup->u1.Ordinal)) continue;
            const auto* byName =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + lookup->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(byName->Name), name) == 0) slots.push_back(address);
        }
    }
    return slots;
}

void WriteImportSlot(void** slot, void* value) {
    DWORD before = 0;
    VirtualProtect(slot, sizeof(void*), PAGE_READWRITE, &before);
    *slot = value;
    VirtualProtect(slot, sizeof(void*), before, &before);
}
