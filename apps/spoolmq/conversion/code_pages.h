// The single-byte character sets that messages are converted between, as tables of Unicode characters.
#pragma once

#include <array>
#include <cstdint>

#include "mqi/mqi.h"

namespace spoolmq {

/// The Unicode character of each byte.
using CodePage = std::array<std::uint16_t, 256>;

/// Null when the character set is not one of 37, 437, 500, 819, 850, 1252.
[[nodiscard]] const CodePage* FindCodePage(MQLONG ccsid);

}  // namespace spoolmq
