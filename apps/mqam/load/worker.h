// A worker of a load that can be restarted: a process that lives one life of the module and ends.
#pragma once

#include <cstdint>
#include <string>

#include "mqam/base/progress.h"
#include "mqam/load/attempt.h"

namespace mqam {

/// How a worker tells its command that the load is to go on at once. Every other exit code is one of
/// exit_codes.h and ends the command, but for those after which --retry-for tries again.
enum WorkerExitCode : int {
    kWorkerInputEnded = 64,  ///< another life has to find out whether that was all
    kWorkerNoProgress = 65,  ///< the same, but this life found nothing and its input ended early
    kWorkerRefused = 66,     ///< kExitNotStarted, told by the worker: the bare number is what some systems
                             ///< tell of a process that somebody has ended
};

/// The hidden options by which a command starts its workers. The value of the first one is the time at which
/// the command began, in milliseconds since the system's epoch.
inline constexpr char kWorkerOption[] = "--worker-since";
inline constexpr char kReceiptOption[] = "--worker-meets-receipt";
inline constexpr char kFollowsEndOption[] = "--worker-follows-end";

struct WorkerSettings {
    std::string modulePath;             ///< empty = the module next to the program
    std::int64_t commandStartedMs = 0;  ///< milliseconds since the system's epoch
    ProgressStyle progress = ProgressStyle::kNone;
    bool quiet = false;
    LoadObserver observer;
    AttemptSettings attempt;
};

/// Lives a life, tells the user how it ended and ends the process.
[[noreturn]] void RunAsWorker(const WorkerSettings& settings, Target& target);

}  // namespace mqam
