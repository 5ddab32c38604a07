// SPDX-License-Identifier: Apache-2.0

// Defines the clock that the module sees. It does not advance unless an input moves it, so no input waits and
// each behaves the same every time. The linker redirects calls of time and nanosleep to this clock.
#pragma once

#include <cstdint>

void AdvanceClock(std::int64_t seconds);

/// Makes the clock unreadable, so that time returns -1, or readable again.
void BreakClock(bool broken);

void ResetClock();
