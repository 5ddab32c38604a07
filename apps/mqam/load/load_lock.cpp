#include "mqam/load/load_lock.h"

#include <map>

#include "platform/lock.h"

namespace mqam {

namespace {

// The locks of this process by path.
std::map<std::string, platform::LockHandle>& HeldLocks() {
    static std::map<std::string, platform::LockHandle> held;
    return held;
}

}  // namespace

std::string CheckpointLockPath(const std::string& checkpointFile) {
    return checkpointFile + ".lock";
}

std::string DescribeHeldLock(const std::string& path) {
    return "another load is running (it holds " + path +
           "): wait for its end, or end it, then run the same command again";
}

std::string DescribeNoLock(const std::string& path) {
    return path +
           " holds something: it is not the lock of a load, and is left alone; move it away, then run the "
           "same command again";
}

std::string DescribeFailedLock(const std::string& path, const std::string& error) {
    return path + " cannot be made or locked: " + error +
           "; check that its folder is there and that you may write to it";
}

LockOutcome AcquireLoadLock(const std::string& path, int timeoutSeconds, std::string& reason) {
    platform::LockOptions options;
    options.timeoutMs = timeoutSeconds * 1000;
    platform::LockHandle lock = platform::kNoLock;
    std::string error;
    switch (platform::AcquireLock(path, options, lock, error)) {
        case platform::LockResult::kAcquired: HeldLocks()[path] = lock; return LockOutcome::kAcquired;
        case platform::LockResult::kHeld: reason = DescribeHeldLock(path); return LockOutcome::kHeld;
        case platform::LockResult::kNotEmpty: reason = DescribeNoLock(path); return LockOutcome::kNoLock;
        case platform::LockResult::kDenied:
        case platform::LockResult::kFailed: break;
    }
    reason = DescribeFailedLock(path, error);
    return LockOutcome::kFailed;
}

void ReleaseLoadLock(const std::string& path) {
    const auto held = HeldLocks().find(path);
    if (held == HeldLocks().end()) return;
    platform::ReleaseLock(path, held->second);
    HeldLocks().erase(held);
}

}  // namespace mqam
