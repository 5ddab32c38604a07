// SPDX-License-Identifier: Apache-2.0
#include "platform/shared_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix_status.h"

namespace platform {

namespace {

// Extends the file and reserves disk space for it: touching a page without disk space ends the process as
// well.
FileStatus Extend(int file, std::size_t bytes) {
    int failed = 0;
    do {
        failed = fallocate(file, 0, 0, static_cast<off_t>(bytes));
    } while (failed != 0 && errno == EINTR);
    if (failed == 0) {
        return FileStatus::kOk;
    }
    if (errno != EOPNOTSUPP && errno != ENOSYS) {
        return StatusOfErrno();
    }
    return StatusOf(ftruncate(file, static_cast<off_t>(bytes)));
}

}  // namespace

FileStatus MapSharedFile(const std::string& path, std::size_t bytes, SharedFile& shared) {
    shared = SharedFile();
    const int file = OpenRetrying(path.c_str(), O_RDWR | O_CREAT, 0666);
    if (file < 0) {
        return StatusOfErrno();
    }
    FileStatus status = Extend(file, bytes);
    if (status == FileStatus::kOk) {
        void* mapped = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (mapped != MAP_FAILED) {
            shared = {mapped, bytes, file};
            return FileStatus::kOk;
        }
        status = StatusOfErrno();
    }
    close(file);
    return status;
}

bool EnsureFileSize(const SharedFile& shared) {
    struct stat status {};
    const int file = static_cast<int>(shared.file);
    if (fstat(file, &status) != 0) {
        return false;
    }
    return status.st_size >= static_cast<off_t>(shared.bytes) ||
           Extend(file, shared.bytes) == FileStatus::kOk;
}

void UnmapSharedFile(SharedFile& shared) {
    if (shared.memory != nullptr) {
        munmap(shared.memory, shared.bytes);
    }
    CloseFile(shared.file);
    shared = SharedFile();
}

}  // namespace platform
