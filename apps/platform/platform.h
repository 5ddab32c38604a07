// What the program asks of the operating system; platform_posix.cpp and platform_windows.cpp answer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace platform {

/// File name of the access module on this system.
extern const char* const kModuleFileName;

/// Returns the folder of the running program with its trailing delimiter, or an empty string when it cannot
/// be told.
[[nodiscard]] std::string ProgramDirectory();

/// Returns a path with the delimiter that the command processor takes: on Windows it reads slashes as
/// options, and the module looks for backslashes alone.
[[nodiscard]] std::string NativePath(std::string path);

/// Loads a library. Returns its handle, or null with the system's words in `reason`. It is never unloaded:
/// the module's state belongs to the process.
[[nodiscard]] void* OpenLibrary(const std::string& path, std::string& reason);

/// Returns the address of an exported function, or null.
[[nodiscard]] void* FindFunction(void* library, const char* name);

enum class PathKind {
    kMissing,
    kFile,
    kOther,    ///< a device, pipe or folder
    kUnknown,  ///< the system does not tell: errno
};

/// Tells what stands at a path.
[[nodiscard]] PathKind ProbePath(const std::string& path);

/// The same, with the size of a file; 0 of anything else.
[[nodiscard]] PathKind ProbePath(const std::string& path, std::uint64_t& bytes);

enum class OpenMode {
    kCreate,   ///< refuses a path that exists
    kReplace,  ///< empties a file that exists
    kAppend,
    kExisting,  ///< a device or pipe, as it stands
};

/// Opens a file for writing, in binary. Returns its descriptor, or -1 with errno set.
[[nodiscard]] int OpenForWriting(const std::string& path, OpenMode mode);

/// Writes up to `length` bytes. Returns how many were written (at least 1), or -1 with errno set.
[[nodiscard]] long WriteBytes(int descriptor, const char* bytes, std::size_t length);

/// Brings what was written to the medium. Succeeds on what has none (a pipe, a terminal). Returns 0, or -1
/// with errno set.
[[nodiscard]] int SyncFile(int descriptor);

/// Whether an open file stands at the path and has so many bytes. False with errno 0 when it does not, with
/// errno set when the system does not tell.
[[nodiscard]] bool IsFileAt(int descriptor, const std::string& path, std::uint64_t bytes);

/// Returns 0, or -1 with errno set.
[[nodiscard]] int CloseDescriptor(int descriptor);

/// Gives a standard stream that is closed something that is empty and cannot be written: else a file that is
/// opened would take its place, and with it what is told to the user. To be called first of all.
void ReopenClosedStdStreams();

enum class ModuleOutput { kDropped, kToStandardError };

/// Takes standard output away from everything that prints (the module prints its report there) and returns a
/// descriptor, in binary, that still leads to it; -1 with errno set when that fails. To be called once,
/// before the module is loaded.
[[nodiscard]] int RedirectStdout(ModuleOutput output);

[[nodiscard]] bool IsStandardErrorTerminal();
[[nodiscard]] bool IsTerminal(int descriptor);

/// From now on the first interrupt (Ctrl-C, SIGTERM) only raises InterruptRequested() and tells the user so,
/// and a second one, a moment later at least, ends the process with `exitCodeAtOnce`. A reader that goes away
/// shows as a failed write.
void WatchInterrupts(int exitCodeAtOnce);

[[nodiscard]] bool InterruptRequested();

/// Ends the process without any exit routine, of this program or of a library: those of an MQ library may
/// disconnect, and that commits. Standard error is flushed already.
[[noreturn]] void ExitImmediately(int exitCode);

/// Told to the user at the first and second interrupt.
inline constexpr char kFirstInterruptText[] =
    "\nmqam: finishing (a read that waits for messages ends first); press again to stop at once\n";
inline constexpr char kSecondInterruptText[] = "\nmqam: stopped at once\n";

}  // namespace platform
