// Paths that mean the same in every current directory.
#pragma once

#include <string>

namespace platform {

/// Returns the path from the root, without "." and ".."; unchanged if the system cannot determine the current
/// directory. Links are not followed, so a ".." after a link stays: it refers to where the link points.
[[nodiscard]] std::string AbsolutePath(const std::string& path);

/// Returns the path, or for a link the path to which it points: the file to replace instead of the link.
[[nodiscard]] std::string FollowLinks(const std::string& path);

}  // namespace platform
