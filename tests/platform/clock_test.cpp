// SPDX-License-Identifier: Apache-2.0
#include "platform/clock.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

TEST(Clock, MonotonicTimePassesAtLeastAsLongAsTheSleep) {
    const std::int64_t startMs = platform::MonotonicMs();
    platform::SleepMs(50);
    // Windows advances this clock in ticks of up to 16 ms.
    EXPECT_GE(platform::MonotonicMs() - startMs, 30);
}

TEST(Clock, TheFileClockCountsFrom1970) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const std::int64_t nowNs = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
    constexpr std::int64_t kMinuteNs = 60000000000;
    EXPECT_GT(platform::FileClockNs(), nowNs - kMinuteNs);
    EXPECT_LT(platform::FileClockNs(), nowNs + kMinuteNs);
}

}  // namespace
