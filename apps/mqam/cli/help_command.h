// SPDX-License-Identifier: Apache-2.0

// `mqam help [COMMAND]`.
#pragma once

#include <CLI/App.hpp>

namespace mqam {

/// Prints the help of a command on standard output. Returns kExitDone, or kExitTargetFailed if it cannot be written.
[[nodiscard]] int PrintHelp(const CLI::App& command);

/// Adds the subcommand. When the user asks for it, it runs while the command line is parsed and leaves its exit code in
/// `exitCode`, which must outlive the parsing.
void AddHelpCommand(CLI::App& program, int& exitCode);

}  // namespace mqam
