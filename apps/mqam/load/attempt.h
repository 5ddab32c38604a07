// SPDX-License-Identifier: Apache-2.0

// Makes one attempt of a restartable load: from the restart state, and whatever the previous attempts left on
// disk, to an end of input, a failure or a request to stop. docs/hosts.md has the numbered rules that the
// order of calls follows, and the reason for each.
//
// A process makes at most one attempt and must then end immediately (platform::ExitImmediately), without Shut: the
// module's state cannot be used a second time, and after a failure nothing may be closed, because a disconnect commits
// messages that were never delivered.
#pragma once

#include "mqam/base/progress.h"
#include "mqam/load/attempt_result.h"
#include "mqam/load/attempt_start.h"
#include "mqam/load/attempt_watch.h"
#include "mqam/load/load_observer.h"
#include "mqam/target/target.h"
#include "mqamod.h"

namespace mqam {

/// Makes one attempt.
///   entryPoint  in      the loaded module
///   target      in/out  not locked yet; its lock is released again unless the module may still have the input open
///   counters    out     counted while the attempt runs
///   watch       out     learns of each Read
[[nodiscard]] AttemptResult RunAttempt(PIDMMainFunction entryPoint, const AttemptSettings& settings,
                                       Target& target, const LoadObserver& observer,
                                       ProgressCounters& counters, AttemptWatch& watch);

}  // namespace mqam
