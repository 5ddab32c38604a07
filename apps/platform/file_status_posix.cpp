// SPDX-License-Identifier: Apache-2.0
#include "platform/file_status.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "platform/posix_status.h"

namespace platform {

namespace {

thread_local std::string lastFileError;

}  // namespace

const std::string& LastFileError() {
    return lastFileError;
}

FileStatus StatusOfErrno() {
    const int code = errno;
    std::array<char, 256> buffer{};
    lastFileError = strerror_r(code, buffer.data(), buffer.size());
    errno = code;
    switch (code) {
        case ENOENT:
        case ENOTDIR: return FileStatus::kNotFound;
        case EEXIST: return FileStatus::kExists;
        case EWOULDBLOCK:
        case EBUSY: return FileStatus::kBusy;
        default: return FileStatus::kFailed;
    }
}

void SetLastFileError(const char* text) {
    lastFileError = text;
}

int OpenRetrying(const char* path, int flags, unsigned mode) {
    int file = -1;
    do {
        file = open(path, flags | O_CLOEXEC, mode);
    } while (file < 0 && errno == EINTR);
    return file;
}

}  // namespace platform
