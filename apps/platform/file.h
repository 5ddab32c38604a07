// SPDX-License-Identifier: Apache-2.0

// Accesses files by path, by descriptor and by handle. Functions that return a descriptor, a count or 0
// return -1 with errno set when they fail; those that return a FileStatus leave the system's error in
// LastFileError.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/file_status.h"

namespace platform {

struct FileInfo {
    std::int64_t bytes = 0;
    std::int64_t writeTimeNs = 0;   ///< last write, nanoseconds since 1970 UTC
    std::int64_t changeTimeNs = 0;  ///< last write, rename or change of attributes
    std::uint64_t identity = 0;     ///< differs between a file and another one that gets its name later
    bool isDirectory = false;
    bool isFile = false;  ///< a pipe, a device and the like are neither a directory nor a file
};

/// Sets `info` to what is at a path; a link counts as what it leads to. `info` is unchanged on failure.
[[nodiscard]] FileStatus StatPath(const std::string& path, FileInfo& info);

enum class PathKind {
    kMissing,
    kFile,
    kOther,    ///< a device, a pipe or a directory
    kUnknown,  ///< the system cannot say; errno has the reason
};

/// Does what StatPath does, for callers that only need to know whether there is a file, and its size. `bytes`
/// is 0 if there is no file.
[[nodiscard]] PathKind ProbePath(const std::string& path, std::uint64_t& bytes);
[[nodiscard]] PathKind ProbePath(const std::string& path);

enum class OpenMode {
    kCreate,    ///< creates the file; fails if the path exists
    kReplace,   ///< creates the file, or empties it if it exists
    kAppend,    ///< creates the file, or writes at its end if it exists
    kExisting,  ///< opens a device or a pipe as it is; fails if the path is missing
};

/// From now on only their owner may use the files and directories that this process creates, also those that
/// libraries create. Does nothing on Windows, where new files inherit the permissions of their directory.
void RestrictNewFiles();

/// Opens a file for writing bytes as they are; child processes do not inherit the descriptor.
[[nodiscard]] int OpenForWriting(const std::string& path, OpenMode mode);

/// Writes at most `length` bytes. Returns how many were written; 0 means that the disk is full, unless
/// `length` is 0.
[[nodiscard]] long WriteBytes(int descriptor, const char* bytes, std::size_t length);

/// Writes all of the bytes. Returns false with errno set, which is ENOSPC if the disk is full; then part of them
/// may be written.
[[nodiscard]] bool WriteWhole(int descriptor, const void* bytes, std::size_t length);

/// Waits until what was written is on the disk. Succeeds for what has no disk (a pipe, a terminal).
[[nodiscard]] int SyncFile(int descriptor);

/// Returns whether the open file is still the one at `path` and has `bytes` bytes. If it is not, returns
/// false with errno 0; if the system cannot say, returns false with errno set.
[[nodiscard]] bool IsFileAt(int descriptor, const std::string& path, std::uint64_t bytes);

/// Closes a descriptor. The descriptor is invalid afterwards, even on failure.
[[nodiscard]] int CloseDescriptor(int descriptor);

/// Moves a stream to an offset from its beginning. Returns false with errno set when it fails.
[[nodiscard]] bool MoveStreamTo(std::FILE* stream, std::uint64_t offset);

using FileHandle = std::intptr_t;
inline constexpr FileHandle kNoFile = -1;

/// Opens a file for reading; others may rename and delete it in the meantime. It never waits. On POSIX it
/// returns kNotFound for what is not a file (a directory, a pipe); on Windows it returns kBusy while someone
/// is writing the file. On failure `file` is kNoFile and `info` is unchanged.
[[nodiscard]] FileStatus OpenForReading(const std::string& path, FileHandle& file, FileInfo& info);

/// Reads up to `bytes` bytes from the beginning of the file. `bytesRead` becomes the number of bytes read,
/// also on failure.
[[nodiscard]] FileStatus ReadFromStart(FileHandle file, void* buffer, std::size_t bytes,
                                       std::size_t& bytesRead);

/// Closes a file. kNoFile is ignored.
void CloseFile(FileHandle file);

/// Replaces `content` with the contents of a file, which others may be writing. On failure `content` is empty
/// or incomplete.
[[nodiscard]] FileStatus ReadWholeFile(const std::string& path, std::string& content);

/// Creates a file, which must not exist, with `bytes` bytes of content. With `sync` the content is on the
/// disk when this returns; the name of the file needs SyncDirectory as well. On failure there is no file.
[[nodiscard]] FileStatus WriteNewFile(const std::string& path, const void* content, std::size_t bytes,
                                      bool sync);

/// Deletes a file. Returns kOk even if it does not exist. On Windows it waits a moment for others who have
/// the file open.
[[nodiscard]] FileStatus RemoveFile(const std::string& path);

/// Renames a file in one step, so that it has either the old or the new name even if the process is killed.
/// Returns kExists if `to` exists; nothing has changed then.
[[nodiscard]] FileStatus RenameNoReplace(const std::string& from, const std::string& to);

}  // namespace platform
