// SPDX-License-Identifier: Apache-2.0

// `mqam check` shows the parameters in effect without touching a queue.
#pragma once

namespace CLI {
class App;
}

namespace mqam {

/// Adds the subcommand. When the user asks for it, it runs while the command line is parsed and leaves its
/// exit code in `exitCode`, which must outlive the parsing.
void AddCheckCommand(CLI::App& app, int& exitCode);

}  // namespace mqam
