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
    kHeld,      ///< another process, or this one, holds the lock
    kNotEmpty,  ///< the file has contents: it is not a lock file, and is left alone
    kDenied,    ///< Windows denies access, as it does for a moment while a lock file is being deleted
    kNotFound,  ///< the directory of the file does not exist
    kFailed,    ///< the file cannot be created or locked
};

struct LockOptions {
    int timeoutMs = 0;  ///< how long to wait for a process that holds the lock
    /// A file with other contents than a holder's is refused with kNotEmpty, because the release would delete
    /// it.
    bool refusesContents = true;
    /// The holder writes this into the file, so that others can read who holds the lock; if it is empty,
    /// nothing is written. A failure to write it is not an error. A file that begins with the first line of
    /// this text, or contains only the beginning of that line or only zeros, which a loss of power can leave,
    /// counts as a lock file.
    std::string contents;
    bool isPrivate = false;  ///< a new file is for its owner only, so that no other user can hold the lock
};

using LockHandle = std::intptr_t;
inline constexpr LockHandle kNoLock = -1;

/// Acquires the lock of the file `path`, which is created if it is missing. A lock file without a holder is
/// no obstacle. `lock` is kNoLock unless the result is kAcquired; LastFileError has the system's error for
/// kDenied, kNotFound and kFailed.
[[nodiscard]] LockResult AcquireLock(const std::string& path, const LockOptions& options, LockHandle& lock);

/// Deletes the lock file and releases the lock. Does nothing for kNoLock.
void ReleaseLock(const std::string& path, LockHandle lock);

/// Acquires the lock of the file `path`, and waits for as long as others hold it. It serves for operations
/// that processes must not do at the same time. ReleaseLockKeepingFile releases it. Returns kNoLock when the
/// file cannot be created.
[[nodiscard]] LockHandle WaitForLock(const std::string& path);

/// Releases a lock. Its file stays, except that Windows deletes the file of a lock that AcquireLock acquired
/// without contents. Does nothing for kNoLock.
void ReleaseLockKeepingFile(LockHandle lock);

}  // namespace platform
