// SPDX-License-Identifier: Apache-2.0

// `mqam restart show | resume | abandon` shows what a load has loaded, runs its command again, or gives it up.
#pragma once

namespace CLI {
class App;
}

namespace mqam {

/// Adds the subcommand. When the user asks for it, it runs while the command line is parsed and leaves its
/// exit code in `exitCode`, which must outlive the parsing.
void AddRestartCommand(CLI::App& app, int& exitCode);

}  // namespace mqam
