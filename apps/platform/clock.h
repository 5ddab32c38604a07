// SPDX-License-Identifier: Apache-2.0

// Clocks and pauses.
#pragma once

#include <cstdint>

namespace platform {

/// Nanoseconds since 1970 UTC by the clock that stamps files, so that it can be compared with the times of a file.
[[nodiscard]] std::int64_t FileClockNs();

/// Milliseconds since some moment, by a clock that no one sets.
[[nodiscard]] std::int64_t MonotonicMs();

void SleepMs(std::int64_t milliseconds);

}  // namespace platform
