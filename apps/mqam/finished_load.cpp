#include "apps/mqam/finished_load.h"

#include "apps/mqam/disk_changes.h"
#include "apps/mqam/load_lock.h"
#include "apps/mqam/platform.h"

namespace {

// The lock file of a life that died before it could remove it; a lock that is held stays.
void SweepCheckpointLock(const RestartState& state) {
    const std::string path = CheckpointLockPath(state.checkpointFile);
    std::string words;
    if (ProbePath(path) == PathKind::kFile && TakeLoadLock(path, 0, words) == LockOutcome::kTaken) {
        GiveBackLoadLock(path);
    }
}

}  // namespace

bool CleanUpFinishedLoad(RestartableTarget& target, RestartState& state, std::string& reason) {
    SweepCheckpointLock(state);
    if (state.phase == LoadPhase::kComplete) return true;
    if (!target.StoreEnd(state)) {
        reason = target.Failure();
        return false;
    }
    for (const std::string& path : {state.checkpointFile, state.logFile}) {
        std::string words;
        const PathKind kind = path.empty() ? PathKind::kMissing : ProbePath(path);
        if (kind == PathKind::kMissing || kind == PathKind::kOther || DeleteDurably(path, words)) continue;
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
