// SPDX-License-Identifier: Apache-2.0

// The benchmarks' host. It calls PIDMMain and does no more work of its own for each record than any host must.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "mqamod.h"

/// Loads the module and makes it use the MQ library given. Ends the process with a message if the module
/// cannot be loaded.
void LoadModule(const char* modulePath, const char* mqLibraryPath);

/// Calls Init with the keywords, then Open. Ends the process with the module's error text if one fails.
void StartLoad(const std::string& keywords);

/// Calls SetPos with the position of the first checkpoint, so that the next ReadOne replays the first record of the
/// checkpoint file. Requires that RequestCheckpoint has been called once since StartLoad.
void GoBackToFirstCheckpoint();

/// Calls GetPos. The next ReadOne carries the checkpoint out.
void RequestCheckpoint();

/// Calls Read once. Returns the length of the record in bytes.
std::uint32_t ReadOne();

/// Calls Close and Shut.
void EndLoad();
