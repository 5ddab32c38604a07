#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <chrono>
#include <map>

#include "mqam/load/load_lock.h"

namespace mqam {

namespace {

constexpr DWORD kPauseMilliseconds = 20;

// The locks of this process: path and handle.
std::map<std::string, HANDLE>& HeldLocks() {
    static std::map<std::string, HANDLE> held;
    return held;
}

bool HoldsSomething(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA facts = {};
    return GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &facts) != 0 &&
           (facts.nFileSizeLow != 0 || facts.nFileSizeHigh != 0);
}

}  // namespace

LockOutcome AcquireLoadLock(const std::string& path, int timeoutSeconds, std::string& reason) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    // The system would delete it when it is given back.
    if (HoldsSomething(path)) {
        reason = DescribeNoLock(path);
        return LockOutcome::kNoLock;
    }
    for (;;) {
        // Shared with nobody: that is the lock. The system closes and deletes it with the process.
        const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            HeldLocks()[path] = file;
            return LockOutcome::kAcquired;
        }
        const DWORD code = GetLastError();
        // A file that is being deleted denies access for a moment.
        const bool held = code == ERROR_SHARING_VIOLATION || code == ERROR_ACCESS_DENIED;
        if (!held || std::chrono::steady_clock::now() >= end) {
            const bool isOthers = code == ERROR_SHARING_VIOLATION;
            reason =
                isOthers ? DescribeHeldLock(path) : DescribeFailedLock(path, "error " + std::to_string(code));
            return isOthers ? LockOutcome::kHeld : LockOutcome::kFailed;
        }
        Sleep(kPauseMilliseconds);
    }
}

void ReleaseLoadLock(const std::string& path) {
    const auto held = HeldLocks().find(path);
    if (held == HeldLocks().end()) return;
    CloseHandle(held->second);
    HeldLocks().erase(held);
}

}  // namespace mqam
