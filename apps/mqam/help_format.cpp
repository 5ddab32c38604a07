#include "apps/mqam/help_format.h"

#include <sstream>

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

std::string WrapText(const std::string& text, std::size_t width) {
    std::string wrapped;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!wrapped.empty()) wrapped += '\n';
        std::size_t used = 0;
        std::istringstream words(line);
        for (std::string word; words >> word;) {
            if (used > 0 && used + 1 + word.size() > width) {
                wrapped += '\n';
                used = 0;
            } else if (used > 0) {
                wrapped += ' ';
                ++used;
            }
            wrapped += word;
            used += word.size();
        }
    }
    return wrapped;
}
