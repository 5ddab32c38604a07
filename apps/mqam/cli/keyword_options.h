// Every keyword of the module as an option of the program. One table drives the options, their help and the
// initialization string; a test holds it against the module's keywords.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "mqam/module/init_string.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace mqam {

struct KeywordOption {
    const char* keyword;  ///< the module's
    const char* option;   ///< names, comma separated, the first one is shown in complaints
    int values;           ///< 0 for a flag, 1, or 2 (a trace takes level and file)
    const char* valueName;
    const char* group;    ///< heading in the help
    const char* help;     ///< meaning, unit, limits, default
    const char* example;  ///< as typed after the option; empty for a flag
    /// Which of the values is the path of a file that the module writes.
    std::size_t path = std::string::npos;
};

[[nodiscard]] std::span<const KeywordOption> AllKeywordOptions();

/// The options as the user gave them, filled when the command line is parsed. Must outlive the parsing.
struct ModuleOptions {
    std::vector<std::vector<std::string>> values;  ///< a row per row of the table; empty = not given
    std::vector<char> flags;                       ///< likewise; not 0 = given
    std::string rawInit;                           ///< --init
    CLI::Option* rawInitOption = nullptr;
    std::string modulePath;  ///< --module; empty = beside the program
};

/// Adds an option per keyword, --parmfile among them, and --init and --module.
void AddModuleOptions(CLI::App& command, ModuleOptions& options);

/// Builds the initialization string from what was given. Returns false with a complaint (a sentence for the
/// user) when a value cannot be expressed or nothing was given at all.
[[nodiscard]] bool ComposeInitString(const ModuleOptions& options, std::string& initString,
                                     std::string& complaint);

/// True when the keyword was given as an option of its own (not through --init or --parmfile).
[[nodiscard]] bool WasKeywordGiven(const ModuleOptions& options, const std::string& keyword);

}  // namespace mqam
