// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/option_values.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "mqam/explain/text_match.h"

namespace mqam {

namespace {

constexpr std::int64_t kKilo = 1024;
constexpr std::int64_t kForever = -1;

// Returns how many of the rule's units the letter stands for; 0 if the rule knows no such letter.
std::int64_t FactorOf(char letter, NumberUnit unit) {
    if (unit == NumberUnit::kBytes) {
        switch (letter) {
            case 'k':
            case 'K': return kKilo;
            case 'm':
            case 'M': return kKilo * kKilo;
            case 'g':
            case 'G': return kKilo * kKilo * kKilo;
            default: return 0;
        }
    }
    if (unit == NumberUnit::kSeconds) {
        switch (letter) {
            case 's': return 1;
            case 'm': return 60;
            case 'h': return 3600;
            case 'd': return 86400;
            default: return 0;
        }
    }
    return 0;
}

std::string NameOf(NumberUnit unit, std::int64_t number) {
    if (unit == NumberUnit::kNone) return "";
    return std::string(unit == NumberUnit::kBytes ? " byte" : " second") + (number == 1 ? "" : "s");
}

Status RefuseNumber(const std::string& text, const char* fault, const NumberRule& rule) {
    return Status::Refused("'" + text + "' " + fault + "; use " + DescribeNumbers(rule));
}

// Says what a text is that begins like a number, but does not end like one.
const char* FaultOf(std::string_view rest, const NumberRule& rule) {
    if (rest.front() == '.' || rest.front() == ',') return "is not a whole number";
    if (rest.size() == 1 && rule.unit != NumberUnit::kNone)
        return "has a unit that this option does not know";
    return "is not a number";
}

}  // namespace

std::string DescribeNumbers(const NumberRule& rule) {
    const bool isLimited = rule.largest < kLargestSeconds;
    std::string text = std::to_string(rule.smallest);
    text += isLimited ? " to " + std::to_string(rule.largest) : NameOf(rule.unit, rule.smallest) + " or more";
    if (isLimited) text += NameOf(rule.unit, rule.largest);
    if (rule.unit == NumberUnit::kBytes) text += " (or with a unit: k, M, G)";
    if (rule.unit == NumberUnit::kSeconds) text += " (or with a unit: s, m, h, d)";
    if (rule.takesForever) text += ", or -1 to wait forever";
    return text;
}

Status ReadNumber(const std::string& text, const NumberRule& rule, std::int64_t& number) {
    const std::string_view view = text;
    if (rule.takesForever && view == "-1") {
        number = kForever;
        return {};
    }
    const bool isNegative = view.size() > 1 && view.front() == '-' && view[1] >= '0' && view[1] <= '9';
    if (isNegative) return RefuseNumber(text, "is negative", rule);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(view.data(), view.data() + view.size(), value);
    const std::string_view rest(end, static_cast<std::size_t>(view.data() + view.size() - end));
    if (error == std::errc::invalid_argument) return RefuseNumber(text, "is not a number", rule);
    std::int64_t factor = 1;
    if (!rest.empty()) {
        factor = rest.size() == 1 ? FactorOf(rest.front(), rule.unit) : 0;
        if (factor == 0) return RefuseNumber(text, FaultOf(rest, rule), rule);
    }
    const bool isTooLarge = error == std::errc::result_out_of_range || value > rule.largest / factor;
    if (isTooLarge || value * factor < rule.smallest) return RefuseNumber(text, "is out of range", rule);
    number = value * factor;
    return {};
}

CLI::Validator NumberIn(const NumberRule& rule) {
    return CLI::Validator(
        [rule](std::string& text) {
            std::int64_t number = 0;
            const Status read = ReadNumber(text, rule, number);
            if (read.IsOk()) text = std::to_string(number);
            return read.Error();
        },
        "");
}

std::string FindWord(const std::string& text, std::span<const std::string> words) {
    for (const std::string& word : words) {
        if (ToUpper(word) == ToUpper(text)) return word;
    }
    return "";
}

std::string SuggestWord(const std::string& text, std::span<const std::string> words) {
    std::string best;
    // Half of a short word may be wrong by chance, so a suggestion has to fit better than that.
    std::size_t bestDistance = std::max<std::size_t>(1, text.size() / 3) + 1;
    for (const std::string& word : words) {
        const std::size_t distance = EditDistance(ToUpper(word), ToUpper(text));
        if (distance < bestDistance && distance < word.size()) {
            best = word;
            bestDistance = distance;
        }
    }
    return best;
}

std::string JoinWords(std::span<const std::string> words, const char* last) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) text += i + 1 == words.size() ? std::string(" ") + last + " " : std::string(", ");
        text += words[i];
    }
    return text;
}

std::string DescribeWrongWord(const std::string& text, std::span<const std::string> words) {
    const std::string suggestion = SuggestWord(text, words);
    return "'" + text + "' is not a choice; use " + JoinWords(words, "or") +
           (suggestion.empty() ? "" : " (did you mean " + suggestion + "?)");
}

CLI::Validator WordIn(std::vector<std::pair<std::string, std::string>> valueOfWord) {
    std::vector<std::string> words;
    words.reserve(valueOfWord.size());
    for (const auto& [word, value] : valueOfWord)
        words.push_back(word);
    return CLI::Validator(
        [words, valueOfWord = std::move(valueOfWord)](std::string& text) {
            const std::string found = FindWord(text, words);
            if (found.empty()) return DescribeWrongWord(text, words);
            const auto row =
                std::ranges::find(valueOfWord, found, &std::pair<std::string, std::string>::first);
            text = row->second;
            return std::string();
        },
        "");
}

}  // namespace mqam
