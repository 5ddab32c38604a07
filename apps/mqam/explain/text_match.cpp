// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/text_match.h"

#include <algorithm>
#include <vector>

namespace mqam {

std::string ToUpper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return upper;
}

std::size_t EditDistance(std::string_view left, std::string_view right) {
    std::vector<std::size_t> beforeLast(right.size() + 1);
    std::vector<std::size_t> last(right.size() + 1);
    std::vector<std::size_t> row(right.size() + 1);
    for (std::size_t j = 0; j <= right.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
        std::swap(beforeLast, last);
        std::swap(last, row);
    }
    return last[right.size()];
}

}  // namespace mqam
