// One crash point from its beginning to its verdict.
#pragma once

#include <string>
#include <vector>

#include "tests/crash/crash_class.h"
#include "tests/crash/load_trial.h"

enum class PointVerdict {
    kPassed,
    kFailed,
    kBeyond,  ///< the load was done before the last death could come: there is no such point
};

struct PointOutcome {
    PointVerdict verdict = PointVerdict::kFailed;
    std::string where;  ///< the calls that the deaths came at
    std::string wrong;  ///< kFailed: what
    CallCounts counts;  ///< of the run with the last death: up to there, or up to its end
};

/// Runs a load of the class in `folder`, which is made and must not be there: the prelude, the deaths one
/// after the other, then the same command until it is done, and checks what it left.
///   deaths     in   at least one; the last with number 0: it is never reached, to count
[[nodiscard]] PointOutcome RunPoint(const CrashClass& crashClass, const std::vector<Death>& deaths,
                                    const std::string& folder, const Programs& programs);
