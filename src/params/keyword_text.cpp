// SPDX-License-Identifier: Apache-2.0
#include "params/keyword_text.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace mqamod {

namespace {

using Limits = std::numeric_limits<std::int32_t>;

// This number is beyond both limits, and small enough that another digit does not overflow 64 bits.
constexpr std::int64_t kBeyondLimits = std::int64_t{Limits::max()} + 2;

// Returns whether a character separates tokens. strspn cannot be used: the host's text has a length, but no
// NUL.
bool IsDelimiter(char c) {
    return c != '\0' && std::strchr(" \n\t\r\f", c) != nullptr;
}

bool IsSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

Tokenized Tokenize(const char* text, std::size_t length, TokenList* list) {
    *list = {};
    if (length == 0) return Tokenized::kDone;
    length = strnlen(text, length);
    std::size_t position = 0;
    while (true) {
        while (position < length && IsDelimiter(text[position]))
            ++position;
        if (position == length) return Tokenized::kDone;
        std::size_t end = position;
        while (end < length && !IsDelimiter(text[end]))
            ++end;

        if (list->count == kMaxTokens) return Tokenized::kTooMany;
        char* token = static_cast<char*>(std::malloc(end - position + 1));
        if (token == nullptr) return Tokenized::kNoMemory;
        std::memcpy(token, text + position, end - position);
        token[end - position] = '\0';
        list->slots[list->count++] = token;
        position = end;
    }
}

void ReleaseTokens(TokenList* list) {
    for (std::int32_t i = 0; i < list->count; ++i)
        std::free(list->slots[i]);
    *list = {};
}

void UpperCase(char* token) {
    for (; *token != '\0'; ++token)
        *token = static_cast<char>(std::toupper(static_cast<unsigned char>(*token)));
}

std::int32_t ReadNumber(const char* text, std::size_t length) {
    std::size_t i = 0;
    while (i < length && IsSpace(text[i]))
        ++i;
    const bool negative = i < length && text[i] == '-';
    if (i < length && (text[i] == '-' || text[i] == '+')) ++i;
    std::int64_t number = 0;
    for (; i < length && IsDigit(text[i]); ++i)
        number = std::min(number * 10 + (text[i] - '0'), kBeyondLimits);
    if (negative) number = -number;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

}  // namespace mqamod
