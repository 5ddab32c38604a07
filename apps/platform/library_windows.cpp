#include "platform/library.h"
#include "platform/windows_error.h"

namespace platform {

std::string LibraryFileName(const std::string& name) {
    return name + ".dll";
}

void* OpenLibrary(const std::string& path, std::string& error) {
    HMODULE library = LoadLibraryA(path.c_str());
    if (library == nullptr) error = DescribeSystemError(GetLastError());
    return reinterpret_cast<void*>(library);
}

void* FindFunction(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

}  // namespace platform
