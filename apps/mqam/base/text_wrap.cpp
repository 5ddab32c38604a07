// SPDX-License-Identifier: Apache-2.0
#include "mqam/base/text_wrap.h"

#include <sstream>

namespace mqam {

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

}  // namespace mqam
