// One load at a time: a lock that ends with the process, however it ends. load_lock_posix.cpp and
// load_lock_windows.cpp answer.
#pragma once

#include <string>

namespace mqam {

enum class LockOutcome {
    kAcquired,
    kHeld,    ///< by another process
    kNoLock,  ///< the file holds something: it is none, and left alone
    kFailed,  ///< the file cannot be made or locked: time may heal it
};

/// Takes the lock that the file `path` stands for, made when it is missing. Waits up to `timeoutSeconds` for
/// a process that is just ending. When it is not taken, `reason` says in words why, and what to do. A process
/// may take several.
[[nodiscard]] LockOutcome AcquireLoadLock(const std::string& path, int timeoutSeconds, std::string& reason);

/// The file that stands for the lock of a checkpoint file.
[[nodiscard]] std::string CheckpointLockPath(const std::string& checkpointFile);

/// The words for the outcomes without a lock; `words` are the system's.
[[nodiscard]] std::string DescribeHeldLock(const std::string& path);
[[nodiscard]] std::string DescribeNoLock(const std::string& path);
[[nodiscard]] std::string DescribeFailedLock(const std::string& path, const std::string& words);

/// Gives a lock back and removes its file. Harmless when it is not held.
void ReleaseLoadLock(const std::string& path);

}  // namespace mqam
