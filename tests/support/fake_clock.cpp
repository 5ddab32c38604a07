// SPDX-License-Identifier: Apache-2.0
#include "tests/support/fake_clock.h"

#include <gtest/gtest.h>
#include <time.h>

#include "platform/library.h"

namespace {

FakeClock* currentClock = nullptr;

std::int64_t FakeTime(std::int64_t* result) {
    const std::int64_t now = currentClock->broken ? -1 : currentClock->now;
    if (result != nullptr) *result = now;
    currentClock->now += currentClock->step;
    return now;
}

// The module may call any one of the following functions to pause, depending on the system.
void FakeSleep(std::uint32_t milliseconds) {
    currentClock->pausesMs.push_back(milliseconds);
}

int FakeUsleep(std::uint32_t microseconds) {
    currentClock->pausesMs.push_back(microseconds / 1000);
    return 0;
}

std::int64_t Milliseconds(const timespec& pause) {
    return static_cast<std::int64_t>(pause.tv_sec) * 1000 + pause.tv_nsec / 1000000;
}

int FakeNanosleep(const timespec* pause, timespec*) {
    currentClock->pausesMs.push_back(Milliseconds(*pause));
    return 0;
}

int FakeClockNanosleep(int, int, const timespec* pause, timespec*) {
    currentClock->pausesMs.push_back(Milliseconds(*pause));
    return 0;
}

}  // namespace

FakeClock::FakeClock(platform::LibraryHandle module) {
    currentClock = this;
    const auto add = [&](std::initializer_list<const char*> names, void* replacement) {
        patches_.push_back(std::make_unique<ImportPatch>(module, names, replacement));
        return patches_.back()->Found();
    };
    EXPECT_TRUE(add({"time", "_time64"}, AddressOf(&FakeTime)))
        << "the module does not import the calendar clock";
    bool pauses = add({"Sleep"}, AddressOf(&FakeSleep));
    pauses |= add({"usleep"}, AddressOf(&FakeUsleep));
    pauses |= add({"nanosleep"}, AddressOf(&FakeNanosleep));
    pauses |= add({"clock_nanosleep"}, AddressOf(&FakeClockNanosleep));
    EXPECT_TRUE(pauses) << "the module imports no function that pauses";
}

FakeClock::~FakeClock() {
    patches_.clear();
    currentClock = nullptr;
}
