// Paths that mean the same from any folder.
#pragma once

#include <string>

/// The path from the root on, without "." and ".."; as it stands when the system cannot tell the current
/// folder. Links are not followed.
[[nodiscard]] std::string AbsolutePath(const std::string& path);
