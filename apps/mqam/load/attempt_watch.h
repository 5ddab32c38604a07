// SPDX-License-Identifier: Apache-2.0

// Ends an attempt of a restartable load whose own thread cannot, because it is in a request of the module.
//
// The module cannot be asked to return from a Read that waits for messages: its requests come from one
// thread. So a request to stop, or --timeout, ends the process in the middle of the Read. That is a death
// like any other: what was read since the last checkpoint is in the checkpoint file, and what was not yet
// there is back on the queue.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>

#include "mqam/load/exit_table.h"

namespace mqam {

/// What is known of an attempt at an instant.
struct AttemptTimes {
    std::optional<std::chrono::nanoseconds> sinceStop;  ///< since the user's request to stop
    std::optional<std::chrono::nanoseconds> inRead;     ///< since the Read began in which the attempt is
    std::optional<std::chrono::seconds> readLimit;      ///< see ReadLimit
};

/// Returns how the attempt is to be ended at this instant; none if it can end by itself, or need not end.
[[nodiscard]] std::optional<AttemptEnd> EndFromOutside(const AttemptTimes& times);

/// Watches one attempt. One thread makes the attempt and reports its Reads; another one, started here, watches.
class AttemptWatch {
  public:
    using Clock = std::chrono::steady_clock;

    /// Starts to watch, for the rest of the process.
    ///   stopWanted  whether the user has asked the load to stop
    ///   end         called once, on the thread of the watch; it must end the process
    void Start(std::function<bool()> stopWanted, std::function<void(AttemptEnd)> end);

    /// Limits each Read from now on.
    void LimitReads(std::optional<std::chrono::seconds> limit);

    void EnterRead(Clock::time_point now) {
        readSince_.store(now.time_since_epoch().count(), std::memory_order_relaxed);
    }
    void LeaveRead() { readSince_.store(kNotInRead, std::memory_order_relaxed); }

  private:
    static constexpr Clock::rep kNotInRead = -1;

    [[nodiscard]] AttemptTimes Look(std::optional<Clock::time_point> stopSeen) const;

    std::atomic<Clock::rep> readSince_{kNotInRead};
    std::atomic<std::chrono::seconds::rep> readLimit_{0};  // 0 = none
};

}  // namespace mqam
