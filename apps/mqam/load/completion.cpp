// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/completion.h"

#include "mqam/target/lock_file.h"
#include "platform/durable_file.h"
#include "platform/file.h"

namespace mqam {

namespace {

// Removes the lock file of an attempt that died before it could do so. A lock that is held stays.
void SweepCheckpointLock(const RestartState& state) {
    const std::string path = CheckpointLockPath(state.checkpointFile);
    if (platform::ProbePath(path) == platform::PathKind::kFile && AcquireLockFile(path, 0).IsOk()) {
        ReleaseLockFile(path);
    }
}

}  // namespace

Status CleanUpFinishedLoad(Target& target, RestartState& state) {
    SweepCheckpointLock(state);
    if (state.phase == LoadPhase::kComplete) return {};
    Status stored = target.StoreEnd(state);
    if (!stored.IsOk()) return stored;
    for (const std::string& path : {state.checkpointFile, state.logFile}) {
        std::string error;
        const platform::PathKind kind =
            path.empty() ? platform::PathKind::kMissing : platform::ProbePath(path);
        if (kind == platform::PathKind::kMissing || kind == platform::PathKind::kOther ||
            platform::DeleteDurably(path, error))
            continue;
        return Status::Transient("every record is in the target, but " + path +
                                 " of the finished load cannot be deleted: " + error +
                                 "; make that possible and run the same command again");
    }
    RestartState complete = state;
    complete.phase = LoadPhase::kComplete;
    Status marked = target.StoreEnd(complete);
    if (marked.IsOk()) state = complete;
    return marked;
}

}  // namespace mqam
