// SPDX-License-Identifier: Apache-2.0

// Decides how --help looks: the name of a value follows its option, and descriptions are wrapped in their
// column.
#pragma once

#include <CLI/App.hpp>
#include <CLI/Formatter.hpp>
#include <string>

namespace mqam {

class HelpFormat : public CLI::Formatter {
  public:
    HelpFormat();
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
};

}  // namespace mqam
