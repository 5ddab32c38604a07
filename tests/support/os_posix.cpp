#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "tests/support/os.h"

LoadedLibrary LoadLibraryFile(const std::string& path, std::string& reason) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) reason = dlerror();
    return library;
}

bool UnloadLibraryFile(LoadedLibrary library, const std::string& path) {
    dlclose(library);
    void* still = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (still != nullptr) dlclose(still);
    return still == nullptr;
}

void* FindSymbol(LoadedLibrary library, const char* name) {
    return dlsym(library, name);
}

std::string NativePath(const std::string& path) {
    return path;
}

void SetEnvironment(const char* name, const std::string& value) {
    if (value.empty()) {
        unsetenv(name);
    } else {
        setenv(name, value.c_str(), 1);
    }
}

bool SetEmptyEnvironment(const char* name) {
    return setenv(name, "", 1) == 0;
}

int ProcessId() {
    return getpid();
}

void SetStreamError(std::FILE* stream) {
    stream->_flags |= 0x20;
}  // glibc's _IO_ERR_SEEN

void AbandonStream(std::FILE* stream) {
    // A stream without a descriptor is the test's own, which sees to it that nothing is written.
    if (fileno(stream) >= 0) {
        const int nowhere = open("/dev/null", O_RDWR);
        dup2(nowhere, fileno(stream));
        close(nowhere);
    }
    std::fclose(stream);
}

int RedirectStandardOutput(const std::string& path) {
    std::fflush(stdout);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    if (file < 0) return -1;
    const int token = dup(STDOUT_FILENO);
    dup2(file, STDOUT_FILENO);
    close(file);
    return token;
}

void RestoreStandardOutput(int token) {
    std::fflush(stdout);
    dup2(token, STDOUT_FILENO);
    close(token);
}

void MakeCrashesQuiet() {}

void RaiseOpenFileLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

void EndTestProgram(int exitCode) {
    std::exit(exitCode);
}

void CloseForgottenStreams() {}

namespace {

/// The dynamic section's pointers are relocated by glibc, but not by every loader.
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

/// The loader keeps addresses as numbers.
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

std::vector<void**> ImportSlots(LoadedLibrary library, const char* name) {
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
    // The pages contain only pointers and stay writable. Nothing but the test depends on their protection.
    mprotect(PointerTo<void>(start), page, PROT_READ | PROT_WRITE);
    *slot = value;
}
