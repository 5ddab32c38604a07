// What the programs need of the operating system. platform_posix.cpp and platform_windows.cpp implement it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace platform {

/// The file name of the access module on this system.
extern const char* const kModuleFileName;

/// Returns the directory of the running program with its trailing delimiter, or an empty string if it cannot
/// be determined.
[[nodiscard]] std::string ProgramDirectory();

/// Returns the path with the delimiter that the command processor needs. On Windows that reads slashes as
/// options, and the module looks only for backslashes.
[[nodiscard]] std::string NativePath(std::string path);

/// Loads a library. Returns its handle, or null with the system's message in `reason`. The library is never
/// unloaded, because the module's state belongs to the process.
[[nodiscard]] void* OpenLibrary(const std::string& path, std::string& reason);

/// Returns the address of an exported function, or null.
[[nodiscard]] void* FindFunction(void* library, const char* name);

enum class PathKind {
    kMissing,
    kFile,
    kOther,    ///< a device, pipe or directory
    kUnknown,  ///< the system reports an error: errno
};

/// Returns what is at a path.
[[nodiscard]] PathKind ProbePath(const std::string& path);

/// Does the same and sets `bytes` to the size of a file, or to 0 for anything else.
[[nodiscard]] PathKind ProbePath(const std::string& path, std::uint64_t& bytes);

enum class OpenMode {
    kCreate,   ///< refuses a path that exists
    kReplace,  ///< empties a file that exists
    kAppend,
    kExisting,  ///< a device or pipe, as it is
};

/// Opens a file for writing, in binary mode. Returns its descriptor, or -1 with errno set.
[[nodiscard]] int OpenForWriting(const std::string& path, OpenMode mode);

/// Writes up to `length` bytes. Returns how many were written (at least 1), or -1 with errno set.
[[nodiscard]] long WriteBytes(int descriptor, const char* bytes, std::size_t length);

/// Syncs what was written to the disk. Succeeds for what has no disk (a pipe, a terminal). Returns 0, or -1
/// with errno set.
[[nodiscard]] int SyncFile(int descriptor);

/// Returns whether the open file is the one at the path and has `bytes` bytes. Returns false with errno 0 if
/// not, and with errno set if the system reports an error.
[[nodiscard]] bool IsFileAt(int descriptor, const std::string& path, std::uint64_t bytes);

/// Closes a descriptor. Returns 0, or -1 with errno set.
[[nodiscard]] int CloseDescriptor(int descriptor);

/// Opens every closed standard stream on something empty that cannot be written. Otherwise the next file that
/// is opened would get its descriptor, and with it the messages to the user. To be called before anything
/// else.
void ReopenClosedStdStreams();

enum class ModuleOutput { kDropped, kToStandardError };

/// Redirects standard output, because the module prints its report there. Returns a descriptor, in binary
/// mode, for the original standard output, or -1 with errno set. To be called once, before the module is
/// loaded.
[[nodiscard]] int RedirectStdout(ModuleOutput output);

[[nodiscard]] bool IsStandardErrorTerminal();
[[nodiscard]] bool IsTerminal(int descriptor);

/// Makes the first interrupt (Ctrl-C, SIGTERM) only set InterruptRequested() and inform the user. A second
/// one, at least a moment later, ends the process with `exitCodeAtOnce`. A reader of a pipe that has gone
/// away causes a failed write.
void WatchInterrupts(int exitCodeAtOnce);

[[nodiscard]] bool InterruptRequested();

/// Ends the process without running any exit routine of this program or of a library. Those of an MQ library
/// may disconnect, which commits. Standard error is already flushed.
[[noreturn]] void ExitImmediately(int exitCode);

/// Printed at the first and at the second interrupt.
inline constexpr char kFirstInterruptText[] =
    "\nmqam: finishing (a read that waits for messages ends first); press again to stop at once\n";
inline constexpr char kSecondInterruptText[] = "\nmqam: stopped at once\n";

}  // namespace platform
