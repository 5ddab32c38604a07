// What the stand-in needs from the operating system. os_posix.cpp and os_windows.cpp implement it and are the only
// files of the stand-in that call the system. Paths are UTF-8 with '/' between their parts, on Windows too.
//
// Everything above relies on two promises:
//   1. RenameNew moves a file from one directory to another in one step, even if the process is killed during
//      the call, and never replaces a file.
//   2. A presence (AcquirePresence) ends with its process, however that ends, and at the latest when another
//      process that waits for it learns of its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace spoolmq {

enum class OsStatus {
    Ok,
    NotFound,  ///< the file, or a folder on the way to it, is not there
    Exists,    ///< something of that name is there already
    Busy,      ///< another process (or another handle of this one) holds it
    Failed,    ///< anything else; LastOsErrorText says what
};

/// The reason of the calling thread's last status that was not Ok, in the system's words. Not changed by
/// success.
[[nodiscard]] const std::string& LastOsErrorText();

struct FileInfo {
    std::int64_t bytes = 0;
    std::int64_t writeTimeNs = 0;   ///< last write, nanoseconds since 1970 UTC
    std::int64_t changeTimeNs = 0;  ///< last write, rename or change of attributes
    std::uint64_t identity = 0;     ///< tells a file from another one that later gets its name
    bool isFolder = false;
    bool isFile = false;  ///< what is neither is a pipe, a device and the like
};

/// A link counts as what it leads to.
struct FolderEntry {
    std::string name;
    bool isFolder = false;
    bool isFile = false;
};

using OsFile = std::intptr_t;
inline constexpr OsFile kNoFile = -1;

[[nodiscard]] OsStatus StatPath(const std::string& path, FileInfo* info);
/// Replaces *entries with what is in the folder, "." and ".." left out, in no order.
[[nodiscard]] OsStatus ListFolder(const std::string& path, std::vector<FolderEntry>* entries);
/// Ok also when the folder is there already; Exists when something else has its name. Its parent must exist.
[[nodiscard]] OsStatus MakeFolder(const std::string& path);
/// Ok also when the folder is not there.
[[nodiscard]] OsStatus RemoveEmptyFolder(const std::string& path);
/// Ok also when the file is not there.
[[nodiscard]] OsStatus RemoveFile(const std::string& path);
/// Exists when `to` is taken; nothing has changed then.
[[nodiscard]] OsStatus RenameNew(const std::string& from, const std::string& to);
/// Renames over whatever is at `to`.
[[nodiscard]] OsStatus RenameOver(const std::string& from, const std::string& to);
/// Makes the names in a folder survive a loss of power.
[[nodiscard]] OsStatus SyncFolder(const std::string& path);

/// Opens for reading such that others may rename and delete the file meanwhile. Never waits: what is not a
/// file (a folder, a pipe) is NotFound. Busy when somebody is writing it and the system can tell. info may be
/// null. On failure *file is kNoFile.
[[nodiscard]] OsStatus OpenForReading(const std::string& path, OsFile* file, FileInfo* info);
/// Reads up to `bytes` from the start of the file; *got is what there was.
[[nodiscard]] OsStatus ReadFromStart(OsFile file, void* buffer, std::size_t bytes, std::size_t* got);
void CloseFile(OsFile file);
[[nodiscard]] OsStatus ReadWholeFile(const std::string& path, std::string* content);
/// Creates the file, which must not exist, with the content; sync: on the disk when this returns.
[[nodiscard]] OsStatus WriteNewFile(const std::string& path, const void* content, std::size_t bytes,
                                    bool sync);

/// Creates the lock file if it is missing and holds it until ReleasePresence or the end of the process.
/// Busy when it is held. Not inherited by child programs.
[[nodiscard]] OsStatus AcquirePresence(const std::string& path, OsFile* presence);
/// Deletes the lock file and lets go of it. kNoFile is ignored.
void ReleasePresence(const std::string& path, OsFile presence);

/// The first bytes of a file, in memory that every process shares that maps it.
struct SharedFile {
    void* memory = nullptr;  ///< null when none is mapped
    std::size_t bytes = 0;
    OsFile file = kNoFile;
};

/// Maps a file, created and filled with zeros as needed.
[[nodiscard]] OsStatus MapSharedFile(const std::string& path, std::size_t bytes, SharedFile* shared);
/// To be called right before the memory is touched. A system that lets others cut off what is mapped ends the
/// process that touches it: what is missing is filled with zeros again. False when it cannot be.
[[nodiscard]] bool MakeWhole(const SharedFile& shared);
/// Ignores one that is not mapped.
void UnmapSharedFile(SharedFile* shared);

/// UTC, nanoseconds since 1970, from the clock that stamps files: comparable with changeTimeNs.
[[nodiscard]] std::int64_t FileClockNs();
[[nodiscard]] std::int64_t MonotonicMs();
void SleepMs(std::int64_t milliseconds);
[[nodiscard]] std::int64_t ProcessId();
[[nodiscard]] std::uint64_t ThreadId();
[[nodiscard]] std::uint64_t RandomNumber();
[[nodiscard]] std::string UserName();
/// File name of the running program, without its folder.
[[nodiscard]] std::string ProgramName();
/// Empty when the variable is not set.
[[nodiscard]] std::string EnvironmentVariable(const char* name);
/// Standard input and output carry bytes from now on, line ends as they are.
void UseBinaryStreams();
/// Ends the process at once, with no clean-up of any kind, as an operator's kill does.
[[noreturn]] void EndProcessAtOnce();

/// Runs a whole read-decide-write on a file of which processes must not mix: holds the lock file for that
/// long. Waits for as long as others hold it. Returns kNoFile when the file cannot be created.
[[nodiscard]] OsFile EnterGuard(const std::string& path);
void LeaveGuard(OsFile guard);

extern const char
    kPlatformApplType;  ///< PutApplType of programs on this system: MQAT_UNIX or MQAT_WINDOWS_NT

}  // namespace spoolmq
