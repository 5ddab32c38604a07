// SPDX-License-Identifier: Apache-2.0

// Maps files as memory that processes share.
#pragma once

#include <cstddef>
#include <string>

#include "platform/file.h"

namespace platform {

/// The first bytes of a file, in memory that all processes that map the file share.
struct SharedFile {
    void* memory = nullptr;  ///< null if no file is mapped
    std::size_t bytes = 0;
    FileHandle file = kNoFile;
};

/// Maps a file, which is created if it is missing and extended with zeros if it is too short. `shared` is
/// empty on failure.
[[nodiscard]] FileStatus MapSharedFile(const std::string& path, std::size_t bytes, SharedFile& shared);

/// Gives the file its full size again if it was truncated; the missing part is filled with zeros. Must be
/// called right before the memory is touched: on POSIX others can truncate a mapped file, and the system then
/// ends a process that touches the missing part. Returns false if the file cannot be extended.
[[nodiscard]] bool EnsureFileSize(const SharedFile& shared);

/// Ends the mapping and empties `shared`. Does nothing if no file is mapped.
void UnmapSharedFile(SharedFile& shared);

}  // namespace platform
