// SPDX-License-Identifier: Apache-2.0

// Checks what a command reports to its operator when a call on one of its load's files fails and the command
// gives up.
#pragma once

#include <string>

/// Returns an empty string if the exit code is that of a failed target or of a failed module, and the output
/// names the file that failed, the reason, what is safe and what to do next. Otherwise returns what is wrong.
///   printed     in   everything that the command printed
///   directory   in   the directory of the load's files
[[nodiscard]] std::string JudgeComplaint(const std::string& printed, const std::string& directory,
                                         int exitCode);
