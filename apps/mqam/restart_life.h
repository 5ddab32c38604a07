// One life of a load that can be restarted: from the restart state and whatever the lives before left on
// disk, to an end of input, a failure or a request to stop. The numbered rules that its order of calls
// follows, and the reason for each, are in docs/hosts.md.
//
// A process lives at most one of them and must then end at once (EndProcessAtOnce), without Shut: the
// module's state cannot be used a second time, and after a failure neither may be closed what would commit
// messages never delivered.
#pragma once

#include "apps/mqam/load_life.h"
#include "apps/mqam/progress.h"
#include "apps/mqam/restart_outcome.h"
#include "apps/mqam/restart_preparation.h"
#include "apps/mqam/restartable_target.h"
#include "mqamod.h"

/// Lives one life.
///   entryPoint  in      the loaded module
///   target      in/out  not locked yet; unlocked again unless the module still has the input open
///   counters    out     counted while the life runs
[[nodiscard]] RestartLifeOutcome RunRestartLife(PIDMMainFunction entryPoint,
                                                const RestartLifeSettings& settings,
                                                RestartableTarget& target, const LifeObserver& observer,
                                                ProgressCounters& counters);
