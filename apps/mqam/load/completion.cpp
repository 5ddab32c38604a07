// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/completion.h"

#include <cerrno>
#include <cstring>

#include "mqam/load/attempt_journal.h"
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
    std::vector<std::string> files = FilesOfJournal(state.checkpointFile);
    files.push_back(state.checkpointFile);
    files.push_back(state.logFile);
    for (const std::string& path : files) {
        std::string error;
        const platform::PathKind kind =
            path.empty() ? platform::PathKind::kMissing : platform::ProbePath(path);
        const int probeError = errno;
        if (kind == platform::PathKind::kMissing || kind == platform::PathKind::kOther ||
            platform::DeleteDurably(path, error))
            continue;
        if (kind == platform::PathKind::kUnknown) error = std::strerror(probeError);
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
