// SPDX-License-Identifier: Apache-2.0
#include "platform/file.h"

#include <cerrno>

namespace platform {

PathKind ProbePath(const std::string& path, std::uint64_t& bytes) {
    bytes = 0;
    FileInfo info;
    const FileStatus status = StatPath(path, info);
    if (status == FileStatus::kNotFound) {
        return PathKind::kMissing;
    }
    if (status != FileStatus::kOk) {
        return PathKind::kUnknown;
    }
    if (!info.isFile) {
        return PathKind::kOther;
    }
    bytes = static_cast<std::uint64_t>(info.bytes);
    return PathKind::kFile;
}

PathKind ProbePath(const std::string& path) {
    std::uint64_t bytes = 0;
    return ProbePath(path, bytes);
}

bool WriteWhole(int descriptor, const void* bytes, std::size_t length) {
    const char* at = static_cast<const char*>(bytes);
    while (length > 0) {
        const long written = WriteBytes(descriptor, at, length);
        if (written == 0) errno = ENOSPC;
        if (written <= 0) return false;
        at += written;
        length -= static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace platform
