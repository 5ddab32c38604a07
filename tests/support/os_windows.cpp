#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/support/os.h"

std::string NativePath(const std::string& path) {
    std::string native = !path.empty() && path[0] == '/' ? "Z:" + path : path;  // Wine shows '/' as drive Z
    for (char& c : native) {
        if (c == '/') c = '\\';
    }
    return native;
}

LoadedLibrary LoadLibraryFile(const std::string& path, std::string& reason) {
    HMODULE library = LoadLibraryA(NativePath(path).c_str());
    if (library == nullptr) reason = "LoadLibrary: error " + std::to_string(GetLastError());
    return reinterpret_cast<LoadedLibrary>(library);
}

bool UnloadLibraryFile(LoadedLibrary library, const std::string& path) {
    FreeLibrary(static_cast<HMODULE>(library));
    return GetModuleHandleA(path.c_str()) == nullptr;
}

void* FindSymbol(LoadedLibrary library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

void SetEnvironment(const char* name, const std::string& value) {
    _putenv_s(name, value.c_str());
    SetEnvironmentVariableA(name, value.empty() ? nullptr : value.c_str());
}

bool SetEmptyEnvironment(const char* /*name*/) {
    return false;
}

int ProcessId() {
    return _getpid();
}

void SetStreamError(std::FILE* stream) {
    stream->_flag |= _IOERR;
}

void AbandonStream(std::FILE* stream) {
    const int nowhere = _open("NUL", _O_RDWR | _O_BINARY);
    _dup2(nowhere, _fileno(stream));
    _close(nowhere);
    std::fclose(stream);
}

int RedirectStandardOutput(const std::string& path) {
    std::fflush(stdout);
    const int file =
        _open(path.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_APPEND | _O_BINARY, _S_IREAD | _S_IWRITE);
    if (file < 0) return -1;
    const int token = _dup(1);
    _dup2(file, 1);
    _close(file);
    return token;
}

void RestoreStandardOutput(int token) {
    std::fflush(stdout);
    _dup2(token, 1);
    _close(token);
}

void MakeCrashesQuiet() {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

void RaiseOpenFileLimit() {
    _setmaxstdio(2048);
}

void EndTestProgram(int exitCode) {
    (void)std::fflush(nullptr);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
    std::abort();
}

void CloseForgottenStreams() {
    _fcloseall();
}

std::vector<void**> ImportSlots(LoadedLibrary library, const char* name) {
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
