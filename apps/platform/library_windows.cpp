// SPDX-License-Identifier: Apache-2.0
#include "platform/library.h"
#include "platform/windows_text.h"

namespace platform {

std::string LibraryFileName(const std::string& name) {
    return name + ".dll";
}

LibraryHandle OpenLibrary(const std::string& path, std::string& error, LibraryScope /*scope*/) {
    HMODULE library = LoadLibraryA(path.c_str());
    if (library == nullptr) error = DescribeSystemError(GetLastError());
    return reinterpret_cast<LibraryHandle>(library);
}

void* FindFunction(LibraryHandle library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

bool CloseLibrary(LibraryHandle library, const std::string& path) {
    FreeLibrary(reinterpret_cast<HMODULE>(library));
    return GetModuleHandleA(path.c_str()) == nullptr;
}

}  // namespace platform
