// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/load_locks.h"

#include <algorithm>

#include "mqam/target/lock_file.h"
#include "platform/directory.h"
#include "platform/durable_file.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace mqam {

namespace {

// Another command may remove the directory, because it is empty, between its creation and the lock.
constexpr int kDirectoryAttempts = 5;

std::string InDirectory(const LoadPlaces& places, const char* name) {
    return platform::NativePath(places.directory + "/" + name);
}

bool IsInDirectory(const LoadPlaces& places, const std::string& path) {
    return path == InDirectory(places, "restart");
}

// The paths of the locks, in the order in which they are acquired.
std::vector<std::string> LockPaths(const LoadPlaces& places, TargetLock lock) {
    const bool isCommand = lock == TargetLock::kCommand;
    std::vector<std::string> paths = {InDirectory(places, isCommand ? "command.lock" : "attempt.lock")};
    // A restart file elsewhere may be named by the command of a load into another target.
    if (!places.restartFile.empty() && !IsInDirectory(places, places.restartFile))
        paths.push_back(places.restartFile + (isCommand ? ".lock" : ".life.lock"));
    return paths;
}

Status MakeLoadDirectory(const LoadPlaces& places) {
    const bool existed = platform::ProbePath(places.directory) == platform::PathKind::kOther;
    const platform::FileStatus made = platform::MakeDirectory(places.directory);
    if (made == platform::FileStatus::kExists) {
        return Status::Refused(
            places.directory +
            " is not a directory: the load keeps its files in a directory of that name; move the file away");
    }
    std::string error = platform::LastFileError();
    // The name of the directory must survive a loss of power before anything in it counts.
    if (made == platform::FileStatus::kOk &&
        (existed || platform::SyncParentDirectory(places.directory, error)))
        return {};
    return Status::Transient("the directory of the load, " + places.directory +
                             ", cannot be created: " + error +
                             "; check that the directory of the target exists and that you may write to it");
}

Status AcquireAll(const LoadPlaces& places, TargetLock lock, int timeoutSeconds) {
    const std::vector<std::string> paths = LockPaths(places, lock);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        Status locked = AcquireLockFile(paths[i], timeoutSeconds);
        if (locked.IsOk()) continue;
        for (std::size_t held = 0; held < i; ++held)
            ReleaseLockFile(paths[held]);
        return locked;
    }
    return {};
}

// Deletes a lock file that no one holds.
void SweepLock(const std::string& path) {
    if (platform::ProbePath(path) == platform::PathKind::kFile && AcquireLockFile(path, 0).IsOk())
        ReleaseLockFile(path);
}

}  // namespace

Status AcquireLoadLocks(const LoadPlaces& places, TargetLock lock, int timeoutSeconds) {
    Status status;
    for (int attempt = 0; attempt < kDirectoryAttempts; ++attempt) {
        if (lock == TargetLock::kCommand) status = MakeLoadDirectory(places);
        if (status.IsOk()) status = AcquireAll(places, lock, timeoutSeconds);
        if (status.IsOk() || platform::ProbePath(places.directory) != platform::PathKind::kMissing) break;
    }
    if (!status.IsOk() && lock == TargetLock::kCommand) RemoveLoadDirectory(places);
    return status;
}

void ReleaseLoadLocks(const LoadPlaces& places, TargetLock lock) {
    for (const std::string& path : LockPaths(places, lock))
        ReleaseLockFile(path);
}

void TidyLoadDirectory(const LoadPlaces& places) {
    SweepLock(InDirectory(places, "attempt.lock"));
    SweepLock(CheckpointLockPath(places.checkpointFile));
    std::uint64_t bytes = 0;
    if (platform::ProbePath(places.checkpointFile, bytes) == platform::PathKind::kFile && bytes == 0)
        static_cast<void>(platform::RemoveFile(places.checkpointFile));
}

void RemoveLoadDirectory(const LoadPlaces& places) {
    static_cast<void>(platform::RemoveEmptyDirectory(places.directory));
}

std::vector<LoadFile> LockFilesOf(const LoadPlaces& places) {
    std::vector<LoadFile> files;
    for (const TargetLock lock : {TargetLock::kCommand, TargetLock::kAttempt}) {
        const std::vector<std::string> paths = LockPaths(places, lock);
        files.push_back({paths.front(), "lock of the load"});
        if (paths.size() > 1) files.push_back({paths.back(), "work file of the restart file"});
    }
    return files;
}

}  // namespace mqam
