// Files by path and by descriptor. Functions that return a descriptor, a count or 0 return -1 with errno set
// when they fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace platform {

enum class PathKind {
    kMissing,
    kFile,
    kOther,    ///< a device, a pipe or a directory
    kUnknown,  ///< the system cannot say: errno has the reason
};

/// Returns what is at a path; a link counts as what it leads to.
[[nodiscard]] PathKind ProbePath(const std::string& path);

/// The same. `bytes` is the size of a file, and 0 for everything else.
[[nodiscard]] PathKind ProbePath(const std::string& path, std::uint64_t& bytes);

enum class OpenMode {
    kCreate,    ///< fails if the path exists
    kReplace,   ///< empties a file that exists
    kAppend,    ///< writes at the end of a file that exists
    kExisting,  ///< opens a device or a pipe as it is; fails if the path is missing
};

/// Opens a file for writing bytes as they are; child processes do not inherit the descriptor.
[[nodiscard]] int OpenForWriting(const std::string& path, OpenMode mode);

/// Writes at most `length` bytes. Returns how many were written, at least 1 unless `length` is 0.
[[nodiscard]] long WriteBytes(int descriptor, const char* bytes, std::size_t length);

/// Waits until what was written is on the disk. Succeeds for what has no disk (a pipe, a terminal).
[[nodiscard]] int SyncFile(int descriptor);

/// Whether the open file is still the one at `path` and has `bytes` bytes. If it is not, returns false with
/// errno 0; if the system cannot say, returns false with errno set.
[[nodiscard]] bool IsFileAt(int descriptor, const std::string& path, std::uint64_t bytes);

/// Closes a descriptor. The descriptor is invalid afterwards, even on failure.
[[nodiscard]] int CloseDescriptor(int descriptor);

/// Moves a stream to an offset from its beginning. Returns false with errno set when it fails.
[[nodiscard]] bool MoveStreamTo(std::FILE* stream, std::uint64_t offset);

}  // namespace platform
