// SPDX-License-Identifier: Apache-2.0

// A worker of a restartable load: a process that makes one attempt and ends.
#pragma once

#include <cstdint>
#include <string>

#include "mqam/base/progress.h"
#include "mqam/explain/failure_report.h"
#include "mqam/load/attempt.h"

namespace mqam {

/// A command starts its workers with these hidden options. The value of the first one is the time at which
/// the command started, in milliseconds since the system's epoch.
inline constexpr char kWorkerOption[] = "--worker-since";
inline constexpr char kCompletedBeforeOption[] = "--worker-completed-before";
inline constexpr char kFollowsEndOption[] = "--worker-follows-end";
inline constexpr char kAcceptsLossOption[] = "--worker-accepts-loss";

struct WorkerSettings {
    std::string modulePath;             ///< empty = the module next to the program
    std::int64_t commandStartedMs = 0;  ///< milliseconds since the system's epoch
    ProgressStyle progress = ProgressStyle::kNone;
    bool quiet = false;
    FailureDetail detail = FailureDetail::kForOperators;
    std::string usage;  ///< follows an error about an option
    LoadObserver observer;
    AttemptSettings attempt;
};

/// Makes an attempt, reports how it ended and ends the process.
[[noreturn]] void RunAsWorker(const WorkerSettings& settings, Target& target);

}  // namespace mqam
