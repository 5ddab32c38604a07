// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/config_file.h"

#include <CLI/Config.hpp>
#include <algorithm>

#include "mqam/cli/command_line.h"

namespace mqam {

namespace {

constexpr const char* kOption = "--config";

// Returns the path that follows --config, or an empty string.
std::string FindPath(const std::vector<std::string>& words) {
    const std::string withValue = std::string(kOption) + "=";
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == kOption && i + 1 < words.size()) return words[i + 1];
        if (words[i].starts_with(withValue)) return words[i].substr(withValue.size());
    }
    return "";
}

bool IsGiven(const CLI::Option& option, const std::vector<std::string>& words) {
    return std::ranges::any_of(words, [&option](const std::string& word) {
        if (!word.starts_with('-')) return false;
        const std::string name = word.substr(0, word.find('='));
        return option.check_name(name);
    });
}

bool IsOverridden(const CLI::Option& option, const std::vector<std::string>& words) {
    return IsGiven(option, words) ||
           std::ranges::any_of(option.get_excludes(),
                               [&words](const CLI::Option* other) { return IsGiven(*other, words); });
}

// Appends the option as it would be typed.
Status AddWords(const CLI::Option& option, const CLI::ConfigItem& item, std::vector<std::string>& words) {
    const std::string name = "--" + item.name;
    const auto needed = static_cast<std::size_t>(option.get_items_expected_min());
    const bool mayRepeat = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    if (option.get_items_expected_max() == 0) {
        const std::string value = item.inputs.empty() ? "true" : item.inputs.front();
        if (item.inputs.size() > 1 || (value != "true" && value != "false")) {
            return Status::Refused(item.name + " is either true or false, not '" + value + "'");
        }
        if (value == "true") words.push_back(name);
        return {};
    }
    if (!mayRepeat && item.inputs.size() != needed) {
        return Status::Refused(item.name + " has " + std::to_string(item.inputs.size()) +
                               " values and needs " + std::to_string(needed) +
                               "; put a value that contains blanks into double quotes");
    }
    if (needed == 1) {
        for (const std::string& value : item.inputs)
            words.push_back(name + "=" + value);
        return {};
    }
    words.push_back(name);
    words.insert(words.end(), item.inputs.begin(), item.inputs.end());
    return {};
}

}  // namespace

Status ExpandConfigFile(const CLI::App& program, std::vector<std::string>& words) {
    const std::string path = FindPath(words);
    if (path.empty() || words.front().starts_with('-')) return {};
    std::string ignored;
    const CLI::App* command = FindCommand(program, {words.front()}, ignored);
    if (command == nullptr || command->get_option_no_throw(kOption) == nullptr) return {};
    std::vector<std::string> added;
    std::vector<CLI::ConfigItem> items;
    try {
        items = CLI::ConfigINI().from_file(path);
    } catch (const CLI::Error&) {
        return Status::Refused("--config " + path + ": the file cannot be read; name a file that exists");
    }
    for (const CLI::ConfigItem& item : items) {
        // Sections begin and end with items of their own.
        if (item.name == "++" || item.name == "--") continue;
        if (!item.parents.empty() && item.parents != std::vector<std::string>{command->get_name()}) continue;
        const CLI::Option* option = command->get_option_no_throw("--" + item.name);
        if (option == nullptr || option->get_group().empty()) {
            return Status::Refused(path + ": " + DescribeUnknownOption(*command, "--" + item.name));
        }
        if (IsOverridden(*option, words)) continue;
        const Status taken = AddWords(*option, item, added);
        if (!taken.IsOk()) return Status::Refused(path + ": " + taken.Error());
    }
    words.insert(words.begin() + 1, added.begin(), added.end());
    return {};
}

}  // namespace mqam
