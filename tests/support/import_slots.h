// SPDX-License-Identifier: Apache-2.0

// Finds the pointers through which a loaded library calls the functions that it imports.
#pragma once

#include <vector>

#include "platform/library.h"

/// Returns the pointers through which one loaded library calls an imported function; none when it does not import
/// it.
std::vector<void**> ImportSlots(platform::LibraryHandle library, const char* name);

/// Stores a pointer into a slot of ImportSlots, which may lie in memory that is read-only.
void WriteImportSlot(void** slot, void* value);
