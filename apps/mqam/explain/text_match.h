// SPDX-License-Identifier: Apache-2.0

// Compares a code that a user typed with the codes that exist.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mqam {

/// Returns the text with the letters a to z replaced by A to Z.
[[nodiscard]] std::string ToUpper(std::string_view text);

/// Returns the least number of insertions, deletions, replacements and swaps of neighbouring characters that
/// turn one text into the other.
[[nodiscard]] std::size_t EditDistance(std::string_view left, std::string_view right);

}  // namespace mqam
