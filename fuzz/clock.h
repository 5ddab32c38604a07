// SPDX-License-Identifier: Apache-2.0

// Defines the clock that the module sees. It does not advance unless an input moves it, so no input waits and
// each behaves the same every time. The program is linked so that calls of time and nanosleep come here.
#pragma once

#include <cstdint>

void AdvanceClock(std::int64_t seconds);

/// Makes the clock unreadable (time answers -1) or readable again.
void BreakClock(bool broken);

void ResetClock();
