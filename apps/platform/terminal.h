// SPDX-License-Identifier: Apache-2.0

// Terminals.
#pragma once

namespace platform {

[[nodiscard]] bool IsStandardErrorTerminal();

[[nodiscard]] bool IsTerminal(int descriptor);

}  // namespace platform
