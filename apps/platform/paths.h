// Paths that mean the same from any folder.
#pragma once

#include <string>

namespace platform {

/// The path from the root on, without "." and ".."; as it stands when the system cannot tell the current
/// folder. Links are not followed, so ".." behind a link stays: it leads to where the link points.
[[nodiscard]] std::string AbsolutePath(const std::string& path);

/// The path, or where it leads to when it is a link: the file that is to be replaced instead of the link.
[[nodiscard]] std::string FollowLinks(const std::string& path);

}  // namespace platform
