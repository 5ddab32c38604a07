// SPDX-License-Identifier: Apache-2.0

// A clock that only the module sees. Its calendar time does not advance until the test moves it, and its
// pauses take no time.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/library.h"
#include "tests/support/import_patch.h"

class FakeClock {
  public:
    explicit FakeClock(platform::LibraryHandle module);
    ~FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    /// Moves the calendar time.
    void Advance(std::int64_t seconds) { now += seconds; }
    /// Moves it to a time for which the calendar has no year.
    void LeaveTheCalendar() { now = INT64_MAX; }
    /// Every time call of the module from now on fails with -1.
    void Break() { broken = true; }

    std::int64_t now = 1700000000;  ///< seconds since 1970
    std::int64_t step = 0;          ///< by which each time call of the module advances the time
    bool broken = false;
    std::vector<std::int64_t> pausesMs;  ///< what the module asked to sleep, in milliseconds

  private:
    std::vector<std::unique_ptr<ImportPatch>> patches_;
};
