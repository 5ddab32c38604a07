// SPDX-License-Identifier: Apache-2.0

// Maps files as memory that processes share.
#pragma once

#include <cstddef>
#include <string>

#include "platform/file.h"

namespace platform {

/// The first bytes of a file, in memory that all processes that map the file share.
struct SharedFile {
    void* memory = nullptr;  ///< null when none is mapped
    std::size_t bytes = 0;
    FileHandle file = kNoFile;
};

/// Maps a file, which is created and filled with zeros as needed. `shared` is empty on failure.
[[nodiscard]] FileStatus MapSharedFile(const std::string& path, std::size_t bytes, SharedFile& shared);

/// Must be called right before the memory is touched. On POSIX others can truncate a file that is mapped, and
/// the system then ends the process that touches the memory: what is missing is filled with zeros again.
/// Returns false when it cannot be.
[[nodiscard]] bool EnsureFileSize(const SharedFile& shared);

/// Ends the mapping and empties `shared`. It ignores one that is not mapped.
void UnmapSharedFile(SharedFile& shared);

}  // namespace platform
