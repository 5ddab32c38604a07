// SPDX-License-Identifier: Apache-2.0

// Handles paths: makes them absolute, follows links, and spells them as this system's programs need.
#pragma once

#include <string>
#include <vector>

namespace platform {

/// Returns the path from the root, without "." and "..". Links are not followed, so a ".." after a link
/// stays, because it leads to the parent of the link's target. Returns `path` unchanged when the current
/// directory is unknown.
[[nodiscard]] std::string AbsolutePath(const std::string& path);

/// Returns where a link leads, if need be through further links, or `path` if it is not a link. The file at
/// the end need not exist. Returns `path` when a link cannot be read.
[[nodiscard]] std::string FollowLinks(const std::string& path);

/// Returns the path with the delimiter that the command processor accepts. On Windows that is the backslash:
/// the command processor takes a slash for an option, and the module looks for backslashes only.
[[nodiscard]] std::string NativePath(std::string path);

/// Returns the directory of the running program with its trailing delimiter, or an empty string when the
/// system does not know it.
[[nodiscard]] std::string ProgramDirectory();

/// Returns the directories, each with its trailing delimiter (an empty one is the current directory), in
/// which the module may have created a temporary checkpoint file. On Windows the module looks for a backslash
/// only, so there may be two for a path with slashes.
[[nodiscard]] std::vector<std::string> TemporaryDirectories(const std::string& checkpointPath);

}  // namespace platform
