// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/command_pages.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cctype>
#include <fstream>
#include <memory>
#include <sstream>
#include <string_view>
#include <vector>

#include "mqam/base/answer.h"
#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/cli/command_line.h"
#include "mqam/cli/option_values.h"
#include "product_version.h"

namespace mqam {

namespace {

/// A command and its place in the program, such as "mqam queue put".
struct Command {
    const CLI::App* app;
    std::string path;
};

std::vector<const CLI::App*> VisibleSubcommands(const CLI::App& app) {
    // A command without a group is hidden.
    return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<const CLI::Option*> VisibleOptions(const CLI::App& app) {
    return app.get_options(
        [](const CLI::Option* option) { return option->nonpositional() && !option->get_group().empty(); });
}

std::vector<const CLI::Option*> Positionals(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

void AddCommands(const CLI::App& app, const std::string& path, std::vector<Command>& commands) {
    commands.push_back({&app, path});
    for (const CLI::App* command : VisibleSubcommands(app)) {
        AddCommands(*command, path + ' ' + command->get_name(), commands);
    }
}

/// Returns the program and all of its commands, each before its own
/// subcommands.
std::vector<Command> AllCommands(const CLI::App& program) {
    std::vector<Command> commands;
    AddCommands(program, program.get_name(), commands);
    return commands;
}

/// Returns an option's names as a user types them, such as "-h" and "--help".
std::vector<std::string> TypedNames(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) {
        names.push_back('-' + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

bool TakesValue(const CLI::Option& option) {
    return option.get_items_expected_max() > 0;
}

/// Returns the words that an option takes if its value is described as "lines|length|raw", otherwise nothing.
std::vector<std::string> ValueWords(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    if (type.find('|') == std::string::npos) {
        return {};
    }
    std::vector<std::string> words;
    std::istringstream rest(type);
    for (std::string word; std::getline(rest, word, '|');) {
        words.push_back(word);
    }
    return words;
}

std::string Joined(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) {
        if (!text.empty()) {
            text += separator;
        }
        text += word;
    }
    return text;
}

std::string Replaced(std::string text, char from, char to) {
    std::replace(text.begin(), text.end(), from, to);
    return text;
}

// --- Manual pages
// ---------------------------------------------------------------------------------------------

/// Escapes text for roff: a backslash, a hyphen that must stay a minus sign,
/// and a line that would be a request.
std::string RoffText(std::string_view text) {
    std::string escaped;
    bool atLineStart = true;
    for (const char c : text) {
        if (atLineStart && (c == '.' || c == '\'')) {
            escaped += "\\&";
        }
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else {
            escaped += c;
        }
        atLineStart = c == '\n';
    }
    return escaped;
}

std::string RoffLine(std::string_view text) {
    std::string line = RoffText(text);
    if (line.empty() || line.back() != '\n') {
        line += '\n';
    }
    return line;
}

std::string UpperCase(std::string text) {
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

std::string OptionTag(const CLI::Option& option) {
    std::string tag = "\\fB" + RoffText(Joined(TypedNames(option), ", ")) + "\\fR";
    const std::string type = option.get_type_name();
    if (TakesValue(option) && !type.empty()) {
        tag += " \\fI" + RoffText(type) + "\\fR";
    }
    return tag;
}

std::string Synopsis(const Command& command) {
    std::string text = ".B " + RoffLine(command.path);
    for (const CLI::Option* option : VisibleOptions(*command.app)) {
        if (IsAlwaysNeeded(*option)) {
            text += OptionTag(*option) + '\n';
        }
    }
    text += "[\\fIOPTIONS\\fR]\n";
    for (const CLI::Option* positional : Positionals(*command.app)) {
        const std::string name = "\\fI" + RoffText(positional->get_name(true)) + "\\fR";
        const std::string many = positional->get_items_expected_max() > 1 ? "..." : "";
        text += (positional->get_required() ? name + many : '[' + name + many + ']') + '\n';
    }
    if (!VisibleSubcommands(*command.app).empty()) {
        text += "\\fICOMMAND\\fR\n";
    }
    return text;
}

std::string OptionSections(const CLI::App& app) {
    std::string text;
    for (const CLI::Option* positional : Positionals(app)) {
        text += ".TP\n\\fI" + RoffText(positional->get_name(true)) + "\\fR\n";
        text += RoffLine(positional->get_description());
    }
    for (const std::string& group : app.get_groups()) {
        std::string options;
        for (const CLI::Option* option : VisibleOptions(app)) {
            if (option->get_group() == group) {
                options += ".TP\n" + OptionTag(*option) + (IsAlwaysNeeded(*option) ? " (required)\n" : "\n") +
                           RoffLine(option->get_description());
            }
        }
        if (!options.empty()) {
            text += ".SS \"" + RoffText(group) + "\"\n" + options;
        }
    }
    return text.empty() ? text : ".SH OPTIONS\n" + text;
}

std::string PageName(const std::string& path) {
    return Replaced(path, ' ', '-');
}

std::string RelatedPages(const std::vector<Command>& commands, const Command& command) {
    std::vector<std::string> pages;
    for (const Command& other : commands) {
        const bool isParent = command.path.starts_with(other.path + ' ');
        const bool isChild = other.app->get_parent() == command.app;
        if (isParent || isChild) {
            pages.push_back("\\fB" + RoffText(PageName(other.path)) + "\\fR(1)");
        }
    }
    return pages.empty() ? "" : ".SH SEE ALSO\n" + Joined(pages, ",\n") + '\n';
}

std::string ManualPage(const std::vector<Command>& commands, const Command& command,
                       const std::string& product) {
    const std::string name = PageName(command.path);
    const std::string description = command.app->get_description();
    std::string page = ".TH " + RoffText(UpperCase(name)) + " 1 \"\" \"" + product + "\" \"User commands\"\n";
    page += ".SH NAME\n" + RoffText(name) + " \\- " + RoffLine(description.substr(0, description.find('\n')));
    page += ".SH SYNOPSIS\n" + Synopsis(command);
    page += ".SH DESCRIPTION\n" + RoffLine(description);
    const std::vector<const CLI::App*> subcommands = VisibleSubcommands(*command.app);
    if (!subcommands.empty()) {
        page += ".SH COMMANDS\n";
    }
    for (const CLI::App* subcommand : subcommands) {
        page += ".TP\n\\fB" + RoffText(subcommand->get_name()) + "\\fR\n" +
                RoffLine(subcommand->get_description());
    }
    page += OptionSections(*command.app);
    if (!command.app->get_footer().empty()) {
        page += ".SH NOTES\n.nf\n" + RoffLine(command.app->get_footer()) + ".fi\n";
    }
    return page + RelatedPages(commands, command);
}

// --- Completion
// -----------------------------------------------------------------------------------------------

/// Returns a word of a shell script that stands for the text.
std::string ShellQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + '\'';
}

/// Returns the branches of `case "$path $previous"` for options that take a
/// value. What follows such an option is one of its words, which `complete`
/// gets in one shell word each, or a path.
std::string ValueBranches(const std::vector<Command>& commands,
                          std::string (*complete)(const std::vector<std::string>&),
                          const char* completePath) {
    std::string branches;
    for (const Command& command : commands) {
        for (const CLI::Option* option : VisibleOptions(*command.app)) {
            if (!TakesValue(*option)) {
                continue;
            }
            std::vector<std::string> patterns;
            for (const std::string& name : TypedNames(*option)) {
                patterns.push_back(ShellQuoted(command.path + ' ' + name));
            }
            const std::vector<std::string> words = ValueWords(*option);
            branches += "        " + Joined(patterns, " | ") + ")\n            " +
                        (words.empty() ? completePath : complete(words)) +
                        "\n            return\n            ;;\n";
        }
    }
    return branches;
}

/// Returns the pattern of `case` that matches the path of every command but the
/// program itself.
std::string PathPattern(const std::vector<Command>& commands) {
    std::vector<std::string> patterns;
    for (const Command& command : commands) {
        if (command.app->get_parent() != nullptr) {
            patterns.push_back(ShellQuoted(command.path));
        }
    }
    return Joined(patterns, " | \\\n            ");
}

std::string BashWords(const std::vector<std::string>& words) {
    return "mapfile -t COMPREPLY < <(compgen -W " + ShellQuoted(Joined(words, " ")) + " -- \"$current\")";
}

std::string ZshWords(const std::vector<std::string>& words) {
    std::vector<std::string> quoted;
    quoted.reserve(words.size());
    for (const std::string& word : words) {
        quoted.push_back(ShellQuoted(word));
    }
    return "compadd -- " + Joined(quoted, " ");
}

/// Returns an entry of an array for zsh's _describe: "name:description", with
/// the colons of the name escaped.
std::string ZshEntry(const std::string& name, const std::string& description) {
    std::string escaped;
    for (const char c : name) {
        escaped += c == ':' ? std::string("\\:") : std::string(1, c);
    }
    return "                " + ShellQuoted(escaped + ':' + Replaced(description, '\n', ' ')) + '\n';
}

}  // namespace

std::map<std::string, std::string> MakeManualPages(const CLI::App& program, const std::string& product) {
    const std::vector<Command> commands = AllCommands(program);
    std::map<std::string, std::string> pages;
    for (const Command& command : commands) {
        pages[PageName(command.path) + ".1"] = ManualPage(commands, command, product);
    }
    return pages;
}

std::string MakeBashCompletion(const CLI::App& program) {
    const std::vector<Command> commands = AllCommands(program);
    const std::string& name = program.get_name();
    std::string script = "# bash completion for " + name + "\n_" + name + "() {\n";
    script +=
        "    local current=${COMP_WORDS[COMP_CWORD]} "
        "previous=${COMP_WORDS[COMP_CWORD - 1]} path=" +
        name +
        " i\n    COMPREPLY=()\n    for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "        case \"$path ${COMP_WORDS[i]}\" in\n            " +
        PathPattern(commands) + ") path+=\" ${COMP_WORDS[i]}\" ;;\n        esac\n    done\n";
    script += "    case \"$path $previous\" in\n" +
              ValueBranches(commands, BashWords, "mapfile -t COMPREPLY < <(compgen -f -- \"$current\")") +
              "    esac\n    case $path in\n";
    for (const Command& command : commands) {
        std::vector<std::string> words;
        for (const CLI::App* subcommand : VisibleSubcommands(*command.app)) {
            words.push_back(subcommand->get_name());
        }
        for (const CLI::Option* positional : Positionals(*command.app)) {
            for (const std::string& word : ValueWords(*positional)) {
                words.push_back(word);
            }
        }
        for (const CLI::Option* option : VisibleOptions(*command.app)) {
            for (const std::string& typed : TypedNames(*option)) {
                words.push_back(typed);
            }
        }
        script += "        " + ShellQuoted(command.path) + ") " + BashWords(words) + " ;;\n";
    }
    // If nothing else fits, bash completes the name of a file.
    return script + "    esac\n}\ncomplete -o default -F _" + name + ' ' + name + '\n';
}

std::string MakeZshCompletion(const CLI::App& program) {
    const std::vector<Command> commands = AllCommands(program);
    const std::string& name = program.get_name();
    std::string script = "#compdef " + name + "\n_" + name + "() {\n";
    script += "    local previous=${words[CURRENT-1]} current_path=" + name +
              " i\n    local -a entries\n    for ((i = 2; i < CURRENT; i++)); do\n"
              "        case \"$current_path ${words[i]}\" in\n            " +
              PathPattern(commands) + ") current_path+=\" ${words[i]}\" ;;\n        esac\n    done\n";
    script += "    case \"$current_path $previous\" in\n" + ValueBranches(commands, ZshWords, "_files") +
              "    esac\n    case $current_path in\n";
    for (const Command& command : commands) {
        script += "        " + ShellQuoted(command.path) + ")\n            entries=(\n";
        for (const CLI::App* subcommand : VisibleSubcommands(*command.app)) {
            script += ZshEntry(subcommand->get_name(), subcommand->get_description());
        }
        for (const CLI::Option* positional : Positionals(*command.app)) {
            for (const std::string& word : ValueWords(*positional)) {
                script += ZshEntry(word, positional->get_description());
            }
        }
        for (const CLI::Option* option : VisibleOptions(*command.app)) {
            for (const std::string& typed : TypedNames(*option)) {
                script += ZshEntry(typed, option->get_description());
            }
        }
        script += "            )\n            ;;\n";
    }
    return script + "    esac\n    _describe -o '" + name +
           "' entries\n    [[ $PREFIX == -* ]] || _files\n}\n_" + name + " \"$@\"\n";
}

void AddPageCommands(CLI::App& program, int& exitCode) {
    CLI::App* completion =
        program.add_subcommand("completion", "Print a script that completes command lines in a shell");
    const auto shell = std::make_shared<std::string>();
    completion->add_option("SHELL", *shell, "the shell: bash or zsh")
        ->type_name("bash|zsh")
        ->required()
        ->transform(WordIn({{"bash", "bash"}, {"zsh", "zsh"}}));
    completion->footer(
        "The packages install both scripts. Without a package:\n"
        "  source <(mqam completion bash)\n"
        "      for this shell; the line in ~/.bashrc, for every shell\n"
        "  mqam completion zsh > DIRECTORY/_mqam\n"
        "      in a directory of $fpath\n");
    completion->callback([&program, shell, &exitCode] {
        const std::string script =
            *shell == "bash" ? MakeBashCompletion(program) : MakeZshCompletion(program);
        exitCode = PrintAnswer("mqam completion", script);
    });

    CLI::App* manual = program.add_subcommand("manual", "Write the manual pages into a directory");
    manual->group("");
    const auto directory = std::make_shared<std::string>();
    manual->add_option("DIRECTORY", *directory, "the directory, which must exist")->required();
    manual->callback([&program, directory, &exitCode] {
        exitCode = kExitDone;
        const std::string product = std::string("mqamod ") + kProductVersion;
        for (const auto& [name, text] : MakeManualPages(program, product)) {
            std::ofstream file(*directory + '/' + name, std::ios::binary);
            file << text;
            if (file.flush()) {
                continue;
            }
            PrintMessage("mqam manual: " + *directory + '/' + name + " cannot be written\n");
            exitCode = kExitNotStarted;
            return;
        }
    });
}

}  // namespace mqam
