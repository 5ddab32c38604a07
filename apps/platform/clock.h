// SPDX-License-Identifier: Apache-2.0

// Reads clocks and pauses.
#pragma once

#include <cstdint>

namespace platform {

/// Returns nanoseconds since 1970 UTC by the clock that stamps files, so that the result can be compared with
/// the times of a file.
[[nodiscard]] std::int64_t FileClockNs();

/// Returns milliseconds since an arbitrary moment, by a clock that no one sets.
[[nodiscard]] std::int64_t MonotonicMs();

void SleepMs(std::int64_t milliseconds);

}  // namespace platform
