// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/read_wait.h"

#include <algorithm>

namespace mqam {

std::optional<std::int64_t> TimeoutForSlices(std::optional<std::chrono::seconds> readWait) {
    // The module divides the milliseconds of RWAIT by the seconds of TIMEOUT_SECONDS.
    constexpr std::int64_t kSlicesPerSecond = 4;
    if (!readWait || readWait->count() <= 0) return std::nullopt;
    return readWait->count() * kSlicesPerSecond;
}

std::optional<std::chrono::seconds> ReadLimit(std::optional<std::chrono::seconds> readWait,
                                              std::chrono::seconds timeout) {
    constexpr std::chrono::seconds kUnknown{0};
    if (timeout == kUnknown) return std::nullopt;
    if (readWait && *readWait != kUnknown && *readWait <= timeout) return std::nullopt;
    return timeout;
}

NextRead PlanNextRead(std::optional<std::chrono::milliseconds> left, std::chrono::milliseconds intoSecond) {
    // A Read that begins this far into a second takes 1.75 s, so a request to stop is noticed within two seconds.
    constexpr std::chrono::milliseconds kEarliestInSecond{250};
    constexpr std::chrono::milliseconds kShortestRead{1000};
    if (left && *left < kShortestRead) return {std::max(*left, std::chrono::milliseconds(0)), false};
    return {std::max(kEarliestInSecond - intoSecond, std::chrono::milliseconds(0)), true};
}

}  // namespace mqam
