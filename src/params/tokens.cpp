#include "params/tokens.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {

// Not strspn: the host's text is counted, not terminated.
bool IsDelimiter(char c) {
    return c != '\0' && std::strchr(" \n\t\r\f", c) != nullptr;
}

}  // namespace

Tokenized Tokenize(const char* text, std::size_t length, TokenList* list) {
    *list = {};
    if (length == 0) return Tokenized::Done;
    length = strnlen(text, length);
    std::size_t position = 0;
    while (true) {
        while (position < length && IsDelimiter(text[position]))
            ++position;
        if (position == length) return Tokenized::Done;
        std::size_t end = position;
        while (end < length && !IsDelimiter(text[end]))
            ++end;

        if (list->count == kMaxTokens) return Tokenized::TooMany;
        char* token = static_cast<char*>(std::malloc(end - position + 1));
        if (token == nullptr) return Tokenized::NoMemory;
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
