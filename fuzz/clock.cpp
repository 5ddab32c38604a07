// SPDX-License-Identifier: Apache-2.0
#include "fuzz/clock.h"

#include <ctime>

namespace {

constexpr std::time_t kBeginning = 1700000000;

struct Clock {
    std::time_t now = kBeginning;
    bool broken = false;
};
Clock moduleClock;

}  // namespace

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
std::time_t __wrap_time(std::time_t* out);
int __wrap_nanosleep(const std::timespec* wanted, std::timespec* rest);
// NOLINTEND(bugprone-reserved-identifier)

std::time_t __wrap_time(std::time_t* out) {
    const std::time_t now = moduleClock.broken ? static_cast<std::time_t>(-1) : moduleClock.now;
    if (out != nullptr) *out = now;
    return now;
}

int __wrap_nanosleep(const std::timespec*, std::timespec*) {
    return 0;
}
}

void AdvanceClock(std::int64_t seconds) {
    moduleClock.now += seconds;
}

void BreakClock(bool broken) {
    moduleClock.broken = broken;
}

void ResetClock() {
    moduleClock = {};
}
