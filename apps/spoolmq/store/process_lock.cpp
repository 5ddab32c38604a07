// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/store/process_lock.h"

namespace spoolmq {

FileStatus AcquireProcessLock(const std::string& path, platform::LockHandle& lock) {
    // Only the stand-in uses these directories, so a file with the name of a lock is a lock file whatever it
    // contains.
    platform::LockOptions options;
    options.refusesContents = false;
    switch (platform::AcquireLock(path, options, lock)) {
        case platform::LockResult::kAcquired: return FileStatus::kOk;
        case platform::LockResult::kHeld:
        case platform::LockResult::kDenied: return FileStatus::kBusy;
        case platform::LockResult::kNotFound: return FileStatus::kNotFound;
        case platform::LockResult::kNotEmpty:
        case platform::LockResult::kFailed: break;
    }
    return FileStatus::kFailed;
}

}  // namespace spoolmq
