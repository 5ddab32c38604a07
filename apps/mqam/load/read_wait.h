// SPDX-License-Identifier: Apache-2.0

// How long a load waits for messages, and how the module is made to keep to it.
//
// The module looks at the clock only between two MQGETs, counts the seconds of the calendar that have begun,
// and ends a Read once more than RWAIT of them have. By itself it gives each MQGET the whole RWAIT, so that a
// Read on an empty queue takes twice RWAIT. The attribute TIMEOUT_SECONDS divides the wait into slices, but
// it must not expire: after that the module returns no more messages for as long as it is loaded.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace mqam {

/// Returns the value of TIMEOUT_SECONDS with which the module looks at the clock every 250 ms. It cannot
/// expire, because the wait itself is over before: a Read on an empty queue takes `readWait` and at most
/// about one second more.
///   readWait  RWAIT; none = without limit, 0 = unknown. The module cannot be made to look more often during an
///             unlimited wait, so nothing is returned.
[[nodiscard]] std::optional<std::int64_t> TimeoutForSlices(std::optional<std::chrono::seconds> readWait);

/// Returns after how long --timeout ends a Read; none if the user gave none, or if the end of the queue comes
/// first.
///   timeout   0 = the user gave none
[[nodiscard]] std::optional<std::chrono::seconds> ReadLimit(std::optional<std::chrono::seconds> readWait,
                                                            std::chrono::seconds timeout);

/// The RWAIT that an unprotected load gives the module: the shortest that there is. Such a load cannot be
/// stopped in the middle of a Read without losing a message, so it waits by Reads that return soon.
inline constexpr std::chrono::seconds kShortReadWait{1};

/// What an unprotected load does after a Read that found the queue empty.
struct NextRead {
    std::chrono::milliseconds pause;  ///< first; a request to stop ends it
    bool isMade;                      ///< else the wait is over after the pause
};

/// Plans the next Read of a wait in short Reads.
///   left        of the wait, negative if it is over; none = it has no limit
///   intoSecond  since the calendar's current second began. A Read takes until the end of the next second, so one
///               that begins with a second would take the longest.
[[nodiscard]] NextRead PlanNextRead(std::optional<std::chrono::milliseconds> left,
                                    std::chrono::milliseconds intoSecond);

}  // namespace mqam
