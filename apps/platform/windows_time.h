// SPDX-License-Identifier: Apache-2.0

// Converts times of Windows; only the Windows sources of this directory use it.
#pragma once

#include <cstdint>

namespace platform {

/// Converts from units of 100 ns since 1601, in which Windows counts, to nanoseconds since 1970.
[[nodiscard]] constexpr std::int64_t UnixNanoseconds(std::int64_t ticks) {
    constexpr std::int64_t kTicksTo1970 = 116444736000000000;
    return (ticks - kTicksTo1970) * 100;
}

}  // namespace platform
