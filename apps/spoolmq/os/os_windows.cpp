#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <array>
#include <cstdio>
#include <cstring>

#include "spoolmq/os/os.h"

namespace spoolmq {

const char kPlatformApplType = 11;

namespace {

thread_local std::string lastErrorText;

// Windows counts 100 ns from 1601, everything here ns from 1970.
constexpr std::int64_t kTicksTo1970 = 116444736000000000;
// What scans files as they appear (indexers, virus scanners) holds them for some milliseconds: worth waiting
// for.
constexpr int kSharingRetries = 40;

std::wstring Wide(std::string_view text) {
    if (text.empty()) return {};
    const int length =
        MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(), length);
    return wide;
}

std::string Narrow(const wchar_t* text, std::size_t count) {
    if (count == 0) return {};
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(count), nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(count), narrow.data(), length, nullptr, nullptr);
    return narrow;
}

OsStatus StatusOfError(DWORD code) {
    std::array<wchar_t, 512> text{};
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                                  0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.'))
        --length;
    lastErrorText = length > 0 ? Narrow(text.data(), length) : "system error " + std::to_string(code);
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_DIRECTORY: return OsStatus::NotFound;
        case ERROR_ALREADY_EXISTS:
        case ERROR_FILE_EXISTS: return OsStatus::Exists;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION: return OsStatus::Busy;
        default: return OsStatus::Failed;
    }
}

OsStatus LastStatus() {
    return StatusOfError(GetLastError());
}
OsStatus StatusOf(BOOL worked) {
    return worked ? OsStatus::Ok : LastStatus();
}

std::int64_t UnixNanoseconds(std::int64_t ticks) {
    return (ticks - kTicksTo1970) * 100;
}

HANDLE HandleOf(OsFile file) {
    return reinterpret_cast<HANDLE>(
        file);  // NOLINT(performance-no-int-to-ptr): a handle is a number in a pointer
}

OsFile FileOf(HANDLE handle) {
    return reinterpret_cast<OsFile>(handle);
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

OsStatus InfoOfHandle(HANDLE file, FileInfo* info) {
    BY_HANDLE_FILE_INFORMATION details{};
    FILE_BASIC_INFO times{};
    if (!GetFileInformationByHandle(file, &details)) return LastStatus();
    if (!GetFileInformationByHandleEx(file, FileBasicInfo, &times, sizeof times)) return LastStatus();
    info->bytes = static_cast<std::int64_t>(details.nFileSizeHigh) << 32 | details.nFileSizeLow;
    info->identity = static_cast<std::uint64_t>(details.nFileIndexHigh) << 32 | details.nFileIndexLow;
    info->writeTimeNs = UnixNanoseconds(times.LastWriteTime.QuadPart);
    info->changeTimeNs = UnixNanoseconds(times.ChangeTime.QuadPart);
    info->isFolder = (details.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    info->isFile = !info->isFolder;
    return OsStatus::Ok;
}

}  // namespace

const std::string& LastOsErrorText() {
    return lastErrorText;
}

OsStatus StatPath(const std::string& path, FileInfo* info) {
    const HANDLE file = CreateFileW(Wide(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return LastStatus();
    const OsStatus status = InfoOfHandle(file, info);
    CloseHandle(file);
    return status;
}

OsStatus ListFolder(const std::string& path, std::vector<FolderEntry>* entries) {
    entries->clear();
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(Wide(path + "/*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return LastStatus();
    do {
        std::string name = Narrow(found.cFileName, std::wcslen(found.cFileName));
        if (name == "." || name == "..") continue;
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        entries->push_back({std::move(name), isFolder, !isFolder});
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return OsStatus::Ok;
}

OsStatus MakeFolder(const std::string& path) {
    const OsStatus status = StatusOf(CreateDirectoryW(Wide(path).c_str(), nullptr));
    FileInfo info;
    const bool isThere = status == OsStatus::Exists && StatPath(path, &info) == OsStatus::Ok && info.isFolder;
    return isThere ? OsStatus::Ok : status;
}

OsStatus RemoveEmptyFolder(const std::string& path) {
    const OsStatus status = StatusOf(RemoveDirectoryW(Wide(path).c_str()));
    return status == OsStatus::NotFound ? OsStatus::Ok : status;
}

OsStatus RemoveFile(const std::string& path) {
    const std::wstring wide = Wide(path);
    OsStatus status = OsStatus::Ok;
    for (int attempt = 0; attempt < kSharingRetries; ++attempt) {
        status = StatusOf(DeleteFileW(wide.c_str()));
        if (status != OsStatus::Busy) break;
        Sleep(5);
    }
    return status == OsStatus::NotFound ? OsStatus::Ok : status;
}

OsStatus RenameNew(const std::string& from, const std::string& to) {
    return StatusOf(MoveFileExW(Wide(from).c_str(), Wide(to).c_str(), 0));
}

OsStatus RenameOver(const std::string& from, const std::string& to) {
    return StatusOf(MoveFileExW(Wide(from).c_str(), Wide(to).c_str(), MOVEFILE_REPLACE_EXISTING));
}

// The file system journals its folders itself; there is no call to force one out.
OsStatus SyncFolder(const std::string& /*path*/) {
    return OsStatus::Ok;
}

OsStatus OpenForReading(const std::string& path, OsFile* file, FileInfo* info) {
    *file = kNoFile;
    // No FILE_SHARE_WRITE: a file that somebody still writes is refused with a sharing violation.
    const HANDLE opened = CreateFileW(Wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return LastStatus();
    if (info != nullptr) {
        const OsStatus status = InfoOfHandle(opened, info);
        if (status != OsStatus::Ok) {
            CloseHandle(opened);
            return status;
        }
    }
    *file = FileOf(opened);
    return OsStatus::Ok;
}

OsStatus ReadFromStart(OsFile file, void* buffer, std::size_t bytes, std::size_t* got) {
    *got = 0;
    LARGE_INTEGER start{};
    if (!SetFilePointerEx(HandleOf(file), start, nullptr, FILE_BEGIN)) return LastStatus();
    while (*got < bytes) {
        const DWORD wanted = bytes - *got > 0x40000000 ? 0x40000000 : static_cast<DWORD>(bytes - *got);
        DWORD count = 0;
        if (!ReadFile(HandleOf(file), static_cast<char*>(buffer) + *got, wanted, &count, nullptr))
            return LastStatus();
        if (count == 0) break;
        *got += count;
    }
    return OsStatus::Ok;
}

void CloseFile(OsFile file) {
    if (file != kNoFile) CloseHandle(HandleOf(file));
}

OsStatus ReadWholeFile(const std::string& path, std::string* content) {
    content->clear();
    // Settings files are read while somebody saves them: share everything.
    const HANDLE file = CreateFileW(Wide(path).c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return LastStatus();
    FileInfo info;
    OsStatus status = InfoOfHandle(file, &info);
    if (status == OsStatus::Ok) {
        content->resize(static_cast<std::size_t>(info.bytes));
        std::size_t got = 0;
        status = ReadFromStart(FileOf(file), content->data(), content->size(), &got);
        content->resize(got);
    }
    CloseHandle(file);
    return status;
}

OsStatus WriteNewFile(const std::string& path, const void* content, std::size_t bytes, bool sync) {
    const HANDLE file = CreateFileW(Wide(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return LastStatus();
    OsStatus status = OsStatus::Ok;
    const char* next = static_cast<const char*>(content);
    while (bytes > 0 && status == OsStatus::Ok) {
        const DWORD part = bytes > 0x40000000 ? 0x40000000 : static_cast<DWORD>(bytes);
        DWORD written = 0;
        status = StatusOf(WriteFile(file, next, part, &written, nullptr));
        next += written;
        bytes -= written;
    }
    if (status == OsStatus::Ok && sync) status = StatusOf(FlushFileBuffers(file));
    CloseHandle(file);
    if (status != OsStatus::Ok) DeleteFileW(Wide(path).c_str());
    return status;
}

OsStatus AcquirePresence(const std::string& path, OsFile* presence) {
    *presence = kNoFile;
    // Shared with nobody: opening is locking. The system closes the handle, and so deletes the file, when the
    // process ends in whatever way.
    const HANDLE file = CreateFileW(Wide(path).c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD code = GetLastError();
        // A file that is being deleted answers "access denied" until the last handle is gone.
        return StatusOfError(code == ERROR_ACCESS_DENIED ? ERROR_SHARING_VIOLATION : code);
    }
    *presence = FileOf(file);
    return OsStatus::Ok;
}

void ReleasePresence(const std::string& /*path*/, OsFile presence) {
    CloseFile(presence);
}

OsStatus MapSharedFile(const std::string& path, std::size_t bytes, SharedFile* shared) {
    *shared = SharedFile();
    const HANDLE file = CreateFileW(Wide(path).c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return LastStatus();
    OsStatus status = OsStatus::Ok;
    const HANDLE mapping =
        CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(bytes), nullptr);
    if (mapping == nullptr) {
        status = LastStatus();
    } else {
        void* memory = MapViewOfFile(mapping, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, bytes);
        if (memory == nullptr)
            status = LastStatus();
        else
            *shared = {memory, bytes, kNoFile};
        CloseHandle(mapping);
    }
    CloseHandle(file);
    return status;
}

// Nobody can cut off what is mapped.
bool MakeWhole(const SharedFile& /*shared*/) {
    return true;
}

void UnmapSharedFile(SharedFile* shared) {
    if (shared->memory != nullptr) UnmapViewOfFile(shared->memory);
    *shared = SharedFile();
}

std::int64_t FileClockNs() {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return UnixNanoseconds(static_cast<std::int64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime);
}

std::int64_t MonotonicMs() {
    return static_cast<std::int64_t>(GetTickCount64());
}
void SleepMs(std::int64_t milliseconds) {
    Sleep(static_cast<DWORD>(milliseconds));
}
std::int64_t ProcessId() {
    return GetCurrentProcessId();
}
std::uint64_t ThreadId() {
    return GetCurrentThreadId();
}

// Unique is enough, secret is not asked for: the counter of the processor, the process and the clock.
std::uint64_t RandomNumber() {
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    std::uint64_t number = static_cast<std::uint64_t>(counter.QuadPart) ^
                           static_cast<std::uint64_t>(GetCurrentProcessId()) << 40 ^
                           static_cast<std::uint64_t>(GetCurrentThreadId()) << 24;
    number ^= number >> 31;
    number *= 0x9E3779B97F4A7C15U;
    return number ^ number >> 29;
}

std::string UserName() {
    return EnvironmentVariable("USERNAME");
}

std::string ProgramName() {
    std::array<wchar_t, 4096> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::string text = Narrow(path.data(), length);
    return text.substr(text.find_last_of("/\\") + 1);
}

std::string EnvironmentVariable(const char* name) {
    const std::wstring wideName = Wide(name);
    const DWORD needed = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
    if (needed == 0) return {};
    std::wstring value(needed, L'\0');
    const DWORD length = GetEnvironmentVariableW(wideName.c_str(), value.data(), needed);
    return Narrow(value.data(), length);
}

void UseBinaryStreams() {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
}

void EndProcessAtOnce() {
    TerminateProcess(GetCurrentProcess(), 137);
    for (;;)
        Sleep(INFINITE);
}

OsFile EnterGuard(const std::string& path) {
    const std::wstring wide = Wide(path);
    for (;;) {
        const HANDLE file = CreateFileW(wide.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) return FileOf(file);
        if (LastStatus() != OsStatus::Busy) return kNoFile;
        Sleep(1);
    }
}

void LeaveGuard(OsFile guard) {
    CloseFile(guard);
}

}  // namespace spoolmq
