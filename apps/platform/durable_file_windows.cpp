// SPDX-License-Identifier: Apache-2.0
#include "platform/durable_file.h"

#include "platform/windows_text.h"

namespace platform {

namespace {

bool Fail(std::string& error) {
    error = DescribeSystemError(GetLastError());
    return false;
}

}  // namespace

bool SyncParentDirectory(const std::string& /*path*/, std::string& /*error*/) {
    return true;
}

bool RenameDurably(const std::string& from, const std::string& to, std::string& error) {
    const HANDLE file = CreateFileA(from.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return Fail(error);
    const bool flushed = FlushFileBuffers(file) != 0 || Fail(error);
    CloseHandle(file);
    if (!flushed) return false;
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0 || Fail(error);
}

bool DeleteDurably(const std::string& path, std::string& error) {
    return DeleteFileA(path.c_str()) != 0 || Fail(error);
}

namespace {

// Renames `from` to `to`, which is replaced. This fails while another process has `to` open, as a reader may
// for a moment, so it is then repeated.
bool MoveOver(const std::string& from, const std::string& to) {
    constexpr int kAttempts = 250;
    constexpr DWORD kPauseMilliseconds = 20;
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) {
            return true;
        }
        const DWORD code = GetLastError();
        const bool inUse = code == ERROR_ACCESS_DENIED || code == ERROR_SHARING_VIOLATION;
        if (!inUse || attempt == kAttempts) return false;
        Sleep(kPauseMilliseconds);
    }
}

}  // namespace

bool MoveOverDurably(const std::string& from, const std::string& to, std::string& error) {
    return MoveOver(from, to) || Fail(error);
}

bool ReplaceDurably(const std::string& path, const std::string& scratch, const std::string& bytes,
                    std::string& error) {
    const HANDLE file = CreateFileA(scratch.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return Fail(error);
    const auto length = static_cast<DWORD>(bytes.size());
    DWORD written = 0;
    SetLastError(ERROR_DISK_FULL);
    const bool whole = (WriteFile(file, bytes.data(), length, &written, nullptr) != 0 && written == length &&
                        FlushFileBuffers(file) != 0) ||
                       Fail(error);
    CloseHandle(file);
    if (!whole) return false;
    return MoveOverDurably(scratch, path, error);
}

bool TruncateDurably(const std::string& path, std::uint64_t bytes, std::string& error) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return Fail(error);
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(bytes);
    const bool cut = (SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0 &&
                      FlushFileBuffers(file) != 0) ||
                     Fail(error);
    CloseHandle(file);
    return cut;
}

}  // namespace platform
