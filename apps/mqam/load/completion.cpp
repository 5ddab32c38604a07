#include "mqam/load/completion.h"

#include "mqam/load/load_lock.h"
#include "platform/durable_file.h"
#include "platform/file.h"

namespace mqam {

namespace {

// The lock file of a life that died before it could remove it; a lock that is held stays.
void SweepCheckpointLock(const RestartState& state) {
    const std::string path = CheckpointLockPath(state.checkpointFile);
    std::string words;
    if (platform::ProbePath(path) == platform::PathKind::kFile &&
        AcquireLoadLock(path, 0, words) == LockOutcome::kAcquired) {
        ReleaseLoadLock(path);
    }
}

}  // namespace

bool CleanUpFinishedLoad(Target& target, RestartState& state, std::string& reason) {
    SweepCheckpointLock(state);
    if (state.phase == LoadPhase::kComplete) return true;
    if (!target.StoreEnd(state)) {
        reason = target.Failure();
        return false;
    }
    for (const std::string& path : {state.checkpointFile, state.logFile}) {
        std::string words;
        const platform::PathKind kind =
            path.empty() ? platform::PathKind::kMissing : platform::ProbePath(path);
        if (kind == platform::PathKind::kMissing || kind == platform::PathKind::kOther ||
            platform::DeleteDurably(path, words))
            continue;
        reason = "every record is in the target, but " + path +
                 " of the finished load cannot be deleted: " + words +
                 "; make that possible and run the same command again";
        return false;
    }
    RestartState complete = state;
    complete.phase = LoadPhase::kComplete;
    if (!target.StoreEnd(complete)) {
        reason = target.Failure();
        return false;
    }
    state = complete;
    return true;
}

}  // namespace mqam
