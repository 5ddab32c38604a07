// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/target.h"

namespace mqam {

Status Target::AcquireLock(TargetLock lock, int timeoutSeconds) {
    return AcquireLoadLocks(Places(), lock, timeoutSeconds);
}

void Target::ReleaseLock(TargetLock lock) {
    std::optional<RestartState> state;
    const bool isCommand = lock == TargetLock::kCommand;
    if (isCommand && LoadState(state).IsOk() && !IsUnfinished(state)) TidyLoadDirectory(Places());
    ReleaseLoadLocks(Places(), lock);
    if (isCommand) RemoveLoadDirectory(Places());
}

}  // namespace mqam
