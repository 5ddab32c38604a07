// Locks between processes. A lock is a file that one process holds; the system releases it when that process ends,
// however it ends, at the latest when the process has been waited for. Child processes do not inherit it.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

enum class LockResult {
    kAcquired,
    kHeld,      ///< by another process, or by this one
    kNotEmpty,  ///< the file has contents: it is not a lock file, and is left alone
    kDenied,    ///< Windows denies access, as it does for a moment while a lock file is being deleted
    kFailed,    ///< the file cannot be created or locked
};

struct LockOptions {
    int timeoutMs = 0;  ///< how long to wait for a process that holds the lock
    bool refusesContents =
        true;  ///< returns kNotEmpty for a file with contents, which the release would delete
};

using LockHandle = std::intptr_t;
inline constexpr LockHandle kNoLock = -1;

/// Acquires the lock of the file `path`, which is created if it is missing. A file without a holder is no
/// obstacle. `lock` is kNoLock unless the result is kAcquired. For kDenied and kFailed, `error` is the system's error;
/// it is unchanged otherwise.
[[nodiscard]] LockResult AcquireLock(const std::string& path, const LockOptions& options, LockHandle& lock,
                                     std::string& error);

/// Deletes the lock file and releases the lock. kNoLock is ignored.
void ReleaseLock(const std::string& path, LockHandle lock);

}  // namespace platform
