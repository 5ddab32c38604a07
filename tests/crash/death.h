// SPDX-License-Identifier: Apache-2.0

// One planned kill of a load. A point of a class is one kill or two, the second in the restart after the
// first. A failing call is planned in the same way, although nothing is killed there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Says which calls are counted.
enum class DeathScope {
    kOwn,    ///< system calls that change the load's own files
    kStore,  ///< system calls on the queue manager's files: its agent is killed
    kLook,   ///< system calls that only look at the load's own files
    kMqi,    ///< calls of an MQI verb, through the stand-in's fault plan
};

enum class DeathMoment {
    kBefore,
    kAfter,
    kCutToThree,  ///< a write of only its first three bytes, less than any length field
    kCutToHalf,
    kCutByOne,  ///< a write that lacks its last byte
    kEio,       ///< nothing is killed: the call fails with EIO
    kEioOn,     ///< the same, and every later call of the scope on the same file fails
    kEioAll,    ///< kLook: the same, and every later call of any scope on the same file fails
    kNoSpace,   ///< like kEio, but with ENOSPC; kNoSpaceOn is like kEioOn
    kNoSpaceOn,
};

struct Death {
    DeathScope scope = DeathScope::kOwn;
    DeathMoment moment = DeathMoment::kBefore;
    int life = 0;      ///< kMqi: the number of the worker process, counted from 1
    std::string verb;  ///< kMqi
    std::uint64_t number =
        0;  ///< number of the counted call, from 1; cuts count only writes that are long enough
};

[[nodiscard]] bool IsCut(DeathMoment moment);
/// Returns the error with which the call fails, or 0 if the process is killed.
[[nodiscard]] int ErrorAt(DeathMoment moment);
[[nodiscard]] bool GoesOnFailing(DeathMoment moment);
[[nodiscard]] bool FailsEveryScope(DeathMoment moment);

/// Returns a name such as "own-before-17", "own-cut-to-half-3", "look-eio-on-5" or "life2-MQGET-after-1".
[[nodiscard]] std::string DescribeDeath(const Death& death);
/// Returns the names of the kills, joined by "+".
[[nodiscard]] std::string DescribePoint(const std::vector<Death>& deaths);
/// Parses what DescribePoint makes. Returns false if the text is not a point.
[[nodiscard]] bool ParsePoint(const std::string& text, std::vector<Death>& deaths);
