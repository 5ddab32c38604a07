// SPDX-License-Identifier: Apache-2.0

// The locks of a restartable load: one load at a time for a target, for a restart file, and for the directory of a
// checkpoint file, whatever the other files of the two loads are.
#pragma once

#include <string>
#include <vector>

#include "mqam/base/status.h"
#include "mqam/target/load_places.h"
#include "mqam/target/path_conflict.h"

namespace mqam {

enum class TargetLock {
    kCommand,  ///< keeps other commands away from the target and its state
    kAttempt,  ///< keeps other attempts away
};

/// Acquires every lock of one kind, waiting up to `timeoutSeconds` for a process that is just ending. The command's
/// lock creates the load's directory if it is missing. The error is that of AcquireLockFile, or kTransient if the
/// directory cannot be created; none of the locks is held then.
Status AcquireLoadLocks(const LoadPlaces& places, TargetLock lock, int timeoutSeconds);

/// Releases every lock of one kind that this process holds.
void ReleaseLoadLocks(const LoadPlaces& places, TargetLock lock);

/// Deletes what is not needed in the load's directory when no load is unfinished: locks of processes that have died
/// and a checkpoint file without contents; then the directory if it is empty. To be called with the command's lock.
void TidyLoadDirectory(const LoadPlaces& places);

/// Removes the load's directory if it is empty.
void RemoveLoadDirectory(const LoadPlaces& places);

/// Returns the lock files with their use.
[[nodiscard]] std::vector<LoadFile> LockFilesOf(const LoadPlaces& places);

}  // namespace mqam
