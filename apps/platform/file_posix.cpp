#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

PathKind ProbePath(const std::string& path) {
    std::uint64_t bytes = 0;
    return ProbePath(path, bytes);
}

PathKind ProbePath(const std::string& path, std::uint64_t& bytes) {
    struct stat status = {};
    bytes = 0;
    if (stat(path.c_str(), &status) != 0) {
        return errno == ENOENT || errno == ENOTDIR ? PathKind::kMissing : PathKind::kUnknown;
    }
    if (!S_ISREG(status.st_mode)) return PathKind::kOther;
    bytes = static_cast<std::uint64_t>(status.st_size);
    return PathKind::kFile;
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

// Every fsync error on a regular file is an error. On a directory, EINVAL and ENOTSUP only mean that the file system
// cannot sync directories. EROFS is ignored for what is neither, such as a pipe, but on files and directories it
// means that the file system became read-only after an error of its disk.
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

}  // namespace platform
