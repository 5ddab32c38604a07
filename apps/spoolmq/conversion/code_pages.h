// SPDX-License-Identifier: Apache-2.0

// Defines the single-byte character sets, each as a table of the Unicode characters that its 256 bytes mean.
#pragma once

#include <array>
#include <cstdint>

#include "mqi/mqi.h"

namespace spoolmq {

/// The Unicode character for each byte; the byte is the index.
using CodePage = std::array<std::uint16_t, 256>;

/// Returns the table of the character set 37, 437, 500, 819, 850 or 1252; or null for any other.
[[nodiscard]] const CodePage* FindCodePage(MQLONG ccsid);

}  // namespace spoolmq
