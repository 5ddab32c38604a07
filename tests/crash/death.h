// One planned death of a load: where it is killed. A point of a class is one death or two, the second in the
// restart of the first.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Whose calls are counted.
enum class DeathScope {
    kOwn,    ///< system calls on the load's own files
    kStore,  ///< system calls on the queue manager's files: a death of the queue manager's agent
    kMqi,    ///< calls of an MQI verb, by the stand-in's fault plan
};

enum class DeathMoment {
    kBefore,
    kAfter,
    kCutToThree,  ///< a write that brings only its first three bytes: less than any length field
    kCutToHalf,
    kCutByOne,  ///< a write that lacks its last byte
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

/// "own-before-17", "store-cut-half-3", "life2-MQGET-after-1"
[[nodiscard]] std::string DescribeDeath(const Death& death);
/// The deaths joined by "+".
[[nodiscard]] std::string DescribePoint(const std::vector<Death>& deaths);
/// Understands what DescribePoint makes. Returns false when it is none.
[[nodiscard]] bool ParsePoint(const std::string& text, std::vector<Death>& deaths);
