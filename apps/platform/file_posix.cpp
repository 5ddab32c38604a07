// SPDX-License-Identifier: Apache-2.0
#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/posix_status.h"

namespace platform {

namespace {

std::int64_t Nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

FileInfo InfoOf(const struct stat& status) {
    FileInfo info;
    info.bytes = status.st_size;
    info.writeTimeNs = Nanoseconds(status.st_mtim);
    info.changeTimeNs = Nanoseconds(status.st_ctim);
    info.identity = status.st_ino;
    info.isDirectory = S_ISDIR(status.st_mode);
    info.isFile = S_ISREG(status.st_mode);
    return info;
}

}  // namespace

FileStatus StatPath(const std::string& path, FileInfo& info) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return StatusOfErrno();
    }
    info = InfoOf(status);
    return FileStatus::kOk;
}

void RestrictNewFiles() {
    umask(umask(S_IRWXG | S_IRWXO) | S_IRWXG | S_IRWXO);
}

int OpenForWriting(const std::string& path, OpenMode mode) {
    int flags = O_WRONLY | O_CLOEXEC;
    switch (mode) {
        case OpenMode::kCreate: flags |= O_CREAT | O_EXCL; break;
        case OpenMode::kReplace: flags |= O_CREAT | O_TRUNC; break;
        case OpenMode::kAppend: flags |= O_CREAT | O_APPEND; break;
        case OpenMode::kExisting: break;
    }
    return open(path.c_str(), flags, 0666);
}

long WriteBytes(int descriptor, const char* bytes, std::size_t length) {
    for (;;) {
        const ssize_t written = write(descriptor, bytes, length);
        if (written >= 0 || errno != EINTR) return written;
    }
}

// Every error of fsync on a regular file is reported. On a directory, EINVAL and ENOTSUP only mean that the
// file system cannot sync directories. On anything else, such as a pipe, EROFS is ignored as well; on files
// and directories it means that the file system became read-only after an error of its disk.
int SyncFile(int descriptor) {
    if (fsync(descriptor) == 0) return 0;
    const int code = errno;
    struct stat status = {};
    if (fstat(descriptor, &status) == 0) {
        const bool isFile = S_ISREG(status.st_mode);
        const bool isDirectory = S_ISDIR(status.st_mode);
        if (!isFile && (code == EINVAL || code == ENOTSUP)) return 0;
        if (!isFile && !isDirectory && code == EROFS) return 0;
    }
    errno = code;
    return -1;
}

bool IsFileAt(int descriptor, const std::string& path, std::uint64_t bytes) {
    struct stat mine = {};
    struct stat there = {};
    errno = 0;
    if (fstat(descriptor, &mine) != 0) return false;
    if (stat(path.c_str(), &there) != 0) {
        if (errno == ENOENT) errno = 0;
        return false;
    }
    return static_cast<std::uint64_t>(mine.st_size) == bytes && mine.st_dev == there.st_dev &&
           mine.st_ino == there.st_ino;
}

int CloseDescriptor(int descriptor) {
    return close(descriptor);
}

bool MoveStreamTo(std::FILE* stream, std::uint64_t offset) {
    return fseeko(stream, static_cast<off_t>(offset), SEEK_SET) == 0;
}

FileStatus OpenForReading(const std::string& path, FileHandle& file, FileInfo& info) {
    file = kNoFile;
    // Opening a pipe would otherwise wait for a writer.
    const int opened = OpenRetrying(path.c_str(), O_RDONLY | O_NONBLOCK);
    if (opened < 0) {
        return StatusOfErrno();
    }
    struct stat found {};
    FileStatus status = StatusOf(fstat(opened, &found));
    if (status == FileStatus::kOk && !S_ISREG(found.st_mode)) {
        SetLastFileError("Not a file");
        status = FileStatus::kNotFound;
    }
    if (status != FileStatus::kOk) {
        close(opened);
        return status;
    }
    info = InfoOf(found);
    file = opened;
    return FileStatus::kOk;
}

FileStatus ReadFromStart(FileHandle file, void* buffer, std::size_t bytes, std::size_t& bytesRead) {
    bytesRead = 0;
    while (bytesRead < bytes) {
        const ssize_t count = pread(static_cast<int>(file), static_cast<char*>(buffer) + bytesRead,
                                    bytes - bytesRead, static_cast<off_t>(bytesRead));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return StatusOfErrno();
        }
        if (count == 0) {
            break;
        }
        bytesRead += static_cast<std::size_t>(count);
    }
    return FileStatus::kOk;
}

void CloseFile(FileHandle file) {
    if (file != kNoFile) {
        close(static_cast<int>(file));
    }
}

FileStatus ReadWholeFile(const std::string& path, std::string& content) {
    content.clear();
    FileHandle file = kNoFile;
    FileInfo info;
    FileStatus status = OpenForReading(path, file, info);
    if (status != FileStatus::kOk) {
        return status;
    }
    content.resize(static_cast<std::size_t>(info.bytes));
    std::size_t bytesRead = 0;
    status = ReadFromStart(file, content.data(), content.size(), bytesRead);
    content.resize(bytesRead);
    CloseFile(file);
    return status;
}

FileStatus WriteNewFile(const std::string& path, const void* content, std::size_t bytes, bool sync) {
    const int file = OpenRetrying(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
    if (file < 0) {
        return StatusOfErrno();
    }
    FileStatus status = WriteWhole(file, content, bytes) ? FileStatus::kOk : StatusOfErrno();
    if (status == FileStatus::kOk && sync && fdatasync(file) != 0) {
        status = StatusOfErrno();
    }
    if (close(file) != 0 && status == FileStatus::kOk) {
        status = StatusOfErrno();
    }
    if (status != FileStatus::kOk) {
        unlink(path.c_str());
    }
    return status;
}

FileStatus RemoveFile(const std::string& path) {
    const FileStatus status = StatusOf(unlink(path.c_str()));
    return status == FileStatus::kNotFound ? FileStatus::kOk : status;
}

FileStatus RenameNoReplace(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return FileStatus::kOk;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return StatusOfErrno();
    }
    // The file system does not know the flag, so this looks first. If another process creates `to` in
    // between, it is replaced.
    if (access(to.c_str(), F_OK) == 0) {
        errno = EEXIST;
        return StatusOfErrno();
    }
    return StatusOf(rename(from.c_str(), to.c_str()));
}

}  // namespace platform
