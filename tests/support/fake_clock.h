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

    /// Moves the calendar time forward.
    void Advance(std::int64_t seconds) { now += seconds; }
    /// Moves the clock to a time for which the calendar has no year.
    void LeaveTheCalendar() { now = INT64_MAX; }
    /// Makes every later time call of the module fail with -1.
    void Break() { broken = true; }

    std::int64_t now = 1700000000;  ///< seconds since 1970
    std::int64_t step = 0;          ///< the seconds by which each time call of the module advances the time
    bool broken = false;
    std::vector<std::int64_t> pausesMs;  ///< the pauses that the module asked for, in milliseconds

  private:
    std::vector<std::unique_ptr<ImportPatch>> patches_;
};
