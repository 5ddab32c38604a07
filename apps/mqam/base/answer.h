// SPDX-License-Identifier: Apache-2.0

// Answers on standard output: a command that cannot write its answer says so and fails.
#pragma once

#include <string>

namespace mqam {

/// Writes all of the text. Returns kExitDone, or kExitTargetFailed after an error message.
///   command  in  begins the error message: "mqam queue list"
[[nodiscard]] int PrintAnswer(const std::string& command, const std::string& text);

/// The same for what was written to `stdout` before.
[[nodiscard]] int FinishAnswer(const std::string& command);

}  // namespace mqam
