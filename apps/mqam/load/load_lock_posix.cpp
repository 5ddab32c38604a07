#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <thread>

#include "mqam/load/load_lock.h"

namespace mqam {

namespace {

constexpr auto kPause = std::chrono::milliseconds(20);

// The locks of this process: path and descriptor.
std::map<std::string, int>& HeldLocks() {
    static std::map<std::string, int> held;
    return held;
}

enum class Place { kStillThere, kHoldsSomething, kGone, kUnknown };

// The holder before removes the file when it gives the lock back: a lock on a file that is no longer at its
// path locks nobody out. Place::kUnknown with errno.
Place FindPlace(const std::string& path, int descriptor) {
    struct stat mine = {};
    struct stat there = {};
    if (fstat(descriptor, &mine) != 0) return Place::kUnknown;
    if (stat(path.c_str(), &there) != 0) return errno == ENOENT ? Place::kGone : Place::kUnknown;
    if (mine.st_dev != there.st_dev || mine.st_ino != there.st_ino) return Place::kGone;
    return mine.st_size == 0 ? Place::kStillThere : Place::kHoldsSomething;
}

}  // namespace

LockOutcome AcquireLoadLock(const std::string& path, int timeoutSeconds, std::string& reason) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    for (;;) {
        const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (descriptor < 0) {
            reason = DescribeFailedLock(path, std::strerror(errno));
            return LockOutcome::kFailed;
        }
        const bool locked = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
        const Place place = locked ? FindPlace(path, descriptor) : Place::kGone;
        if (place == Place::kStillThere) {
            HeldLocks()[path] = descriptor;
            return LockOutcome::kAcquired;
        }
        const int code = errno;
        close(descriptor);
        if (place == Place::kHoldsSomething) {
            reason = DescribeNoLock(path);
            return LockOutcome::kNoLock;
        }
        if ((!locked && code != EWOULDBLOCK && code != EINTR) || place == Place::kUnknown) {
            reason = DescribeFailedLock(path, std::strerror(code));
            return LockOutcome::kFailed;
        }
        if (!locked && std::chrono::steady_clock::now() >= end) {
            reason = DescribeHeldLock(path);
            return LockOutcome::kHeld;
        }
        if (!locked) std::this_thread::sleep_for(kPause);
    }
}

void ReleaseLoadLock(const std::string& path) {
    const auto held = HeldLocks().find(path);
    if (held == HeldLocks().end()) return;
    // Removed while it is locked: whoever opened it meanwhile sees that it is gone.
    unlink(path.c_str());
    close(held->second);
    HeldLocks().erase(held);
}

}  // namespace mqam
