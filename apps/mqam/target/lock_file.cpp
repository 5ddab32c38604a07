// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/lock_file.h"

#include <map>

#include "platform/file_status.h"
#include "platform/lock.h"

namespace mqam {

namespace {

// Maps the path of each lock that this process holds to the lock.
std::map<std::string, platform::LockHandle>& HeldLocks() {
    static std::map<std::string, platform::LockHandle> held;
    return held;
}

}  // namespace

Status AcquireLockFile(const std::string& path, int timeoutSeconds) {
    platform::LockOptions options;
    options.timeoutMs = timeoutSeconds * 1000;
    platform::LockHandle lock = platform::kNoLock;
    switch (platform::AcquireLock(path, options, lock)) {
        case platform::LockResult::kAcquired: HeldLocks()[path] = lock; return {};
        case platform::LockResult::kHeld:
            return Status::Refused("another load is running (it holds " + path +
                                   "): wait until it ends, or end it, then run the same command again");
        case platform::LockResult::kNotEmpty:
            return Status::Refused(
                path +
                " is not empty: it is not the lock of a load, and is left alone; move it away, "
                "then run the same command again");
        case platform::LockResult::kDenied:
        case platform::LockResult::kNotFound:
        case platform::LockResult::kFailed: break;
    }
    return Status::Transient(path + " cannot be created or locked: " + platform::LastFileError() +
                             "; check that its directory exists and that you may write to it");
}

void ReleaseLockFile(const std::string& path) {
    const auto held = HeldLocks().find(path);
    if (held == HeldLocks().end()) return;
    platform::ReleaseLock(path, held->second);
    HeldLocks().erase(held);
}

std::string CheckpointLockPath(const std::string& checkpointFile) {
    return checkpointFile + ".lock";
}

}  // namespace mqam
