// SPDX-License-Identifier: Apache-2.0
#include "platform/clock.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "platform/windows_time.h"

namespace platform {

std::int64_t FileClockNs() {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return UnixNanoseconds(static_cast<std::int64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime);
}

std::int64_t MonotonicMs() {
    return static_cast<std::int64_t>(GetTickCount64());
}

void SleepMs(std::int64_t milliseconds) {
    Sleep(static_cast<DWORD>(milliseconds));
}

}  // namespace platform
