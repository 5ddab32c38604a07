// SPDX-License-Identifier: Apache-2.0

// Runs `mqam load` as usual, with restart information: the command itself, and the workers that it starts.
#pragma once

#include "mqam/cli/load_options.h"

namespace mqam {

/// Runs the load that the options ask for, as the command or as one of its workers. Returns the exit code. A worker does not
/// return: it ends the process.
[[nodiscard]] int RunRestartableLoad(const LoadOptions& options);

}  // namespace mqam
