// SPDX-License-Identifier: Apache-2.0
#include "platform/file.h"

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

}  // namespace platform
