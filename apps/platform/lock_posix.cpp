// SPDX-License-Identifier: Apache-2.0
#include "platform/lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "platform/lock_contents.h"
#include "platform/posix_status.h"

namespace platform {

namespace {

constexpr auto kPause = std::chrono::milliseconds(20);

enum class Place { kStillThere, kNotEmpty, kGone, kUnknown };

// Finds out whether the locked file is still at its path, and whether it is empty. The previous holder
// deletes the file when it releases the lock, and a lock on a file that is no longer at its path keeps no one
// out. With Place::kUnknown errno is set.
Place FindPlace(const std::string& path, int descriptor) {
    struct stat mine = {};
    struct stat there = {};
    if (fstat(descriptor, &mine) != 0) return Place::kUnknown;
    if (stat(path.c_str(), &there) != 0) return errno == ENOENT ? Place::kGone : Place::kUnknown;
    if (mine.st_dev != there.st_dev || mine.st_ino != there.st_ino) return Place::kGone;
    return mine.st_size == 0 ? Place::kStillThere : Place::kNotEmpty;
}

int OpenLockFile(const std::string& path, bool isPrivate) {
    constexpr mode_t kOwnerOnly = 0600;
    constexpr mode_t kEveryone = 0666;
    return OpenRetrying(path.c_str(), O_RDWR | O_CREAT, isPrivate ? kOwnerOnly : kEveryone);
}

bool HasLockContents(int descriptor, const LockOptions& options) {
    std::string found(kLockBytesRead, '\0');
    const ssize_t count = pread(descriptor, found.data(), found.size(), 0);
    if (count < 0) return false;
    found.resize(static_cast<std::size_t>(count));
    return IsLockContents(found, options.contents);
}

void WriteContents(int descriptor, const std::string& contents) {
    if (contents.empty() || ftruncate(descriptor, 0) != 0) return;
    // A failure does not matter: the contents only show others who holds the lock.
    static_cast<void>(pwrite(descriptor, contents.data(), contents.size(), 0) < 0);
}

LockResult Fail() {
    return StatusOfErrno() == FileStatus::kNotFound ? LockResult::kNotFound : LockResult::kFailed;
}

}  // namespace

LockResult AcquireLock(const std::string& path, const LockOptions& options, LockHandle& lock) {
    lock = kNoLock;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(options.timeoutMs);
    for (;;) {
        const int descriptor = OpenLockFile(path, options.isPrivate);
        if (descriptor < 0) {
            return Fail();
        }
        const bool locked = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
        const Place place = locked ? FindPlace(path, descriptor) : Place::kGone;
        if (place == Place::kStillThere ||
            (place == Place::kNotEmpty &&
             (!options.refusesContents || HasLockContents(descriptor, options)))) {
            WriteContents(descriptor, options.contents);
            lock = descriptor;
            return LockResult::kAcquired;
        }
        const int code = errno;
        close(descriptor);
        if (place == Place::kNotEmpty) return LockResult::kNotEmpty;
        if ((!locked && code != EWOULDBLOCK && code != EINTR) || place == Place::kUnknown) {
            errno = code;
            return Fail();
        }
        if (!locked && std::chrono::steady_clock::now() >= end) return LockResult::kHeld;
        if (!locked) std::this_thread::sleep_for(kPause);
    }
}

void ReleaseLock(const std::string& path, LockHandle lock) {
    if (lock == kNoLock) return;
    // The file is deleted while it is locked, so a process that opened it in the meantime sees that it is
    // gone.
    unlink(path.c_str());
    close(static_cast<int>(lock));
}

LockHandle WaitForLock(const std::string& path) {
    const int descriptor = OpenLockFile(path, false);
    if (descriptor < 0) {
        static_cast<void>(StatusOfErrno());
        return kNoLock;
    }
    while (flock(descriptor, LOCK_EX) != 0 && errno == EINTR) {
    }
    return descriptor;
}

void ReleaseLockKeepingFile(LockHandle lock) {
    if (lock != kNoLock) {
        close(static_cast<int>(lock));
    }
}

}  // namespace platform
