// What the program's exit status tells a script. One table serves the code, the help and the documentation.
#pragma once

namespace mqam {

enum ExitCode : int {
    kExitDone = 0,
    kExitNotStarted = 1,
    kExitModuleFailed = 2,
    kExitTargetFailed = 3,
    kExitModuleMissing = 4,
    kExitInterrupted = 5,
    kExitTimeout = 6,
    kExitStoppedAtOnce = 7,
    kExitEndedEarly = 8,
    kExitRestart = 9,
    kExitDamaged = 10,  ///< of `mqam checkpoint` alone: the file is incomplete, damaged or beyond repair
};

struct ExitCodeRow {
    ExitCode code;
    const char* meaning;
};

inline constexpr ExitCodeRow kExitCodes[] = {
    {kExitDone, "done: the input was read to its end and every record is in the target"},
    {kExitNotStarted,
     "nothing was started, or gone on with: an option is wrong, or what an earlier load left stands in the "
     "way"},
    {kExitModuleFailed,
     "the module failed or refused a request; the records told in the summary are in the target"},
    {kExitTargetFailed,
     "the target, or with restart information another file of the load, could not be opened or written"},
    {kExitModuleMissing, "the module could not be loaded"},
    {kExitInterrupted, "ended on request (Ctrl-C, SIGTERM); every record read is in the target"},
    {kExitTimeout,
     "the time-out (--timeout) expired; every record read is in the target, or kept for the restart"},
    {kExitStoppedAtOnce, "stopped at once (a second Ctrl-C); the target may lack the last records read"},
    {kExitEndedEarly,
     "the input ended before the read wait interval had passed; every record read is in the target, "
     "but the queue may hold more"},
    {kExitRestart,
     "a failure that time may heal interrupted a load with restart information: run the same command again"},
};

}  // namespace mqam
