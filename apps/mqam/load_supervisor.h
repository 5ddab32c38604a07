// The command of a load that can be restarted: it looks what was stored, starts a worker for each life, and
// goes on after a failure when the user asked for that.
#pragma once

#include "apps/mqam/load_options.h"
#include "apps/mqam/restartable_target.h"

/// Runs the load to its end, or as far as it comes. `target` is used to look at the state between two lives.
/// Returns the exit code; everything has been told.
[[nodiscard]] int SuperviseLoad(const LoadOptions& options, RestartableTarget& target);
