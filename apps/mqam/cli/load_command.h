// SPDX-License-Identifier: Apache-2.0

// `mqam load` runs a whole load, from a queue into a file.
#pragma once

namespace CLI {
class App;
}

namespace mqam {

/// Adds the subcommand. When the user asks for it, it runs while the command line is parsed and leaves its
/// exit code in `exitCode`, which must outlive the parsing.
void AddLoadCommand(CLI::App& app, int& exitCode);

}  // namespace mqam
