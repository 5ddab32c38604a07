// SPDX-License-Identifier: Apache-2.0

// `mqam explain` says what a code means and what to do about it.
#pragma once

namespace CLI {
class App;
}

namespace mqam {

/// Adds the subcommand to the program.
///   exitCode  out  set when the subcommand runs: kExitDone; kExitNotStarted if there is no such code;
///                  kExitTargetFailed if standard output cannot be written
void AddExplainCommand(CLI::App& app, int& exitCode);

}  // namespace mqam
