// Directories.
#pragma once

#include <string>
#include <vector>

namespace platform {

/// Returns the names in a directory in no particular order; an empty `directory` is the current one. Returns
/// none when the directory cannot be listed.
[[nodiscard]] std::vector<std::string> ListDirectory(const std::string& directory);

}  // namespace platform
