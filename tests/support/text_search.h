// SPDX-License-Identifier: Apache-2.0

// Searches in what a program printed.
#pragma once

#include <string>

/// Returns whether a text contains a part.
[[nodiscard]] inline bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// Returns how often a text contains a part that is not empty.
[[nodiscard]] inline int CountOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}
