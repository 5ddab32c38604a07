// A worker of a load that can be restarted: a process that lives one life of the module and ends.
#pragma once

#include "apps/mqam/load_options.h"
#include "apps/mqam/restart_life.h"

/// How a worker tells its command that the load is to go on at once. Every other exit code is one of
/// exit_codes.h and ends the command, but for those after which --retry-for tries again.
enum WorkerExitCode : int {
    kWorkerInputEnded = 64,  ///< another life has to find out whether that was all
    kWorkerNothingNew = 65,  ///< the same, but this life found nothing and its input ended early
    kWorkerRefused = 66,     ///< kExitNotStarted, told by the worker: the bare number is what some systems
                             ///< tell of a process that somebody has ended
};

/// Lives a life, tells the user how it ended and ends the process.
[[noreturn]] void LiveAsWorker(const LoadOptions& options, const RestartLifeSettings& settings,
                               RestartableTarget& target);
