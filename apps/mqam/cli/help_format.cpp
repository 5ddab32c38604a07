// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/help_format.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <sstream>

#include "mqam/base/text_wrap.h"
#include "mqam/cli/command_line.h"
#include "platform/environment.h"
#include "platform/terminal.h"

namespace mqam {

namespace {

constexpr std::size_t kOptionColumn = 32;
constexpr std::size_t kNarrowOptionColumn = 8;
constexpr std::size_t kNarrow = 72;
constexpr std::size_t kCommandIndent = 2;
constexpr std::size_t kContinuationIndent = 6;

std::string Indented(const std::string& text, std::size_t indent, std::size_t first) {
    std::string lines;
    std::istringstream rest(text);
    for (std::string line; std::getline(rest, line);)
        lines += std::string(lines.empty() ? first : indent, ' ') + line + '\n';
    return lines;
}

// Wraps a command for a shell: every line but the last ends with a backslash, and no quoted text is broken.
std::string WrapCommand(const std::string& command, std::size_t width) {
    // A character that no text contains hides the blanks inside quotes from WrapText.
    constexpr char kHiddenBlank = '\x01';
    std::string hidden = command;
    bool isQuoted = false;
    for (char& c : hidden) {
        if (c == '\'') isQuoted = !isQuoted;
        if (c == ' ' && isQuoted) c = kHiddenBlank;
    }
    std::string wrapped;
    std::istringstream lines(WrapText(hidden, width - kContinuationIndent - 2));
    for (std::string line; std::getline(lines, line);) {
        if (!wrapped.empty()) wrapped += " \\\n";
        wrapped += std::string(wrapped.empty() ? kCommandIndent : kContinuationIndent, ' ') + line;
    }
    std::ranges::replace(wrapped, kHiddenBlank, ' ');
    return wrapped + '\n';
}

std::size_t IndentOf(const std::string& line) {
    return std::min(line.find_first_not_of(' '), line.size());
}

bool IsNumbered(const std::string& line) {
    return IndentOf(line) == kCommandIndent &&
           std::isdigit(static_cast<unsigned char>(line[kCommandIndent])) != 0;
}

// A group of lines of a footer that are wrapped as one.
struct Block {
    std::size_t indent = 0;
    bool isNumbered = false;  // "  8  the input ended early"
    std::string text;
};

bool Continues(const Block& block, const std::string& line) {
    if (block.text.empty()) return false;
    if (block.text.ends_with('\\')) return true;
    const bool isText = block.indent != kCommandIndent && IndentOf(line) == block.indent;
    return isText && !block.text.ends_with(':');
}

std::string WrapBlock(const Block& block, std::size_t width) {
    if (block.text.empty()) return "";
    if (block.indent == kCommandIndent && !block.isNumbered) return WrapCommand(block.text, width);
    const std::size_t hanging =
        block.indent + (block.isNumbered ? block.text.find_first_not_of("0123456789 ") : 0);
    if (!block.isNumbered) return Indented(WrapText(block.text, width - hanging), hanging, block.indent);
    const std::size_t meaning = hanging - block.indent;
    const std::string wrapped = Indented(WrapText(block.text.substr(meaning), width - hanging), hanging, 0);
    return std::string(block.indent, ' ') + block.text.substr(0, meaning) + wrapped;
}

}  // namespace

std::size_t HelpWidth() {
    constexpr std::size_t kUnknownWidth = 80;
    constexpr std::size_t kSmallest = 40;
    constexpr std::size_t kLargest = 120;
    constexpr int kStandardOutput = 1;
    std::size_t columns = std::strtoul(platform::ReadEnvironment("COLUMNS").c_str(), nullptr, 10);
    if (columns == 0)
        columns = static_cast<std::size_t>(std::max(platform::TerminalColumns(kStandardOutput), 0));
    return columns == 0 ? kUnknownWidth : std::clamp(columns, kSmallest, kLargest);
}

std::string WrapFooter(const std::string& text, std::size_t width) {
    std::string wrapped;
    Block block;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t indent = IndentOf(line);
        if (!line.empty() && Continues(block, line)) {
            if (block.text.ends_with('\\')) block.text.erase(block.text.find_last_not_of("\\ ") + 1);
            block.text += " " + line.substr(indent);
            continue;
        }
        wrapped += WrapBlock(block, width);
        block = {indent, IsNumbered(line), line.substr(indent)};
        if (line.empty()) wrapped += '\n';
    }
    return wrapped + WrapBlock(block, width);
}

HelpFormat::HelpFormat(std::size_t width) : width_(width) {}

std::string HelpFormat::Entry(const std::string& name, const std::string& description) const {
    const std::size_t column = width_ < kNarrow ? kNarrowOptionColumn : kOptionColumn;
    const std::string wrapped = WrapText(description, width_ - column);
    if (kCommandIndent + name.size() + 1 >= column || wrapped.empty()) {
        return Indented(WrapText(name, width_ - kCommandIndent), kContinuationIndent, kCommandIndent) +
               Indented(wrapped, column, column);
    }
    const std::string start = std::string(kCommandIndent, ' ') + name;
    return start + Indented(wrapped, column, column - start.size());
}

std::string HelpFormat::Options(const CLI::App& command) const {
    std::string text;
    for (const CLI::Option* option : command.get_options()) {
        if (!option->get_positional() || option->get_group().empty()) continue;
        if (text.empty()) text += "\nArguments:\n";
        text += Entry(option->get_name(true), option->get_description());
    }
    for (const std::string& group : command.get_groups()) {
        std::string entries;
        for (const CLI::Option* option : command.get_options()) {
            if (option->get_group() != group || !option->nonpositional()) continue;
            std::string name = option->get_name(false, true);
            if (!option->get_type_name().empty()) name += " " + option->get_type_name();
            if (IsAlwaysNeeded(*option)) name += " (required)";
            entries += Entry(name, option->get_description());
        }
        if (!group.empty() && !entries.empty()) text += "\n" + group + ":\n" + entries;
    }
    return text;
}

std::string HelpFormat::make_help(const CLI::App* command, std::string, CLI::AppFormatMode) const {
    std::string text = WrapText(command->get_description(), width_) + "\n\n";
    text += Indented(WrapText("Usage: " + SynopsisOf(*command), width_), kContinuationIndent, 0);
    text += Options(*command);
    std::string commands;
    for (const CLI::App* sub : command->get_subcommands([](const CLI::App*) { return true; })) {
        if (!sub->get_group().empty()) commands += Entry(sub->get_name(), sub->get_description());
    }
    if (!commands.empty()) text += "\nCommands:\n" + commands;
    if (!command->get_footer().empty()) text += "\n" + WrapFooter(command->get_footer(), width_);
    return text;
}

}  // namespace mqam
