#include "params/number.h"

#include <algorithm>
#include <cctype>
#include <limits>

namespace {

using Limits = std::numeric_limits<std::int32_t>;
constexpr std::int64_t kBeyond =
    std::int64_t{Limits::max()} + 2;  // past both limits, with room for a digit more

bool IsSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

std::int32_t ReadNumber(const char* text, std::size_t length) {
    std::size_t i = 0;
    while (i < length && IsSpace(text[i]))
        ++i;
    const bool negative = i < length && text[i] == '-';
    if (i < length && (text[i] == '-' || text[i] == '+')) ++i;
    std::int64_t number = 0;
    for (; i < length && IsDigit(text[i]); ++i)
        number = std::min(number * 10 + (text[i] - '0'), kBeyond);
    if (negative) number = -number;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}
