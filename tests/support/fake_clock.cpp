// SPDX-License-Identifier: Apache-2.0
#include "tests/support/fake_clock.h"

#include <gtest/gtest.h>
#include <time.h>

#include "platform/library.h"

namespace {

FakeClock* current = nullptr;

std::int64_t FakeTime(std::int64_t* result) {
    const std::int64_t now = current->broken ? -1 : current->now;
    if (result != nullptr) *result = now;
    current->now += current->step;
    return now;
}

// Lists the ways in which a pause reaches the system.
void FakeSleep(std::uint32_t milliseconds) {
    current->pausesMs.push_back(milliseconds);
}

int FakeUsleep(std::uint32_t microseconds) {
    current->pausesMs.push_back(microseconds / 1000);
    return 0;
}

std::int64_t Milliseconds(const timespec& pause) {
    return static_cast<std::int64_t>(pause.tv_sec) * 1000 + pause.tv_nsec / 1000000;
}

int FakeNanosleep(const timespec* pause, timespec*) {
    current->pausesMs.push_back(Milliseconds(*pause));
    return 0;
}

int FakeClockNanosleep(int, int, const timespec* pause, timespec*) {
    current->pausesMs.push_back(Milliseconds(*pause));
    return 0;
}

template <typename Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace

FakeClock::FakeClock(platform::LibraryHandle module) {
    current = this;
    const auto add = [&](std::initializer_list<const char*> names, void* replacement) {
        patches_.push_back(std::make_unique<ImportPatch>(module, names, replacement));
        return patches_.back()->Found();
    };
    EXPECT_TRUE(add({"time", "_time64"}, Address(&FakeTime)))
        << "the module does not import the calendar clock";
    bool pauses = add({"Sleep"}, Address(&FakeSleep));
    pauses |= add({"usleep"}, Address(&FakeUsleep));
    pauses |= add({"nanosleep"}, Address(&FakeNanosleep));
    pauses |= add({"clock_nanosleep"}, Address(&FakeClockNanosleep));
    EXPECT_TRUE(pauses) << "the module imports no function that pauses";
}

FakeClock::~FakeClock() {
    patches_.clear();
    current = nullptr;
}
