// Libraries that are loaded at run time.
#pragma once

#include <string>

namespace platform {

/// Returns the file name of the library `name` on this system, such as "libname.so" or "name.dll".
[[nodiscard]] std::string LibraryFileName(const std::string& name);

/// Loads a library with all its imports bound, or returns the handle of one that is loaded already. Returns null
/// with the system's error in `error` when it fails.
[[nodiscard]] void* OpenLibrary(const std::string& path, std::string& error);

/// Returns the address of an exported function, or null if the library has none of that name.
[[nodiscard]] void* FindFunction(void* library, const char* name);

}  // namespace platform
