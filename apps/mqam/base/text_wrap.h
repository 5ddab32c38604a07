// Text broken into lines.
#pragma once

#include <cstddef>
#include <string>

namespace mqam {

/// Breaks text at blanks so that no line is longer than `width` (a longer word stands alone). Line ends that
/// the text has are kept.
[[nodiscard]] std::string WrapText(const std::string& text, std::size_t width);

}  // namespace mqam
