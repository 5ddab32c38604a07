// SPDX-License-Identifier: Apache-2.0

// Breaks text into lines.
#pragma once

#include <cstddef>
#include <string>

namespace mqam {

/// Breaks text at blanks so that no line is longer than `width`, except for a single word that is longer.
/// Line ends in the text are kept.
[[nodiscard]] std::string WrapText(const std::string& text, std::size_t width);

}  // namespace mqam
