// SPDX-License-Identifier: Apache-2.0

// Finds out whether a stream is a terminal.
#pragma once

namespace platform {

[[nodiscard]] bool IsStandardErrorTerminal();

[[nodiscard]] bool IsTerminal(int descriptor);

}  // namespace platform
