#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "platform/disk_changes.h"

namespace platform {

namespace {

bool Fail(std::string& reason) {
    const DWORD code = GetLastError();
    char text[512];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        code, 0, text, sizeof text, nullptr);
    reason.assign(text, length);
    while (!reason.empty() && (reason.back() == '\n' || reason.back() == '\r'))
        reason.pop_back();
    if (reason.empty()) reason = "error " + std::to_string(code);
    return false;
}

}  // namespace

std::vector<std::string> TemporaryDirectories(const std::string& checkpointPath) {
    const std::string real = checkpointPath.substr(0, checkpointPath.find_last_of("\\/") + 1);
    const std::string modules = checkpointPath.substr(0, checkpointPath.rfind('\\') + 1);
    return real == modules ? std::vector<std::string>{real} : std::vector<std::string>{real, modules};
}

std::vector<std::string> ListDirectory(const std::string& folder) {
    std::vector<std::string> names;
    WIN32_FIND_DATAA found = {};
    HANDLE listing = FindFirstFileA((folder + "*").c_str(), &found);
    if (listing == INVALID_HANDLE_VALUE) return names;
    do {
        names.emplace_back(found.cFileName);
    } while (FindNextFileA(listing, &found) != 0);
    FindClose(listing);
    return names;
}

bool MoveStreamTo(std::FILE* stream, std::uint64_t offset) {
    return _fseeki64(stream, static_cast<long long>(offset), SEEK_SET) == 0;
}

bool SyncParentDirectory(const std::string& /*path*/, std::string& /*reason*/) {
    return true;
}

bool RenameDurably(const std::string& from, const std::string& to, std::string& reason) {
    const HANDLE file = CreateFileA(from.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return Fail(reason);
    const bool flushed = FlushFileBuffers(file) != 0 || Fail(reason);
    CloseHandle(file);
    if (!flushed) return false;
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0 || Fail(reason);
}

bool DeleteDurably(const std::string& path, std::string& reason) {
    return DeleteFileA(path.c_str()) != 0 || Fail(reason);
}

namespace {

// Replacing fails while another process has `path` open, so it is retried for up to 5 seconds.
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

bool ReplaceDurably(const std::string& path, const std::string& scratch, const std::string& bytes,
                    std::string& reason) {
    const HANDLE file = CreateFileA(scratch.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return Fail(reason);
    const auto length = static_cast<DWORD>(bytes.size());
    DWORD written = 0;
    SetLastError(ERROR_DISK_FULL);
    const bool whole = (WriteFile(file, bytes.data(), length, &written, nullptr) != 0 && written == length &&
                        FlushFileBuffers(file) != 0) ||
                       Fail(reason);
    CloseHandle(file);
    if (!whole) return false;
    return MoveOver(scratch, path) || Fail(reason);
}

bool TruncateDurably(const std::string& path, std::uint64_t bytes, std::string& reason) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return Fail(reason);
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(bytes);
    const bool cut = (SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0 &&
                      FlushFileBuffers(file) != 0) ||
                     Fail(reason);
    CloseHandle(file);
    return cut;
}

}  // namespace platform
