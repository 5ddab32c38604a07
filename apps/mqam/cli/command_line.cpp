// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/command_line.h"

#include <algorithm>
#include <map>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/cli/option_values.h"
#include "mqam/explain/text_match.h"
#include "platform/environment.h"

namespace mqam {

namespace {

// Options that nearly every call needs although a parameter file may stand for them.
constexpr const char* kUsualOptions[] = {"--qmgr", "--queue"};

bool IsFlag(const CLI::Option& option) {
    return option.get_items_expected_max() == 0;
}

// Returns the option's first long name, "--queue", or its name without dashes if it has no long one.
std::string NameOf(const CLI::Option& option) {
    if (option.get_lnames().empty()) return option.get_name(true);
    return "--" + option.get_lnames().front();
}

std::vector<std::string> LongNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        if (option->get_group().empty()) continue;
        for (const std::string& name : option->get_lnames())
            names.push_back(name);
    }
    return names;
}

std::vector<std::string> CommandNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::App* sub : command.get_subcommands([](const CLI::App*) { return true; })) {
        if (!sub->get_group().empty()) names.push_back(sub->get_name());
    }
    return names;
}

const CLI::App* FindSubcommand(const CLI::App& command, const std::string& name) {
    for (const CLI::App* sub : command.get_subcommands([](const CLI::App*) { return true; })) {
        if (sub->get_name() == name) return sub;
    }
    return nullptr;
}

std::string DescribeUnknownCommand(const CLI::App& command, const std::string& word) {
    const std::vector<std::string> names = CommandNames(command);
    const std::string suggestion = SuggestWord(word, names);
    return "there is no command '" + word + "'" +
           (suggestion.empty()
                ? "; the commands are " + JoinWords(names, "and")
                : "; did you mean " + suggestion + "? The commands are " + JoinWords(names, "and"));
}

std::vector<std::string> NamesThatBeginWith(const std::string& start, const std::vector<std::string>& names) {
    constexpr std::size_t kShortestStart = 3;
    std::vector<std::string> found;
    if (start.size() < kShortestStart) return found;
    std::ranges::copy_if(names, std::back_inserter(found),
                         [&start](const std::string& name) { return name.starts_with(start); });
    return found;
}

// Returns the first part of an option's description: what it is, without limits and defaults.
std::string BriefOf(const CLI::Option& option) {
    const std::string& description = option.get_description();
    return description.substr(
        0, std::min({description.find(". "), description.find(';'), description.find(", ")}));
}

std::string DescribeMissingValue(const CLI::Option& option, const std::string& name, int given) {
    const std::string needs = name + " needs " + option.get_type_name();
    if (given == 0) return needs + ": " + BriefOf(option);
    return needs + "; only the first of these values was given";
}

// Reads one command line.
class Reader {
  public:
    Reader(const CLI::App& program, const std::vector<std::string>& words) : words_(words) {
        line_.command = &program;
    }

    CommandLine Read() {
        while (next_ < words_.size() && line_.error.empty() && !line_.wantsHelp)
            ReadWord(words_[next_++]);
        if (line_.error.empty() && !line_.wantsHelp) CheckWhatIsMissing();
        return line_;
    }

  private:
    void ReadWord(const std::string& word) {
        if (!onlyPositionals_ && word == "--") {
            onlyPositionals_ = true;
        } else if (onlyPositionals_ || word.size() < 2 || word.front() != '-') {
            ReadPositional(word);
        } else if (word.starts_with("--")) {
            ReadLong(word);
        } else {
            ReadShort(word);
        }
    }

    void ReadPositional(const std::string& word) {
        const CLI::App* sub = onlyPositionals_ ? nullptr : FindSubcommand(*line_.command, word);
        if (sub != nullptr) {
            line_.command = sub;
            valueOf_.clear();
            positionals_ = 0;
            return;
        }
        if (!CommandNames(*line_.command).empty()) {
            line_.error = DescribeUnknownCommand(*line_.command, word);
            return;
        }
        if (++positionals_ <= PositionalsMax()) return;
        if (word == "help") {
            line_.wantsHelp = true;
            return;
        }
        line_.error = "'" + word + "' belongs to no option";
        const std::vector<std::string> names = LongNames(*line_.command);
        if (!FindWord(word, names).empty()) line_.error += "; did you mean --" + FindWord(word, names) + "?";
        if (!lastFlag_.empty()) line_.error += "; " + lastFlag_ + " takes no value";
    }

    [[nodiscard]] int PositionalsMax() const {
        int most = 0;
        for (const CLI::Option* option : line_.command->get_options()) {
            if (option->get_positional()) most += std::min(option->get_items_expected_max(), 1 << 20);
        }
        return most;
    }

    void ReadLong(const std::string& word) {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const CLI::Option* option = line_.command->get_option_no_throw(name);
        if (option == nullptr || !option->nonpositional()) {
            line_.error = DescribeUnknownOption(*line_.command, name);
        } else if (equals != std::string::npos) {
            NoteOption(*option, name, word.substr(equals + 1));
        } else {
            ReadValues(*option, name);
        }
    }

    void ReadShort(const std::string& word) {
        // -QMGR is how the module's own keywords are written.
        if (word.size() > 2 && !FindWord(word.substr(1), LongNames(*line_.command)).empty()) {
            line_.error = DescribeUnknownOption(*line_.command, word);
            return;
        }
        for (std::size_t i = 1; i < word.size() && line_.error.empty(); ++i) {
            const std::string name = {'-', word[i]};
            const CLI::Option* option = line_.command->get_option_no_throw(name);
            if (option == nullptr) {
                line_.error = DescribeUnknownOption(*line_.command, i == 1 ? word : name);
                return;
            }
            if (IsFlag(*option) || i + 1 == word.size()) {
                ReadValues(*option, name);
                continue;
            }
            NoteOption(*option, name, word.substr(i + 1));
            return;
        }
    }

    void ReadValues(const CLI::Option& option, const std::string& name) {
        if (&option == line_.command->get_help_ptr()) {
            line_.wantsHelp = true;
            return;
        }
        if (IsFlag(option)) {
            lastFlag_ = name;
            valueOf_[&option] = name;
            return;
        }
        std::string values;
        for (int i = 0; i < option.get_items_expected_min(); ++i) {
            if (next_ == words_.size() || IsOption(words_[next_])) {
                line_.error = DescribeMissingValue(option, name, i);
                if (next_ < words_.size()) line_.error += "; the next word is the option " + words_[next_];
                return;
            }
            values += (values.empty() ? "" : " ") + words_[next_++];
        }
        NoteOption(option, name, values);
    }

    [[nodiscard]] bool IsOption(const std::string& word) const {
        return word.starts_with("--") &&
               line_.command->get_option_no_throw(word.substr(0, word.find('='))) != nullptr;
    }

    void NoteOption(const CLI::Option& option, const std::string& name, const std::string& value) {
        lastFlag_.clear();
        const auto [earlier, isFirst] = valueOf_.emplace(&option, name + " " + value);
        const bool mayRepeat = option.get_multi_option_policy() != CLI::MultiOptionPolicy::Throw ||
                               option.get_expected_max() > 1;
        if (isFirst || mayRepeat || IsFlag(option)) return;
        line_.error = "an option is given twice: " + earlier->second + " and " + name + " " + value +
                      "; keep one of them";
    }

    void CheckWhatIsMissing() {
        const std::vector<std::string> names = CommandNames(*line_.command);
        const bool asksForVersion = line_.command->get_parent() == nullptr && !valueOf_.empty();
        if (!names.empty() && !asksForVersion) {
            line_.error = "the command is missing; the commands are " + JoinWords(names, "and");
        }
        int positionals = 0;
        for (const CLI::Option* option : line_.command->get_options()) {
            if (option->get_positional()) ++positionals;
            const bool isGiven =
                option->get_positional() ? positionals_ >= positionals : valueOf_.contains(option);
            if (!option->get_required() || isGiven || !line_.error.empty()) continue;
            const std::string variable = option->get_envname();
            if (!variable.empty() && !platform::ReadEnvironment(variable).empty()) continue;
            const std::string type = option->get_positional() ? "" : " " + option->get_type_name();
            line_.error = NameOf(*option) + type + " is missing: " + BriefOf(*option);
            if (!variable.empty()) line_.error += "; or set " + variable;
        }
    }

    const std::vector<std::string>& words_;
    std::size_t next_ = 0;
    CommandLine line_;
    bool onlyPositionals_ = false;
    int positionals_ = 0;                                // of the command so far
    std::string lastFlag_;                               // if the word before is a flag
    std::map<const CLI::Option*, std::string> valueOf_;  // what was typed for each option
};

// Returns the text before and after `separator`, which occurs in `text`.
std::pair<std::string, std::string> SplitAt(const std::string& text, const std::string& separator) {
    const std::size_t at = text.find(separator);
    return {text.substr(0, at), text.substr(at + separator.size())};
}

}  // namespace

std::string DescribeUnknownOption(const CLI::App& command, const std::string& typed) {
    const std::vector<std::string> names = LongNames(command);
    const std::string bare = typed.substr(typed.find_first_not_of('-'));
    const std::string fact = "there is no option " + typed;
    std::string suggestion = FindWord(bare, names);
    if (suggestion.empty()) suggestion = SuggestWord(bare, names);
    if (!suggestion.empty()) return fact + "; did you mean --" + suggestion + "?";
    std::vector<std::string> longer = NamesThatBeginWith(bare, names);
    for (std::string& name : longer)
        name.insert(0, "--");
    if (!longer.empty()) return fact + "; did you mean " + JoinWords(longer, "or") + "?";
    if (command.get_parent() == nullptr && !CommandNames(command).empty()) {
        return fact + " before a command; options follow the command that they belong to";
    }
    return fact + "; `mqam help" + PathOf(command).substr(std::string("mqam").size()) + "` lists the options";
}

bool IsAlwaysNeeded(const CLI::Option& option) {
    return option.get_required() && option.get_envname().empty();
}

CommandLine ReadCommandLine(const CLI::App& program, const std::vector<std::string>& words) {
    return Reader(program, words).Read();
}

const CLI::App* FindCommand(const CLI::App& program, const std::vector<std::string>& path,
                            std::string& error) {
    const CLI::App* command = &program;
    for (const std::string& name : path) {
        const CLI::App* sub = FindSubcommand(*command, name);
        if (sub == nullptr) {
            error = CommandNames(*command).empty() ? PathOf(*command) + " has no commands of its own"
                                                   : DescribeUnknownCommand(*command, name);
            return nullptr;
        }
        command = sub;
    }
    return command;
}

std::string DescribeParseError(const CLI::ParseError& error) {
    constexpr char kExcludes[] = " excludes ";
    constexpr char kRequires[] = " requires ";
    std::string text = error.what();
    if (error.get_name() == "ExcludesError" && text.find(kExcludes) != std::string::npos) {
        const auto [one, other] = SplitAt(text, kExcludes);
        return one + " and " + other + " exclude each other; use one of them";
    }
    if (error.get_name() == "RequiresError" && text.find(kRequires) != std::string::npos) {
        const auto [one, other] = SplitAt(text, kRequires);
        return one + " has no effect without " + other + "; use both or neither";
    }
    return text;
}

std::string PathOf(const CLI::App& command) {
    const CLI::App* parent = command.get_parent();
    return parent == nullptr ? command.get_name() : PathOf(*parent) + ' ' + command.get_name();
}

std::string SynopsisOf(const CLI::App& command) {
    std::string text = PathOf(command);
    for (const char* name : kUsualOptions) {
        const CLI::Option* option = command.get_option_no_throw(name);
        if (option != nullptr) text += " " + NameOf(*option) + " " + option->get_type_name();
    }
    for (const CLI::Option* option : command.get_options()) {
        if (option->get_positional() || !IsAlwaysNeeded(*option)) continue;
        text += " " + NameOf(*option) + " " + option->get_type_name();
    }
    if (!CommandNames(command).empty()) text += " COMMAND";
    for (const CLI::Option* option : command.get_options()) {
        if (!option->get_positional()) continue;
        const std::string name = option->get_name(true) + (option->get_items_expected_max() > 1 ? "..." : "");
        text += option->get_required() ? " " + name : " [" + name + "]";
    }
    return text + " [OPTIONS]";
}

std::string UsageLineOf(const CLI::App& command) {
    const std::string path = PathOf(command);
    const std::size_t blank = path.find(' ');
    const std::string help = blank == std::string::npos ? "mqam help" : "mqam help" + path.substr(blank);
    return "  usage     " + SynopsisOf(command) + "; `" + help + "` shows more\n";
}

int RefuseCommandLine(const CLI::App& command, const std::string& error) {
    PrintMessage(PathOf(command) + ": " + error + "\n" + UsageLineOf(command));
    return kExitNotStarted;
}

}  // namespace mqam
