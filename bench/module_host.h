// The benchmarks' host: drives the module through PIDMMain, with no more work of its own for a record than a
// host has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "mqamod.h"

/// Loads the module, which binds the MQ library given, and ends the process with a message when it cannot.
void LoadModule(const char* modulePath, const char* mqLibraryPath);

/// Init with the keywords and Open; ends the process with the module's error text when one fails.
void StartLoad(const std::string& keywords);

/// GetPos; the checkpoint is carried out by the next ReadOne.
void RequestCheckpoint();

/// One Read. Returns the bytes of the record.
std::uint32_t ReadOne();

/// Close and Shut.
void EndLoad();
