// Splits keyword text into tokens: whatever stands between blanks, line ends, tabs and form feeds. There is
// no quoting, so a path or name cannot contain a blank.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr std::int32_t kMaxTokens = 256;

/// The tokens of one text, each a NUL-terminated heap copy; the slot behind the last one is null. Free with
/// ReleaseTokens, whatever Tokenize returned.
struct TokenList {
    char* slots[kMaxTokens + 1];
    std::int32_t count;
};

enum class Tokenized { Done, TooMany, NoMemory };

/// Splits length bytes of text; a NUL among them ends the text.
///   list  out  the tokens found, also when there are too many (the first 256) or memory ran out
[[nodiscard]] Tokenized Tokenize(const char* text, std::size_t length, TokenList* list);

/// Frees all tokens and clears the list.
void ReleaseTokens(TokenList* list);

/// Converts a token to upper case in place.
void UpperCase(char* token);
