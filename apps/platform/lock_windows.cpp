// SPDX-License-Identifier: Apache-2.0
#include "platform/lock.h"

#include <chrono>

#include "platform/windows_text.h"

namespace platform {

namespace {

constexpr DWORD kPauseMilliseconds = 20;

bool HasContents(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA facts = {};
    return GetFileAttributesExW(Wide(path).c_str(), GetFileExInfoStandard, &facts) != 0 &&
           (facts.nFileSizeLow != 0 || facts.nFileSizeHigh != 0);
}

}  // namespace

LockResult AcquireLock(const std::string& path, const LockOptions& options, LockHandle& lock) {
    lock = kNoLock;
    const std::wstring wide = Wide(path);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(options.timeoutMs);
    if (options.refusesContents && HasContents(path)) return LockResult::kNotEmpty;
    for (;;) {
        // A file that is shared with no one is locked. The system closes the handle, and so deletes the file, when
        // the process ends in whatever way.
        const HANDLE file =
            CreateFileW(wide.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            lock = reinterpret_cast<LockHandle>(file);
            return LockResult::kAcquired;
        }
        const DWORD code = GetLastError();
        const bool isHeld = code == ERROR_SHARING_VIOLATION;
        const bool isDenied = code == ERROR_ACCESS_DENIED;
        if ((!isHeld && !isDenied) || std::chrono::steady_clock::now() >= end) {
            if (isHeld) return LockResult::kHeld;
            const FileStatus status = StatusOfError(code);
            if (isDenied) {
                return LockResult::kDenied;
            }
            return status == FileStatus::kNotFound ? LockResult::kNotFound : LockResult::kFailed;
        }
        Sleep(kPauseMilliseconds);
    }
}

void ReleaseLock(const std::string& /*path*/, LockHandle lock) {
    if (lock != kNoLock) CloseHandle(reinterpret_cast<HANDLE>(lock));
}

LockHandle WaitForLock(const std::string& path) {
    const std::wstring wide = Wide(path);
    for (;;) {
        const HANDLE file = CreateFileW(wide.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            return reinterpret_cast<LockHandle>(file);
        }
        if (StatusOfLastError() != FileStatus::kBusy) {
            return kNoLock;
        }
        Sleep(1);
    }
}

void ReleaseLockKeepingFile(LockHandle lock) {
    if (lock != kNoLock) {
        CloseHandle(reinterpret_cast<HANDLE>(lock));
    }
}

}  // namespace platform
