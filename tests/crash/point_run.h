// SPDX-License-Identifier: Apache-2.0

// Runs one crash point from its start to its result.
#pragma once

#include <string>
#include <vector>

#include "tests/crash/crash_class.h"
#include "tests/crash/load_trial.h"

enum class PointVerdict {
    kPassed,
    kFailed,
    kBeyond,  ///< the load was done before the last kill: there is no such point
};

struct PointOutcome {
    PointVerdict verdict = PointVerdict::kFailed;
    std::string where;  ///< the calls at which it was killed
    std::string wrong;  ///< kFailed: what is wrong
    CallCounts counts;  ///< calls of the run with the last kill, up to it or up to the end
};

/// Creates `folder`, which must not exist, and runs a load of the class in it: the prelude, the kills one
/// after another, then the same command until the load is done. Then checks what the load left.
///   deaths     in   the kills, at least one; if the last one has the number 0, it never happens, and the run
///                   only counts the calls
[[nodiscard]] PointOutcome RunPoint(const CrashClass& crashClass, const std::vector<Death>& deaths,
                                    const std::string& folder, const Programs& programs);
