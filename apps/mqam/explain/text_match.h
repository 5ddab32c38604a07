// SPDX-License-Identifier: Apache-2.0

// Compares what a user typed with what there is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mqam {

/// Returns the text with the letters a to z replaced by A to Z.
[[nodiscard]] std::string ToUpper(std::string_view text);

/// Returns how many characters must be inserted, deleted, replaced or swapped with their neighbour to make
/// one text of the other.
[[nodiscard]] std::size_t EditDistance(std::string_view left, std::string_view right);

}  // namespace mqam
