// SPDX-License-Identifier: Apache-2.0

// Does what a restartable load still has to do on disk once every message is in its target.
#pragma once

#include "mqam/base/status.h"
#include "mqam/target/target.h"

namespace mqam {

/// Stores once more that the load is finished, because the attempt that stored it first may have died before it reached
/// the disk; then deletes the checkpoint file and the log, and stores that the load is complete. Requires the target's
/// lock.
Status CleanUpFinishedLoad(Target& target, RestartState& state);

}  // namespace mqam
