// SPDX-License-Identifier: Apache-2.0

// Locks out other processes. A lock is a file that one process holds; the system releases it when that
// process ends, however it ends, at the latest when the process has been waited for. Child processes do not
// inherit it.
#pragma once

#include <cstdint>
#include <string>

#include "platform/file_status.h"

namespace platform {

enum class LockResult {
    kAcquired,
    kHeld,      ///< by another process, or by this one
    kNotEmpty,  ///< the file has contents: it is not a lock file, and is left alone
    kDenied,    ///< Windows denies access, as it does for a moment while a lock file is being deleted
    kNotFound,  ///< the directory of the file does not exist
    kFailed,    ///< the file cannot be created or locked
};

struct LockOptions {
    int timeoutMs = 0;  ///< how long to wait for a process that holds the lock
    bool refusesContents =
        true;  ///< returns kNotEmpty for a file with contents, which the release would delete
    /// What the holder writes into the file, so that others can read who holds it; empty = nothing. Failing to write
    /// it is not an error. A file that begins with the first line of it, or with a part of that line, is such a file.
    std::string contents;
    bool isPrivate = false;  ///< a new file is for its owner only, so that no other user can hold the lock
};

using LockHandle = std::intptr_t;
inline constexpr LockHandle kNoLock = -1;

/// Acquires the lock of the file `path`, which is created if it is missing. A file without a holder is no obstacle.
/// `lock` is kNoLock unless the result is kAcquired; LastFileError has the system's error for kDenied, kNotFound and
/// kFailed.
[[nodiscard]] LockResult AcquireLock(const std::string& path, const LockOptions& options, LockHandle& lock);

/// Deletes the lock file and releases the lock. It ignores kNoLock.
void ReleaseLock(const std::string& path, LockHandle lock);

/// Waits for as long as others hold the lock of `path`, for an operation that processes must not do at the
/// same time. ReleaseLockKeepingFile releases it. Returns kNoLock when the file cannot be created.
[[nodiscard]] LockHandle WaitForLock(const std::string& path);

/// Releases a lock. Its file stays, except that Windows deletes the file of a lock that AcquireLock acquired
/// without contents. It ignores kNoLock.
void ReleaseLockKeepingFile(LockHandle lock);

}  // namespace platform
