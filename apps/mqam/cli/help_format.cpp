// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/help_format.h"

#include "mqam/base/text_wrap.h"

namespace mqam {

namespace {

constexpr std::size_t kOptionColumn = 32;
constexpr std::size_t kDescriptionWidth = 78;

}  // namespace

HelpFormat::HelpFormat() {
    column_width(kOptionColumn);
}

std::string HelpFormat::make_option_opts(const CLI::Option* option) const {
    std::string text;
    if (!option->get_type_name().empty()) text += " " + option->get_type_name();
    if (option->get_required()) text += " (required)";
    return text;
}

std::string HelpFormat::make_option_desc(const CLI::Option* option) const {
    return WrapText(option->get_description(), kDescriptionWidth);
}

}  // namespace mqam
