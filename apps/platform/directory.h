// SPDX-License-Identifier: Apache-2.0

// Lists, creates and removes directories. A path is UTF-8 with '/' or the system's delimiter between its
// parts.
#pragma once

#include <string>
#include <vector>

#include "platform/file_status.h"

namespace platform {

/// An entry of a directory. A link counts as what it leads to. A link that leads nowhere is neither a
/// directory nor a file on POSIX; on Windows it counts as what it was made for.
struct DirectoryEntry {
    std::string name;
    bool isDirectory = false;
    bool isFile = false;
};

/// Replaces `entries` with the contents of a directory without "." and "..", in no particular order. An empty
/// `path` is the current directory. `entries` is empty on failure.
[[nodiscard]] FileStatus ListDirectory(const std::string& path, std::vector<DirectoryEntry>& entries);

/// Creates a directory, whose parent must exist. Returns kOk even if it exists already, and kExists if
/// something else has its name.
[[nodiscard]] FileStatus MakeDirectory(const std::string& path);

/// Removes an empty directory. Returns kOk even if it does not exist.
[[nodiscard]] FileStatus RemoveEmptyDirectory(const std::string& path);

/// Makes the names in a directory survive a loss of power. Does nothing on Windows, whose file systems log
/// changes of directories themselves.
[[nodiscard]] FileStatus SyncDirectory(const std::string& path);

}  // namespace platform
