// SPDX-License-Identifier: Apache-2.0

// Decides how often and for how long a command retries after a failure that may be transient (--retry-for).
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "mqam/target/target.h"

namespace mqam {

inline constexpr std::chrono::seconds kFirstPause{1};
inline constexpr std::chrono::seconds kLongestPause{60};

struct Retries {
    std::optional<RestartState> atBegin;  ///< the state that the command found
    std::optional<RestartState> seen;     ///< the state as last read; none if nothing is stored yet
    Status lastRead;                      ///< how the most recent read of the state ended
    std::chrono::steady_clock::time_point failingSince;  ///< the first failure since the last progress
    std::chrono::seconds pause = kFirstPause;            ///< before the next attempt
    int attempts = 0;                                    ///< since the first failure
};

/// Returns whether the state is the completion marker of an earlier load, because this one has not stored
/// anything yet.
[[nodiscard]] bool IsEarlierCompletionMarker(const Retries& retries);

/// Reads the state that the command finds, before its first attempt.
Status ReadFirstState(Target& target, Retries& retries);

/// Reads the state after an attempt, with the result in `lastRead`. If the load has made progress, its retries count
/// from the beginning again.
///   duration  how long the attempt took. One that connected and then waited a long time for records has made progress
///             too, even if none came.
void NoteProgress(Target& target, Retries& retries, std::chrono::steady_clock::duration duration);

/// Announces the next attempt and waits for it, longer each time. The last attempt is made when the time is over.
///   retryForSeconds  0 = the user did not ask for retries
/// Returns false if there is no next attempt: the user did not ask for one, no time is left (which is reported), or the
/// user interrupts.
[[nodiscard]] bool WaitForNextAttempt(std::uint64_t retryForSeconds, Retries& retries);

}  // namespace mqam
