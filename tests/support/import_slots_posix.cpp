// SPDX-License-Identifier: Apache-2.0
#include "tests/support/import_slots.h"

#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "platform/library.h"

namespace {

/// Returns where an address of the dynamic section is in memory. glibc has already added the library's base
/// to it, but not every loader does.
std::uintptr_t Relocated(const link_map& map, std::uintptr_t address) {
    return address < map.l_addr ? map.l_addr + address : address;
}

struct DynamicTables {
    const Elf64_Sym* symbols = nullptr;
    const char* names = nullptr;
    const Elf64_Rela* plt = nullptr;
    std::size_t pltBytes = 0;
    const Elf64_Rela* data = nullptr;
    std::size_t dataBytes = 0;
};

/// Makes a pointer of an address, which the loader keeps as a number.
template <typename T>
T* PointerTo(std::uintptr_t address) {
    return reinterpret_cast<T*>(address);  // NOLINT(performance-no-int-to-ptr)
}

DynamicTables TablesOf(const link_map& map) {
    DynamicTables tables;
    for (const Elf64_Dyn* entry = map.l_ld; entry->d_tag != DT_NULL; ++entry) {
        const std::uintptr_t address = Relocated(map, entry->d_un.d_ptr);
        switch (entry->d_tag) {
            case DT_SYMTAB: tables.symbols = PointerTo<const Elf64_Sym>(address); break;
            case DT_STRTAB: tables.names = PointerTo<const char>(address); break;
            case DT_JMPREL: tables.plt = PointerTo<const Elf64_Rela>(address); break;
            case DT_PLTRELSZ: tables.pltBytes = entry->d_un.d_val; break;
            case DT_RELA: tables.data = PointerTo<const Elf64_Rela>(address); break;
            case DT_RELASZ: tables.dataBytes = entry->d_un.d_val; break;
            default: break;
        }
    }
    return tables;
}

void AddSlots(const link_map& map, const DynamicTables& tables, const Elf64_Rela* first, std::size_t bytes,
              const char* name, std::vector<void**>& slots) {
    for (std::size_t i = 0; first != nullptr && i < bytes / sizeof(Elf64_Rela); ++i) {
        const auto type = ELF64_R_TYPE(first[i].r_info);
        if (type != R_X86_64_JUMP_SLOT && type != R_X86_64_GLOB_DAT && type != R_X86_64_64) continue;
        const Elf64_Sym& symbol = tables.symbols[ELF64_R_SYM(first[i].r_info)];
        if (std::strcmp(tables.names + symbol.st_name, name) != 0) continue;
        slots.push_back(PointerTo<void*>(map.l_addr + first[i].r_offset));
    }
}

}  // namespace

std::vector<void**> ImportSlots(platform::LibraryHandle library, const char* name) {
    const auto& map = *static_cast<const link_map*>(library);
    const DynamicTables tables = TablesOf(map);
    std::vector<void**> slots;
    if (tables.symbols == nullptr || tables.names == nullptr) return slots;
    AddSlots(map, tables, tables.plt, tables.pltBytes, name, slots);
    AddSlots(map, tables, tables.data, tables.dataBytes, name, slots);
    return slots;
}

void WriteImportSlot(void** slot, void* value) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(slot) / page * page;
    // The page contains no code, so it need not be executable. It stays writable, because nothing in a test
    // depends on its protection.
    mprotect(PointerTo<void>(start), page, PROT_READ | PROT_WRITE);
    *slot = value;
}
