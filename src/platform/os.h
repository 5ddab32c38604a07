// The operating system as the module needs it: one header, one file for each system (os_posix.cpp,
// os_windows.cpp), chosen by CMake. No other file of the module knows which system it runs on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

/// Separates the folders of a path: the character behind which the temporary checkpoint file's name is put.
extern const char kPathDelimiter;

/// The processor and system that the module was built for, as its identification says it.
extern const char* const kBuildTarget;

/// Where IBM MQ's libraries are found: their file names and the folder of a default installation.
struct MqLibraryNames {
    const char* client;         ///< speaks to queue managers over client channels
    const char* server;         ///< speaks to the queue managers of this machine
    const char* defaultFolder;  ///< ends with the path delimiter
};
extern const MqLibraryNames kMqLibraryNames;

/// Deletes a file the way the module deletes what it leaves behind at close: with the command processor's
/// "del" on Windows, with a file call elsewhere. Returns -1 with errno when the command could not be run (or
/// the file is still there after the call), else 0. A command that runs but cannot delete is not noticed; a
/// file that was not there is no failure.
[[nodiscard]] int DeleteByCommand(const char* path);

/// The number of this process.
[[nodiscard]] int CurrentProcessId();

/// Waits; the calling thread does nothing else meanwhile.
void SleepMilliseconds(std::uint32_t milliseconds);

/// Stores the position of a stream, an opaque 8-byte value that only SetStreamPosition understands.
/// Returns false, with errno and *position unchanged, when the system cannot tell it.
[[nodiscard]] bool GetStreamPosition(std::FILE* stream, std::int64_t* position);

/// Moves a stream to a position that GetStreamPosition stored. Returns false, with errno, when it cannot.
[[nodiscard]] bool SetStreamPosition(std::FILE* stream, std::int64_t position);

/// Loads a shared library by a path, or by a bare name that the system searches for. A library given by its
/// full path finds the libraries that stand beside it.
///   reason  out  on failure the loader's own words, cut to reasonBytes; unchanged on success
/// Returns a handle that is kept for the life of the process, or null.
[[nodiscard]] void* LoadSharedLibrary(const char* path, char* reason, std::size_t reasonBytes);

/// The address of an exported symbol of a loaded library, or null when it has none of that name.
[[nodiscard]] void* FindLibrarySymbol(void* library, const char* name);
