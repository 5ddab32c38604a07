// SPDX-License-Identifier: Apache-2.0

// Replaces a C function only for the module: it changes the pointers of the module's own import table, while
// the test program and every other library continue to call the real function.
#pragma once

#include <initializer_list>
#include <vector>

#include "platform/library.h"

/// Returns the address of a function in the form that ImportPatch takes.
template <typename Function>
void* AddressOf(Function* function) {
    return reinterpret_cast<void*>(function);
}

class ImportPatch {
  public:
    /// Replaces every import of the library that has one of the names; a function's name differs between the
    /// systems ("time", "_time64"). A name that the library does not import is ignored.
    ImportPatch(platform::LibraryHandle library, std::initializer_list<const char*> names, void* replacement);
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    /// Returns whether the library imports the function under one of the names. If not, nothing is replaced.
    [[nodiscard]] bool Found() const { return !slots_.empty(); }
    /// Returns the function that the library would have called, or null if it imports none of the names.
    [[nodiscard]] void* Original() const { return original_; }

  private:
    std::vector<void**> slots_;
    void* original_ = nullptr;
};
