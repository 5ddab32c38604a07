// SPDX-License-Identifier: Apache-2.0

// Loads libraries at run time.
#pragma once

#include <string>

namespace platform {

/// Returns the file name of the library `name` on this system, such as "libname.so" or "name.dll".
[[nodiscard]] std::string LibraryFileName(const std::string& name);

using LibraryHandle = void*;

enum class LibraryScope {
    kLocal,   ///< its functions are found only through its handle
    kGlobal,  ///< libraries that are loaded later find its functions, too; on Windows the same as kLocal
};

/// Loads a library with all its imports bound, or returns its handle if it is loaded already. Returns null
/// with the system's error in `error` when it fails.
[[nodiscard]] LibraryHandle OpenLibrary(const std::string& path, std::string& error,
                                        LibraryScope scope = LibraryScope::kLocal);

/// Returns the address of an exported function, or null if the library has no function of that name.
[[nodiscard]] void* FindFunction(LibraryHandle library, const char* name);

/// Releases a library that was opened from `path`. Returns false if it stays loaded because something else
/// has it open too.
[[nodiscard]] bool CloseLibrary(LibraryHandle library, const std::string& path);

}  // namespace platform
