// SPDX-License-Identifier: Apache-2.0

// `mqam checkpoint show | verify | repair` shows what a checkpoint file contains, checks whether it is
// intact, and completes what a crash interrupted.
#pragma once

namespace CLI {
class App;
}

namespace mqam {

/// Adds the subcommand. When the user asks for it, it runs while the command line is parsed and leaves its
/// exit code in `exitCode`, which must outlive the parsing.
void AddCheckpointCommand(CLI::App& app, int& exitCode);

}  // namespace mqam
