// SPDX-License-Identifier: Apache-2.0

// Declares what the module needs from the operating system. Each system has its own source file
// (os_posix.cpp, os_windows.cpp), and CMake chooses one. Outside this directory no file of the module depends
// on the system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace mqamod {

/// This character separates the directories of a path.
extern const char kPathDelimiter;

/// These name the processor and operating system that the module was built for, as the identification prints
/// them.
extern const char* const kBuildTarget;

/// The file names of IBM MQ's libraries and the directory of a default installation.
struct MqLibraryNames {
    const char* client;            ///< connects over client channels
    const char* server;            ///< connects to the queue managers of this machine
    const char* defaultDirectory;  ///< ends with the path delimiter
};
extern const MqLibraryNames kMqLibraryNames;

/// Deletes a file: with the command processor's "del" on Windows, with a file call elsewhere. Returns 0, or
/// -1 with errno set if the command could not be run or the file call failed. A command that runs but cannot
/// delete the file is not noticed. A file that does not exist is not a failure.
[[nodiscard]] int DeleteByCommand(const char* path);

/// Returns the number of this process.
[[nodiscard]] int CurrentProcessId();

/// Suspends the calling thread.
void SleepMilliseconds(std::uint32_t milliseconds);

/// Gets the position of a stream, an opaque 8-byte value for SetStreamPosition. Returns false, with errno set
/// and `position` unchanged, on failure.
[[nodiscard]] bool GetStreamPosition(std::FILE* stream, std::int64_t& position);

/// Moves a stream to a position from GetStreamPosition. Returns false, with errno set, on failure.
[[nodiscard]] bool SetStreamPosition(std::FILE* stream, std::int64_t position);

/// Loads a shared library by path, or by a bare name that the system searches for. On Windows, a library
/// given by its full path finds the libraries in its own directory.
///   reason  out  on failure the error message of the loader, truncated to reasonBytes; unchanged on success
/// Returns a handle, or null. The library stays loaded until the process ends.
[[nodiscard]] void* LoadSharedLibrary(const char* path, char* reason, std::size_t reasonBytes);

/// Returns the address of an exported symbol of a loaded library, or null if there is no such symbol.
[[nodiscard]] void* FindLibrarySymbol(void* library, const char* name);

}  // namespace mqamod
