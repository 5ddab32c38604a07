// SPDX-License-Identifier: Apache-2.0

// Reads the text of keywords and attributes: tokens, numbers and upper case.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mqamod {

inline constexpr std::int32_t kMaxTokens = 256;

/// The tokens of one text, each a NUL-terminated copy on the heap; the slot after the last one is null. Free
/// the list with ReleaseTokens, whatever Tokenize returned.
struct TokenList {
    char* slots[kMaxTokens + 1];
    std::int32_t count;
};

enum class Tokenized { kDone, kTooMany, kNoMemory };

/// Splits a text at blanks, line ends, tabs and form feeds. There is no quoting, so no token contains a
/// blank.
///   text  in   length bytes; it ends earlier at a NUL
///   list  out  the tokens found; with kTooMany the first 256, with kNoMemory those found before memory ran
///              out
[[nodiscard]] Tokenized Tokenize(const char* text, std::size_t length, TokenList* list);

/// Frees all tokens and clears the list.
void ReleaseTokens(TokenList* list);

/// Converts a token to upper case in place.
void UpperCase(char* token);

/// Reads a decimal number: leading white space, an optional sign, digits. Anything after the digits is
/// ignored, and a text without digits is 0. A number that does not fit 32 bits becomes the nearest limit, so
/// that it is out of every range instead of wrapping around into one.
///   text  in  length bytes; it ends earlier at a NUL
[[nodiscard]] std::int32_t ReadNumber(const char* text, std::size_t length);

}  // namespace mqamod
