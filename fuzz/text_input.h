// Text inputs, with room for what is long: the byte 1, a character and a 16-bit count stand for so many of
// that character, so that a short input reaches the limits of paths, lines and lists.
#pragma once

#include <string>

#include "fuzz/byte_reader.h"

inline std::string TakeText(ByteReader input) {
    constexpr std::uint8_t kRun = 1;
    constexpr std::size_t kMostCharacters = 34000;
    std::string text;
    while (!input.Empty()) {
        const std::uint8_t byte = input.Byte();
        if (byte == kRun) {
            const auto character = input.Number<char>();
            const std::size_t room = kMostCharacters - std::min(text.size(), kMostCharacters);
            text.append(std::min<std::size_t>(input.Number<std::uint16_t>(), room), character);
        } else {
            text += static_cast<char>(byte);
        }
    }
    return text;
}
