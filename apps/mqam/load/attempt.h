// One life of a load that can be restarted: from the restart state and whatever the lives before left on
// disk, to an end of input, a failure or a request to stop. The numbered rules that its order of calls
// follows, and the reason for each, are in docs/hosts.md.
//
// A process lives at most one of them and must then end at once (ExitImmediately), without Shut: the
// module's state cannot be used a second time, and after a failure neither may be closed what would commit
// messages never delivered.
#pragma once

#include "mqam/base/progress.h"
#include "mqam/load/attempt_result.h"
#include "mqam/load/attempt_start.h"
#include "mqam/load/load_observer.h"
#include "mqam/target/target.h"
#include "mqamod.h"

namespace mqam {

/// Lives one life.
///   entryPoint  in      the loaded module
///   target      in/out  not locked yet; unlocked again unless the module still has the input open
///   counters    out     counted while the life runs
[[nodiscard]] AttemptResult RunAttempt(PIDMMainFunction entryPoint, const AttemptSettings& settings,
                                       Target& target, const LoadObserver& observer,
                                       ProgressCounters& counters);

}  // namespace mqam
