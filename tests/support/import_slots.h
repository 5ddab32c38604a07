// SPDX-License-Identifier: Apache-2.0

// Finds the pointers through which a loaded library calls the functions that it imports.
#pragma once

#include <vector>

#include "platform/library.h"

/// Returns the pointers through which one loaded library calls an imported function. The result is empty if
/// the library does not import that function.
std::vector<void**> ImportSlots(platform::LibraryHandle library, const char* name);

/// Stores a pointer in a slot that ImportSlots returned, even if the slot is in read-only memory.
void WriteImportSlot(void** slot, void* value);
