// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/position_text.h"

#include <cstring>

namespace mqam {

namespace {

constexpr char kDigits[] = "0123456789abcdef";

int DigitValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

}  // namespace

std::optional<PositionData> ParsePosition(const std::string& digits) {
    unsigned char bytes[MQAMOD_POSITION_BYTES];
    if (digits.size() != 2 * sizeof bytes) return std::nullopt;
    for (std::size_t i = 0; i < sizeof bytes; ++i) {
        const int high = DigitValue(digits[2 * i]);
        const int low = DigitValue(digits[2 * i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        bytes[i] = static_cast<unsigned char>(high * 16 + low);
    }
    PositionData position = {};
    std::memcpy(&position, bytes, sizeof position);
    return position;
}

std::string FormatPosition(const PositionData& position) {
    unsigned char bytes[MQAMOD_POSITION_BYTES];
    std::memcpy(bytes, &position, sizeof bytes);
    std::string digits;
    for (const unsigned char byte : bytes) {
        digits += kDigits[byte / 16];
        digits += kDigits[byte % 16];
    }
    return digits;
}

}  // namespace mqam
