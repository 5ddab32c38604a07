// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/sentences.h"

#include <algorithm>
#include <cctype>

#include "mqam/base/text_wrap.h"

namespace mqam {

namespace {

bool IsSmall(char c) {
    return std::islower(static_cast<unsigned char>(c)) != 0;
}

char ToCapital(char c) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

char ToSmall(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

}  // namespace

std::string MakeSentence(std::string_view clause) {
    std::string sentence(clause);
    if (sentence.empty()) return sentence;
    sentence.front() = ToCapital(sentence.front());
    if (sentence.back() != '.') sentence += '.';
    return sentence;
}

std::string MakeClause(std::string_view sentence) {
    std::string clause(sentence);
    if (clause.ends_with('.')) clause.pop_back();
    const bool isName = clause.size() > 1 && !IsSmall(clause[1]) && clause[1] != ' ';
    if (!clause.empty() && !isName) clause.front() = ToSmall(clause.front());
    return clause;
}

std::string WrapSentences(std::string_view text, std::size_t width) {
    // A character that no text contains hides the blanks of a command from WrapText.
    constexpr char kHiddenBlank = '\x01';
    std::string hidden(text);
    for (std::size_t open = hidden.find('`'); open != std::string::npos;) {
        const std::size_t close = hidden.find('`', open + 1);
        if (close == std::string::npos) break;
        if (close - open < width) {
            const auto begin = hidden.begin() + static_cast<std::ptrdiff_t>(open);
            const auto end = hidden.begin() + static_cast<std::ptrdiff_t>(close);
            std::replace(begin, end, ' ', kHiddenBlank);
        }
        open = hidden.find('`', close + 1);
    }
    std::string wrapped = WrapText(hidden, width);
    std::ranges::replace(wrapped, kHiddenBlank, ' ');
    return wrapped;
}

std::string FirstSentence(std::string_view sentences) {
    const std::size_t end = sentences.find(". ");
    return std::string(sentences.substr(0, end == std::string_view::npos ? end : end + 1));
}

}  // namespace mqam
