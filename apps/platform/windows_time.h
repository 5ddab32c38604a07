// SPDX-License-Identifier: Apache-2.0

// Times of Windows; for the Windows sources of this directory only.
#pragma once

#include <cstdint>

namespace platform {

/// Windows counts 100 ns from 1601. Returns nanoseconds from 1970.
[[nodiscard]] constexpr std::int64_t UnixNanoseconds(std::int64_t ticks) {
    constexpr std::int64_t kTicksTo1970 = 116444736000000000;
    return (ticks - kTicksTo1970) * 100;
}

}  // namespace platform
