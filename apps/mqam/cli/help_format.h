// SPDX-License-Identifier: Apache-2.0

// Decides how help looks: its lines are as wide as the terminal, the name of a value follows its option, and
// descriptions are wrapped in their column.
#pragma once

#include <CLI/App.hpp>
#include <CLI/Formatter.hpp>
#include <string>

namespace mqam {

class HelpFormat : public CLI::Formatter {
  public:
    /// Lines have at most `width` characters, except for a single word that is longer.
    explicit HelpFormat(std::size_t width);

    std::string make_help(const CLI::App* command, std::string name, CLI::AppFormatMode mode) const override;

  private:
    [[nodiscard]] std::string Entry(const std::string& name, const std::string& description) const;
    [[nodiscard]] std::string Options(const CLI::App& command) const;

    std::size_t width_;
};

/// Returns how wide help may be: what COLUMNS says, else the width of the terminal, else 80; at least 40 and at most 120.
[[nodiscard]] std::size_t HelpWidth();

/// Wraps the text after the options. It consists of paragraphs, of commands indented by two blanks, and of what they do
/// indented by six. A command is continued as a shell allows.
[[nodiscard]] std::string WrapFooter(const std::string& text, std::size_t width);

}  // namespace mqam
