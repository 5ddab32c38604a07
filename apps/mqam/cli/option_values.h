// SPDX-License-Identifier: Apache-2.0

// Checks the values of options: numbers with units, and words of a list. Every option that takes a number or
// a word is checked here, so that all of them understand the same and refuse in the same way.
#pragma once

#include <CLI/App.hpp>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "mqam/base/status.h"

namespace mqam {

enum class NumberUnit : std::uint8_t {
    kNone,
    kBytes,    ///< may be followed by k, M or G: 1024, 1024 * 1024 ... bytes
    kSeconds,  ///< may be followed by s, m, h or d
};

inline constexpr std::int64_t kNoLargest = INT64_MAX;
inline constexpr std::int64_t kLargestSeconds = 2147483647;

/// Describes the numbers that an option takes.
struct NumberRule {
    NumberUnit unit = NumberUnit::kNone;
    std::int64_t smallest = 0;
    std::int64_t largest = kNoLargest;
    bool takesForever = false;  ///< -1 is taken as well: without end
};

/// Reads a whole number with its unit. The error quotes the text, then says what is valid.
///   number  out  in bytes or seconds; unchanged on failure
[[nodiscard]] Status ReadNumber(const std::string& text, const NumberRule& rule, std::int64_t& number);

/// Describes the range, for example "1 to 600 seconds (or with a unit: s, m, h, d), or -1 to wait forever".
[[nodiscard]] std::string DescribeNumbers(const NumberRule& rule);

/// Returns a transformation for CLI::Option::transform: it replaces the text by the number in digits, or refuses it.
[[nodiscard]] CLI::Validator NumberIn(const NumberRule& rule);

/// Returns the word of the list that the text is, whatever its case; an empty string if it is none of them.
[[nodiscard]] std::string FindWord(const std::string& text, std::span<const std::string> words);

/// Returns the one of the words that the text is most likely a misspelling of; an empty string if there is none.
[[nodiscard]] std::string SuggestWord(const std::string& text, std::span<const std::string> words);

/// Returns the error for a text that is none of the words, such as "'jsn' is not a choice; use json, lines or
/// raw (did you mean json?)".
[[nodiscard]] std::string DescribeWrongWord(const std::string& text, std::span<const std::string> words);

/// Lists the words as "a, b or c".
[[nodiscard]] std::string JoinWords(std::span<const std::string> words, const char* last);

/// Returns a transformation for CLI::Option::transform: it replaces the word by its value, or refuses the text.
[[nodiscard]] CLI::Validator WordIn(std::vector<std::pair<std::string, std::string>> valueOfWord);

/// Does the same for the enumerators of an option's variable.
template <typename Enum>
[[nodiscard]] CLI::Validator EnumeratorIn(const std::vector<std::pair<std::string, Enum>>& enumerators) {
    std::vector<std::pair<std::string, std::string>> valueOfWord;
    for (const auto& [word, enumerator] : enumerators)
        valueOfWord.emplace_back(word, std::to_string(static_cast<int>(enumerator)));
    return WordIn(std::move(valueOfWord));
}

}  // namespace mqam
