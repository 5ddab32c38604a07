// Text inputs, with room for what is long: the byte 1, a character and a 16-bit count stand for so many of
// that character, so that a short input reaches the limits of paths, lines and lists.
#pragma once

#include <string>

#include "fuzz/byte_reader.h"

/// Runs end where the text is mostCharacters long: what is longer only costs time.
inline std::string TakeText(ByteReader input, std::size_t mostCharacters) {
    constexpr std::uint8_t kRun = 1;
    std::string text;
    while (!input.Empty()) {
        const std::uint8_t byte = input.Byte();
        if (byte == kRun) {
            const auto character = input.Number<char>();
            const std::size_t room = mostCharacters - std::min(text.size(), mostCharacters);
            text.append(std::min<std::size_t>(input.Number<std::uint16_t>(), room), character);
        } else {
            text += static_cast<char>(byte);
        }
    }
    return text;
}
