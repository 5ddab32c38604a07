// The files that a load uses, each of which must be a file of its own.
#pragma once

#include <string>
#include <vector>

namespace mqam {

struct LoadFile {
    std::string path;  ///< absolute
    const char* use;   ///< what for, in words: "target"
};

/// Returns the complaint about the first two uses that are one file, also by way of links, or an empty
/// string.
[[nodiscard]] std::string FindPathConflict(const std::vector<LoadFile>& files);

}  // namespace mqam
