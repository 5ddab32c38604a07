// SPDX-License-Identifier: Apache-2.0

// Finds out whether a stream is a terminal.
#pragma once

namespace platform {

[[nodiscard]] bool IsStandardErrorTerminal();

[[nodiscard]] bool IsTerminal(int descriptor);

/// Returns how many characters a line of the terminal has; 0 if the descriptor leads to none or it does not say.
[[nodiscard]] int TerminalColumns(int descriptor);
[[nodiscard]] int StandardErrorColumns();

}  // namespace platform
