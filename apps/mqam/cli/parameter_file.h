// SPDX-License-Identifier: Apache-2.0

// The parameter file of --parmfile as the module reads it. mqam reads it as well: to warn about what the module ignores
// without a word, and to let an option on the command line override the file.
#pragma once

#include <string>
#include <vector>

#include "mqam/base/status.h"

namespace mqam {

struct ParameterLine {
    int number = 0;
    std::string keyword;  ///< in capitals, without a dash
    std::vector<std::string> values;
};

struct ParameterFile {
    std::vector<ParameterLine> lines;  ///< only lines with a keyword
    std::vector<std::string> warnings;
    /// False if a line has an unknown keyword or too few values, or is too long: the module refuses or splits it.
    bool isUnderstood = true;
};

/// Reads the file. A path that leads to a pipe or a device is not read: the module could not read it again.
///   file  out  empty on failure
/// kRefused: the file cannot be read, or it has a number that the module would misread.
Status ReadParameterFile(const std::string& path, ParameterFile& file);

/// Returns the last line with the keyword, which is the one that counts, or null.
[[nodiscard]] const ParameterLine* FindParameter(const ParameterFile& file, const std::string& keyword);

}  // namespace mqam
