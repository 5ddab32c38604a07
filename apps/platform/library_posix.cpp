// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>

#include "platform/library.h"

namespace platform {

std::string LibraryFileName(const std::string& name) {
    return "lib" + name + ".so";
}

LibraryHandle OpenLibrary(const std::string& path, std::string& error, LibraryScope scope) {
    void* library =
        dlopen(path.c_str(), RTLD_NOW | (scope == LibraryScope::kGlobal ? RTLD_GLOBAL : RTLD_LOCAL));
    if (library == nullptr) {
        const char* text = dlerror();
        error = text != nullptr ? text : "unknown reason";
    }
    return library;
}

void* FindFunction(LibraryHandle library, const char* name) {
    return dlsym(library, name);
}

bool CloseLibrary(LibraryHandle library, const std::string& path) {
    dlclose(library);
    void* remaining = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (remaining != nullptr) {
        dlclose(remaining);
    }
    return remaining == nullptr;
}

}  // namespace platform
