// How often and how long a command tries again what failed in a way that time may heal (--retry-for).
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "mqam/target/target.h"

namespace mqam {

inline constexpr std::chrono::seconds kFirstPause{1};
inline constexpr std::chrono::seconds kLongestPause{60};

struct Retries {
    std::optional<RestartState> atBegin;                 ///< the state that the command found
    std::optional<RestartState> seen;                    ///< the state as last read; none stored yet
    Status lastRead;                                     ///< how the most recent read of the state ended
    std::chrono::steady_clock::time_point failingSince;  ///< the first failure behind the last progress
    std::chrono::seconds pause = kFirstPause;            ///< before the next attempt
    int attempts = 0;                                    ///< since then
};

/// Whether the load before this one is over, and this one has stored nothing yet.
[[nodiscard]] bool IsReceiptOfBefore(const Retries& retries);

/// Reads the state that the command finds, before its first life. Returns false when that fails.
Status ReadFirstState(Target& target, Retries& retries);

/// Reads the state after a life; when the load has got on, its attempts count anew.
///   lifeLasted  how long the life took. One that connected and then waited for records for long has got on,
///               too, though none came.
void NoteProgress(Target& target, Retries& retries, std::chrono::steady_clock::duration lifeLasted);

/// Tells of the next attempt and waits for it, each time longer. The last one is made when the time is over.
///   retryForSeconds  0 = the user did not ask for attempts
/// Returns false when there is none: not asked for, no time left (which is told), or the user wants an end.
[[nodiscard]] bool WaitForNextAttempt(std::uint64_t retryForSeconds, Retries& retries);

}  // namespace mqam
