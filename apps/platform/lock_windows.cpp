// SPDX-License-Identifier: Apache-2.0
#include "platform/lock.h"

#include <chrono>

#include "platform/lock_contents.h"
#include "platform/windows_text.h"

namespace platform {

namespace {

constexpr DWORD kPauseMilliseconds = 20;

bool HasContents(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA facts = {};
    return GetFileAttributesExW(Wide(path).c_str(), GetFileExInfoStandard, &facts) != 0 &&
           (facts.nFileSizeLow != 0 || facts.nFileSizeHigh != 0);
}

bool HasLockContents(HANDLE file, const LockOptions& options) {
    std::string found(kLockBytesRead, '\0');
    DWORD count = 0;
    if (ReadFile(file, found.data(), static_cast<DWORD>(found.size()), &count, nullptr) == 0) return false;
    found.resize(count);
    return IsLockContents(found, options.contents);
}

void WriteContents(HANDLE file, const std::string& contents) {
    DWORD written = 0;
    // A failure does not matter: the contents only show others who holds the lock.
    if (SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0 && SetEndOfFile(file) != 0)
        WriteFile(file, contents.data(), static_cast<DWORD>(contents.size()), &written, nullptr);
}

// Acquires the lock of an opened file that others may read. Returns kNotEmpty if it is not a lock file.
LockResult TakeReadable(HANDLE file, const LockOptions& options, LockHandle& lock) {
    LARGE_INTEGER bytes = {};
    const bool isEmpty = GetFileSizeEx(file, &bytes) != 0 && bytes.QuadPart == 0;
    if (!isEmpty && options.refusesContents && !HasLockContents(file, options)) {
        CloseHandle(file);
        return LockResult::kNotEmpty;
    }
    WriteContents(file, options.contents);
    lock = reinterpret_cast<LockHandle>(file);
    return LockResult::kAcquired;
}

}  // namespace

LockResult AcquireLock(const std::string& path, const LockOptions& options, LockHandle& lock) {
    lock = kNoLock;
    const std::wstring wide = Wide(path);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(options.timeoutMs);
    const bool isReadable = !options.contents.empty();
    if (!isReadable && options.refusesContents && HasContents(path)) return LockResult::kNotEmpty;
    for (;;) {
        // The lock is an open file that no one else may write. A file without contents is deleted by the
        // system when the process ends, however it ends. A file with contents then stays, as on other
        // systems, and only the release deletes it, so that someone else's file is never deleted.
        const HANDLE file = CreateFileW(
            wide.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, isReadable ? FILE_SHARE_READ : 0, nullptr,
            OPEN_ALWAYS,
            isReadable ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (file != INVALID_HANDLE_VALUE && isReadable) return TakeReadable(file, options, lock);
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
    if (lock == kNoLock) return;
    FILE_DISPOSITION_INFO disposition = {};
    disposition.DeleteFile = TRUE;
    SetFileInformationByHandle(reinterpret_cast<HANDLE>(lock), FileDispositionInfo, &disposition,
                               sizeof disposition);
    CloseHandle(reinterpret_cast<HANDLE>(lock));
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
