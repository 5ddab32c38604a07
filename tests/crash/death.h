// One planned death of a load: where it is killed. A point of a class is one death or two, the second in the
// restart of the first. A call that fails is planned the same way, though nobody is killed there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Whose calls are counted.
enum class DeathScope {
    kOwn,    ///< system calls that change the load's own files
    kStore,  ///< system calls on the queue manager's files: a death of the queue manager's agent
    kLook,   ///< system calls that only look at the load's own files: counted when a death asks for them
    kMqi,    ///< calls of an MQI verb, by the stand-in's fault plan
};

enum class DeathMoment {
    kBefore,
    kAfter,
    kCutToThree,  ///< a write that brings only its first three bytes: less than any length field
    kCutToHalf,
    kCutByOne,  ///< a write that lacks its last byte
    kEio,       ///< nobody dies: the call fails with EIO
    kEioOn,     ///< and so does every later one of the scope on the same file
    kEioAll,    ///< kLook: and so does every later one on the same file, those that change it too
    kNoSpace,   ///< the first two of these with ENOSPC
    kNoSpaceOn,
};

struct Death {
    DeathScope scope = DeathScope::kOwn;
    DeathMoment moment = DeathMoment::kBefore;
    int life = 0;      ///< kMqi: the worker process, counted from 1
    std::string verb;  ///< kMqi
    std::uint64_t number =
        0;  ///< of the call among those counted, from 1; cuts count long enough writes alone
};

[[nodiscard]] bool IsCut(DeathMoment moment);
/// What a call fails with at this moment; 0 when it is a death.
[[nodiscard]] int ErrorAt(DeathMoment moment);
[[nodiscard]] bool GoesOnFailing(DeathMoment moment);
[[nodiscard]] bool FailsEveryScope(DeathMoment moment);

/// "own-before-17", "own-cut-to-half-3", "look-eio-on-5", "life2-MQGET-after-1"
[[nodiscard]] std::string DescribeDeath(const Death& death);
/// The deaths joined by "+".
[[nodiscard]] std::string DescribePoint(const std::vector<Death>& deaths);
/// Understands what DescribePoint makes. Returns false when it is none.
[[nodiscard]] bool ParsePoint(const std::string& text, std::vector<Death>& deaths);
