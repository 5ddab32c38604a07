// How --help looks: the value's name behind the option, descriptions wrapped in their column.
#pragma once

#include <CLI/App.hpp>
#include <CLI/Formatter.hpp>
#include <string>

class HelpFormat : public CLI::Formatter {
  public:
    HelpFormat();
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
};

/// Breaks text at blanks so that no line is longer than `width` (a longer word stands alone). Line ends that
/// the text has are kept.
[[nodiscard]] std::string WrapText(const std::string& text, std::size_t width);
