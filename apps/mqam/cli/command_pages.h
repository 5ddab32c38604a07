// SPDX-License-Identifier: Apache-2.0

// Makes manual pages and shell completion from the tables of commands and options that parse the command
// line.
#pragma once

#include <CLI/App.hpp>
#include <map>
#include <string>

namespace mqam {

/// Returns the manual pages of a program and all of its commands, in the form
/// of man(7), by the names of their files: "mqam.1", "mqam-load.1",
/// "mqam-queue-put.1". A hidden command has none.
///   product  in  the name and version that each page shows, "mqamod 16.20.0"
[[nodiscard]] std::map<std::string, std::string> MakeManualPages(const CLI::App& program,
                                                                 const std::string& product);

/// These return scripts that complete the commands, options and words of a command line. They need nothing
/// from the shell but its own completion system.
[[nodiscard]] std::string MakeBashCompletion(const CLI::App& program);
[[nodiscard]] std::string MakeZshCompletion(const CLI::App& program);

/// Adds `completion`, which prints a script, and the hidden `manual`, which
/// writes the manual pages into a directory for the packages.
void AddPageCommands(CLI::App& program, int& exitCode);

}  // namespace mqam
