// SPDX-License-Identifier: Apache-2.0

// Prints the answer of a command on standard output. If it cannot be written, the command says so and fails.
#pragma once

#include <string>

namespace mqam {

/// Writes all of the text. Returns kExitDone, or kExitTargetFailed after an error message.
///   command  in  the beginning of the error message, such as "mqam queue list"
[[nodiscard]] int PrintAnswer(const std::string& command, const std::string& text);

/// Does the same for an answer that has already been written to `stdout`.
[[nodiscard]] int FinishAnswer(const std::string& command);

}  // namespace mqam
