#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <thread>

#include "apps/mqam/load_lock.h"

namespace {

constexpr auto kPause = std::chrono::milliseconds(20);

// The locks of this process: path and descriptor.
std::map<std::string, int>& HeldLocks() {
    static std::map<std::string, int> held;
    return held;
}

// The holder before removes the file when it gives the lock back: a lock on a file that is no longer at its
// path locks nobody out.
bool IsStillAt(const std::string& path, int descriptor) {
    struct stat mine = {};
    struct stat there = {};
    return fstat(descriptor, &mine) == 0 && stat(path.c_str(), &there) == 0 && mine.st_dev == there.st_dev &&
           mine.st_ino == there.st_ino;
}

bool IsEmpty(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && status.st_size == 0;
}

}  // namespace

bool TakeLoadLock(const std::string& path, int patienceSeconds, std::string& reason) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(patienceSeconds);
    for (;;) {
        const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (descriptor < 0) {
            reason = path + " cannot be made: " + std::strerror(errno);
            return false;
        }
        const bool locked = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
        if (locked && IsStillAt(path, descriptor)) {
            if (IsEmpty(descriptor)) {
                HeldLocks()[path] = descriptor;
                return true;
            }
            close(descriptor);
            reason = path + kNoLock;
            return false;
        }
        const int code = errno;
        close(descriptor);
        if (!locked && code != EWOULDBLOCK && code != EINTR) {
            reason = path + " cannot be locked: " + std::strerror(code);
            return false;
        }
        if (!locked && std::chrono::steady_clock::now() >= end) {
            reason = "another load is running (it holds " + path + ")";
            return false;
        }
        if (!locked) std::this_thread::sleep_for(kPause);
    }
}

void GiveBackLoadLock(const std::string& path) {
    const auto held = HeldLocks().find(path);
    if (held == HeldLocks().end()) return;
    // Removed while it is locked: whoever opened it meanwhile sees that it is gone.
    unlink(path.c_str());
    close(held->second);
    HeldLocks().erase(held);
}
