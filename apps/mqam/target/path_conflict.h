// SPDX-License-Identifier: Apache-2.0

// Checks the files that a load uses: each must be a file of its own.
#pragma once

#include <string>
#include <vector>

#include "mqam/base/status.h"

namespace mqam {

struct LoadFile {
    std::string path;  ///< absolute
    const char* use;   ///< what it is for, for example "target"
};

/// Refuses two uses of the same file, including those by way of links, and names the first such pair.
Status CheckPathConflicts(const std::vector<LoadFile>& files);

}  // namespace mqam
