// SPDX-License-Identifier: Apache-2.0

// What a command line asks for, and errors about it that say what was meant. It is read here word by word before CLI11
// parses it: CLI11 reports the first rule that the whole line breaks, not the first word that is wrong.
#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace mqam {

struct CommandLine {
    const CLI::App* command = nullptr;  ///< the innermost command that the words name
    bool wantsHelp = false;
    std::string error;  ///< what is wrong and what to do; empty if every word has a place
};

/// Reads the words after the program's name.
[[nodiscard]] CommandLine ReadCommandLine(const CLI::App& program, const std::vector<std::string>& words);

/// Returns the command at a path such as {"queue", "put"}, or null with the error set.
[[nodiscard]] const CLI::App* FindCommand(const CLI::App& program, const std::vector<std::string>& path,
                                          std::string& error);

/// "there is no option --qmgrr; did you mean --qmgr?"
///   typed  in  with its dashes
[[nodiscard]] std::string DescribeUnknownOption(const CLI::App& command, const std::string& typed);

/// Returns an error of CLI11 in the words of this program.
[[nodiscard]] std::string DescribeParseError(const CLI::ParseError& error);

/// Whether a command line must have the option: no environment variable can stand for it.
[[nodiscard]] bool IsAlwaysNeeded(const CLI::Option& option);

/// "mqam queue put"
[[nodiscard]] std::string PathOf(const CLI::App& command);

/// "mqam load --qmgr NAME --queue NAME --to TARGET [OPTIONS]"
[[nodiscard]] std::string SynopsisOf(const CLI::App& command);

/// The line that follows every error about a command line, with its line end.
[[nodiscard]] std::string UsageLineOf(const CLI::App& command);

/// Prints an error about the command line, with the usage line. Returns kExitNotStarted.
int RefuseCommandLine(const CLI::App& command, const std::string& error);

}  // namespace mqam
