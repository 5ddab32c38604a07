// One life of a load that can be restarted: from the restart state and whatever the lives before left on
// disk, to an end of input, a failure or a request to stop. The numbered rules that its order of calls
// follows, and the reason for each, are in docs/restart.md.
//
// A process lives at most one of them and must then end at once (EndProcessAtOnce), without Shut: the
// module's state cannot be used a second time, and after a failure neither may be closed what would commit
// messages never delivered.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "apps/mqam/failure_report.h"
#include "apps/mqam/load_life.h"
#include "apps/mqam/progress.h"
#include "apps/mqam/restartable_target.h"
#include "entry/host_interface.h"

struct RestartLifeSettings {
    std::string initString;
    std::vector<std::pair<std::string, std::string>> attributes;  ///< put after Init, in order
    std::uint64_t checkpointEveryRecords = 0;                     ///< 0 = not by count
    std::uint64_t checkpointEverySeconds = 0;                     ///< 0 = not by time
    bool meetsReceipt = false;    ///< a load that is over was so before the command
    bool followsEnd = false;      ///< the life before ended a moment ago, after the whole wait interval
    bool unfinishedOnly = false;  ///< begin no load over one that is over
};

enum class RestartLifeEnd {
    kLoadDone,  ///< the queue was found empty twice: every message is in the target, the files are cleaned up
    kNothingToDo,    ///< this very load was complete before the command: nothing was touched
    kInputEnded,     ///< another life has to find out whether that was all
    kNothingNew,     ///< the input ended early, and the life before had come as far
    kOnRequest,      ///< stopWanted said so
    kTimeout,        ///< the module's time-out expired
    kRefused,        ///< nothing was started: see refusal
    kModuleFailed,   ///< see moduleFailure: time may heal it
    kModuleRefuses,  ///< see moduleFailure: it stays so until somebody changes something
    kTargetFailed,   ///< the target or another file of the load: see targetFailure
};

struct RestartLifeOutcome {
    RestartLifeEnd end = RestartLifeEnd::kRefused;
    RestartState state;  ///< as last stored
    ModuleFailure moduleFailure;
    std::string targetFailure;
    std::string refusal;
};

/// Lives one life.
///   entryPoint  in      the loaded module
///   target      in/out  not locked yet; unlocked again unless the module still has the input open
///   counters    out     counted while the life runs
[[nodiscard]] RestartLifeOutcome RunRestartLife(PIDMMainFunction entryPoint,
                                                const RestartLifeSettings& settings,
                                                RestartableTarget& target, const LifeObserver& observer,
                                                ProgressCounters& counters);

/// Stores that a load is finished once more, so that it is on the medium whatever became of the life that
/// first did so; then deletes its checkpoint file and log, and stores that it is complete. The target is
/// locked. Returns false with the reason in words.
[[nodiscard]] bool CleanUpFinishedLoad(RestartableTarget& target, RestartState& state, std::string& reason);
