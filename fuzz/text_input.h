// SPDX-License-Identifier: Apache-2.0

// Reads text inputs that can be long: the byte 1, a character and a 16-bit count represent a run of that
// character, so a short input reaches the limits of paths, lines and lists.
#pragma once

#include <string>

#include "fuzz/byte_reader.h"

/// Returns the text. A run ends when the text has `mostCharacters` characters, because a longer text only
/// costs time.
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
