// SPDX-License-Identifier: Apache-2.0

// The command line of `mqam`.
#pragma once

namespace mqam {

/// Runs the subcommand that the arguments name and returns the exit code of the program. A wrong command line is
/// reported on standard error. Exceptions of the subcommand reach the caller.
int RunProgram(int argc, char** argv);

}  // namespace mqam
