// One load at a time: locks that end with the process, and what is printed when one cannot be acquired.
#pragma once

#include <string>

namespace mqam {

enum class LockOutcome {
    kAcquired,
    kHeld,    ///< by another process
    kNoLock,  ///< the file is not empty, so it is not a lock file; it is left alone
    kFailed,  ///< the file cannot be created or locked; a later attempt may succeed
};

/// Acquires the lock of the file `path`, which is created if it is missing. Waits up to `timeoutSeconds` for a
/// process that is just ending. Unless the lock is acquired, `reason` says why not and what to do; it is unchanged
/// otherwise. A process may hold several locks.
[[nodiscard]] LockOutcome AcquireLoadLock(const std::string& path, int timeoutSeconds, std::string& reason);

/// Returns the lock file of a checkpoint file.
[[nodiscard]] std::string CheckpointLockPath(const std::string& checkpointFile);

/// The messages for the outcomes without a lock. `error` is the system's.
[[nodiscard]] std::string DescribeHeldLock(const std::string& path);
[[nodiscard]] std::string DescribeNoLock(const std::string& path);
[[nodiscard]] std::string DescribeFailedLock(const std::string& path, const std::string& error);

/// Releases a lock and deletes its file. Does nothing if this process does not hold it.
void ReleaseLoadLock(const std::string& path);

}  // namespace mqam
