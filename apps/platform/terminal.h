// SPDX-License-Identifier: Apache-2.0

// Finds out whether a stream is a terminal.
#pragma once

namespace platform {

[[nodiscard]] bool IsStandardErrorTerminal();

[[nodiscard]] bool IsTerminal(int descriptor);

/// Returns the number of characters in a line of the terminal, or 0 if the descriptor is not a terminal or
/// the system does not know the number.
[[nodiscard]] int TerminalColumns(int descriptor);
[[nodiscard]] int StandardErrorColumns();

}  // namespace platform
