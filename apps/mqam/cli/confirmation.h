// SPDX-License-Identifier: Apache-2.0

// Asking the user before something is changed.
#pragma once

#include <string>

namespace mqam {

/// Asks on standard error and reads the answer from standard input. Without a terminal, and after any answer but yes, says
/// that nothing was changed and returns false.
///   command   how the messages begin, for example "mqam checkpoint"
///   question  a complete question
///   yes       the user gave --yes: it is not asked
[[nodiscard]] bool IsConfirmed(const std::string& command, const std::string& question, bool yes);

}  // namespace mqam
