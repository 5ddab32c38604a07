// A clock for the module alone: its calendar time stands still until the test moves it, and its pauses take
// no time.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tests/support/import_patch.h"

class FakeClock {
  public:
    explicit FakeClock(LoadedLibrary module);
    ~FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    /// Moves the calendar time.
    void Advance(std::int64_t seconds) { now += seconds; }
    /// Moves it where the calendar has no year for it.
    void LeaveTheCalendar() { now = INT64_MAX; }
    /// Every time call of the module from now on fails with -1.
    void Break() { broken = true; }

    std::int64_t now = 1700000000;  ///< seconds since 1970
    std::int64_t step = 0;          ///< by which each look of the module moves the time on
    bool broken = false;
    std::vector<std::int64_t> pausesMs;  ///< what the module asked to sleep, in milliseconds

  private:
    std::vector<std::unique_ptr<ImportPatch>> patches_;
};
