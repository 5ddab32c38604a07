// SPDX-License-Identifier: Apache-2.0
#include "platform/file.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>

#include "platform/windows_text.h"
#include "platform/windows_time.h"

namespace platform {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kBytesAtOnce = 0x40000000;

// Programs that scan files as they appear (indexers, virus scanners) have them open for some milliseconds, so
// a file that is in use is deleted at a later attempt.
constexpr int kSharingAttempts = 40;
constexpr DWORD kSharingPauseMilliseconds = 5;

HANDLE HandleOf(FileHandle file) {
    return reinterpret_cast<HANDLE>(file);  // NOLINT(performance-no-int-to-ptr): a handle is a number
}

FileStatus StatHandle(HANDLE file, FileInfo& info) {
    if (GetFileType(file) != FILE_TYPE_DISK) {
        info = FileInfo();
        return FileStatus::kOk;
    }
    BY_HANDLE_FILE_INFORMATION details{};
    FILE_BASIC_INFO times{};
    if (GetFileInformationByHandle(file, &details) == 0 ||
        GetFileInformationByHandleEx(file, FileBasicInfo, &times, sizeof times) == 0) {
        return StatusOfLastError();
    }
    info.bytes = static_cast<std::int64_t>(details.nFileSizeHigh) << 32 | details.nFileSizeLow;
    info.identity = static_cast<std::uint64_t>(details.nFileIndexHigh) << 32 | details.nFileIndexLow;
    info.writeTimeNs = UnixNanoseconds(times.LastWriteTime.QuadPart);
    info.changeTimeNs = UnixNanoseconds(times.ChangeTime.QuadPart);
    info.isDirectory = (details.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    info.isFile = !info.isDirectory;
    return FileStatus::kOk;
}

// Returns the errno of a failed StatPath.
int ErrnoOf(FileStatus status) {
    return status == FileStatus::kBusy ? EBUSY : EACCES;
}

}  // namespace

FileStatus StatPath(const std::string& path, FileInfo& info) {
    const HANDLE file = CreateFileW(Wide(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const FileStatus status = StatusOfLastError();
        errno = ErrnoOf(status);
        return status;
    }
    const FileStatus status = StatHandle(file, info);
    CloseHandle(file);
    return status;
}

void RestrictNewFiles() {}

int OpenForWriting(const std::string& path, OpenMode mode) {
    int flags = _O_WRONLY | _O_BINARY | _O_NOINHERIT;
    switch (mode) {
        case OpenMode::kCreate: flags |= _O_CREAT | _O_EXCL; break;
        case OpenMode::kReplace: flags |= _O_CREAT | _O_TRUNC; break;
        case OpenMode::kAppend: flags |= _O_CREAT | _O_APPEND; break;
        case OpenMode::kExisting: break;
    }
    return _open(path.c_str(), flags, _S_IREAD | _S_IWRITE);
}

long WriteBytes(int descriptor, const char* bytes, std::size_t length) {
    const auto most = static_cast<unsigned>(length < INT_MAX ? length : INT_MAX);
    return _write(descriptor, bytes, most);
}

int SyncFile(int descriptor) {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    if (GetFileType(handle) != FILE_TYPE_DISK) return 0;
    return _commit(descriptor);
}

// The path is not looked at: while a file is open, no one can rename or delete it.
bool IsFileAt(int descriptor, const std::string& /*path*/, std::uint64_t bytes) {
    errno = 0;
    return _filelengthi64(descriptor) == static_cast<long long>(bytes);
}

int CloseDescriptor(int descriptor) {
    return _close(descriptor);
}

bool MoveStreamTo(std::FILE* stream, std::uint64_t offset) {
    return _fseeki64(stream, static_cast<long long>(offset), SEEK_SET) == 0;
}

FileStatus OpenForReading(const std::string& path, FileHandle& file, FileInfo& info) {
    file = kNoFile;
    // FILE_SHARE_WRITE is not given, so that opening a file that someone is still writing fails with a
    // sharing violation.
    const HANDLE opened = CreateFileW(Wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return StatusOfLastError();
    }
    const FileStatus status = StatHandle(opened, info);
    if (status != FileStatus::kOk) {
        CloseHandle(opened);
        return status;
    }
    file = reinterpret_cast<FileHandle>(opened);
    return FileStatus::kOk;
}

FileStatus ReadFromStart(FileHandle file, void* buffer, std::size_t bytes, std::size_t& bytesRead) {
    bytesRead = 0;
    const LARGE_INTEGER start{};
    if (SetFilePointerEx(HandleOf(file), start, nullptr, FILE_BEGIN) == 0) {
        return StatusOfLastError();
    }
    while (bytesRead < bytes) {
        const std::size_t left = bytes - bytesRead;
        const DWORD wanted = left > kBytesAtOnce ? kBytesAtOnce : static_cast<DWORD>(left);
        DWORD count = 0;
        if (::ReadFile(HandleOf(file), static_cast<char*>(buffer) + bytesRead, wanted, &count, nullptr) ==
            0) {
            return StatusOfLastError();
        }
        if (count == 0) {
            break;
        }
        bytesRead += count;
    }
    return FileStatus::kOk;
}

void CloseFile(FileHandle file) {
    if (file != kNoFile) {
        CloseHandle(HandleOf(file));
    }
}

FileStatus ReadWholeFile(const std::string& path, std::string& content) {
    content.clear();
    const HANDLE file = CreateFileW(Wide(path).c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return StatusOfLastError();
    }
    FileInfo info;
    FileStatus status = StatHandle(file, info);
    if (status == FileStatus::kOk) {
        content.resize(static_cast<std::size_t>(info.bytes));
        std::size_t bytesRead = 0;
        status = ReadFromStart(reinterpret_cast<FileHandle>(file), content.data(), content.size(), bytesRead);
        content.resize(bytesRead);
    }
    CloseHandle(file);
    return status;
}

FileStatus WriteNewFile(const std::string& path, const void* content, std::size_t bytes, bool sync) {
    const HANDLE file = CreateFileW(Wide(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return StatusOfLastError();
    }
    FileStatus status = FileStatus::kOk;
    const char* next = static_cast<const char*>(content);
    while (bytes > 0 && status == FileStatus::kOk) {
        const DWORD part = bytes > kBytesAtOnce ? kBytesAtOnce : static_cast<DWORD>(bytes);
        DWORD written = 0;
        status = StatusOf(::WriteFile(file, next, part, &written, nullptr));
        next += written;
        bytes -= written;
    }
    if (status == FileStatus::kOk && sync) {
        status = StatusOf(FlushFileBuffers(file));
    }
    CloseHandle(file);
    if (status != FileStatus::kOk) {
        DeleteFileW(Wide(path).c_str());
    }
    return status;
}

FileStatus RemoveFile(const std::string& path) {
    const std::wstring wide = Wide(path);
    FileStatus status = FileStatus::kOk;
    for (int attempt = 0; attempt < kSharingAttempts; ++attempt) {
        status = StatusOf(DeleteFileW(wide.c_str()));
        if (status != FileStatus::kBusy) {
            break;
        }
        Sleep(kSharingPauseMilliseconds);
    }
    return status == FileStatus::kNotFound ? FileStatus::kOk : status;
}

FileStatus RenameNoReplace(const std::string& from, const std::string& to) {
    return StatusOf(MoveFileExW(Wide(from).c_str(), Wide(to).c_str(), 0));
}

}  // namespace platform
