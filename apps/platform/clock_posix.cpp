// SPDX-License-Identifier: Apache-2.0
#include "platform/clock.h"

#include <ctime>

namespace platform {

namespace {

std::int64_t ReadClock(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<std::int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

}  // namespace

// The kernel stamps files with its coarse clock. The precise clock is ahead of that by up to a tick.
std::int64_t FileClockNs() {
    return ReadClock(CLOCK_REALTIME_COARSE);
}

std::int64_t MonotonicMs() {
    return ReadClock(CLOCK_MONOTONIC) / 1000000;
}

void SleepMs(std::int64_t milliseconds) {
    const timespec time{milliseconds / 1000, (milliseconds % 1000) * 1000000};
    nanosleep(&time, nullptr);
}

}  // namespace platform
