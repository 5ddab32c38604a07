// What the tests need of the operating system. os_posix.cpp and os_windows.cpp implement it.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

using LoadedLibrary = void*;

/// Loads a library with all its imports bound. Returns null on failure, with the loader's message in reason.
///   path   in   as CMake knows it; under Wine a path of the Linux side
LoadedLibrary LoadLibraryFile(const std::string& path, std::string& reason);

/// Unloads the library. Returns false if it stays because something else has loaded it too.
bool UnloadLibraryFile(LoadedLibrary library, const std::string& path);

/// Returns the address of an exported name, or null.
void* FindSymbol(LoadedLibrary library, const char* name);

/// A path that CMake wrote into the test, as a program on the system under test must spell it.
std::string NativePath(const std::string& path);

/// Sets a variable for getenv as well as for the system's own call; an empty value removes it.
void SetEnvironment(const char* name, const std::string& value);

/// Sets a variable to nothing. Returns false where the system does not know such variables.
bool SetEmptyEnvironment(const char* name);

int ProcessId();

/// Makes ferror true for the stream, as a failed transfer does.
void SetStreamError(std::FILE* stream);

/// Closes the stream as the death of its process does: what it buffers never reaches the file.
void AbandonStream(std::FILE* stream);

/// Redirects standard output to a file, and restores it.
///   RedirectStandardOutput returns a token for RestoreStandardOutput, or -1
int RedirectStandardOutput(const std::string& path);
void RestoreStandardOutput(int token);

/// Makes a crash end the process immediately, without a dialog or debugger.
void MakeCrashesQuiet();

/// Lets the process open as many files as the system allows: a module that is loaded for one test, or for one
/// simulated process, leaves its trace open, and a program runs hundreds of them.
void RaiseOpenFileLimit();

/// Ends a test program whose tests are over. Under Wine it ends immediately, because a process there
/// sometimes hangs at its exit.
[[noreturn]] void EndTestProgram(int exitCode);

/// Closes streams that the module left open by design, so that the files can be deleted where the system
/// refuses to delete an open file. Does nothing elsewhere.
void CloseForgottenStreams();

/// The pointers through which one loaded library calls an imported function; empty when it does not import
/// it.
std::vector<void**> ImportSlots(LoadedLibrary library, const char* name);

/// Stores a pointer into a slot of ImportSlots, which may lie in memory that is read-only.
void WriteImportSlot(void** slot, void* value);
