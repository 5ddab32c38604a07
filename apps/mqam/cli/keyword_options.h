// SPDX-License-Identifier: Apache-2.0

// Offers every keyword of the module as an option of the program. One table drives the options, their help
// and the initialization string; a test compares it with the module's keywords.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "mqam/cli/option_values.h"
#include "mqam/module/init_string.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace mqam {

/// Keyword options and other options share these headings of the help.
inline constexpr const char* kReadGroup = "Reading";
inline constexpr const char* kSafetyGroup = "Checkpoint and log";

/// Says what the module accepts as the value of a keyword. mqam refuses everything else before it calls the
/// module.
enum class KeywordValue : std::uint8_t {
    kNone,
    kText,  ///< a name or a path
    kNumber,
    kWord,
    kWordOrNumber,
    kNumberAndText,  ///< two values
};

struct KeywordRule {
    KeywordValue kind = KeywordValue::kNone;
    std::size_t charactersMax = 0;  ///< of a text
    NumberRule number = {};
    const char* words = "";  ///< "yes|no"
};

struct KeywordOption {
    const char* keyword;  ///< the module's name for it
    const char* option;   ///< names, separated by commas; error messages use the first
    int values;           ///< 0 for a flag, 1, or 2 (a trace takes level and file)
    const char* valueName;
    const char* group;    ///< heading in the help
    const char* help;     ///< meaning, unit, limits, default
    const char* example;  ///< as typed after the option; empty for a flag
    KeywordRule rule;
    /// The index of the value that is the path of a file that the module writes.
    std::size_t path = std::string::npos;
};

[[nodiscard]] std::span<const KeywordOption> AllKeywordOptions();

/// Checks a value as typed and puts it into the form that the module accepts: plain digits, for example.
///   index  in      which of the keyword's values it is
///   value  in/out  unchanged on failure; the error quotes it and says what is valid, without the option's name
Status CheckKeywordValue(const KeywordOption& row, std::size_t index, std::string& value);

/// The options as the user gave them. Parsing the command line fills this, so it must outlive the parsing.
struct ModuleOptions {
    std::vector<std::vector<std::string>> values;  ///< one for each row of the table; empty = not given
    std::vector<char> flags;                       ///< likewise; not 0 = given
    std::string rawInit;                           ///< --init
    CLI::Option* rawInitOption = nullptr;
    std::string configPath;  ///< --config, which main has read already
    std::string modulePath;  ///< --module; empty = the one that belongs to the program
};

/// Adds an option for each keyword, including --parmfile, and --init and --module.
void AddModuleOptions(CLI::App& command, ModuleOptions& options);

/// Checks the parameter file, if the user named one.
///   warnings  out  what the module ignores in it, and whether it overrides options; a line each
Status CheckParameterFile(const ModuleOptions& options, std::vector<std::string>& warnings);

/// Prints the warnings of CheckParameterFile, each after the command ("mqam load").
void PrintWarnings(const std::string& command, const std::vector<std::string>& warnings);

/// Builds the initialization string from the options: environment variables give way to the parameter file, and that to
/// options. The module lets the file win, so it gets the file's keywords in the string where an option overrides one. Refuses a value that cannot be expressed, and options that name
/// nothing at all.
Status ComposeInitString(const ModuleOptions& options, std::string& initString);

/// Returns the value with the given index of a keyword that was given as an option of its own, or an empty string.
[[nodiscard]] std::string ValueOfKeyword(const ModuleOptions& options, const std::string& keyword,
                                         std::size_t index = 0);

/// Replaces the values of a keyword, as if they had been given as its option.
void SetKeyword(ModuleOptions& options, const std::string& keyword, const std::vector<std::string>& values);

/// Returns whether the keyword was given as an option of its own, and not through --init or --parmfile.
[[nodiscard]] bool WasKeywordGiven(const ModuleOptions& options, const std::string& keyword);

}  // namespace mqam
