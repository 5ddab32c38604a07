// What a command owes its operator when a call on one of its load's files failed and it gave up.
#pragma once

#include <string>

/// Returns an empty string when the exit code is that of a failed target or of a failed module, and when it
/// is told which file failed, why, what is safe and what to do next; or what is wrong.
///   told     in   all that the command printed
///   folder   in   of the load's files
[[nodiscard]] std::string JudgeComplaint(const std::string& told, const std::string& folder, int exitCode);
