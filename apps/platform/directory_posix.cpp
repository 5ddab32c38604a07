// SPDX-License-Identifier: Apache-2.0
#include "platform/directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

#include "platform/file.h"
#include "platform/posix_status.h"

namespace platform {

FileStatus ListDirectory(const std::string& path, std::vector<DirectoryEntry>& entries) {
    entries.clear();
    DIR* directory = opendir(path.empty() ? "." : path.c_str());
    if (directory == nullptr) {
        return StatusOfErrno();
    }
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the stream is this call's own
    while (const dirent* entry = readdir(directory)) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        FileInfo info;
        info.isDirectory = entry->d_type == DT_DIR;
        info.isFile = entry->d_type == DT_REG;
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            static_cast<void>(StatPath((path.empty() ? "." : path) + '/' + entry->d_name, info));
        }
        entries.push_back({std::string(name), info.isDirectory, info.isFile});
    }
    closedir(directory);
    return FileStatus::kOk;
}

FileStatus MakeDirectory(const std::string& path) {
    const FileStatus status = StatusOf(mkdir(path.c_str(), 0777));
    FileInfo info;
    const bool exists =
        status == FileStatus::kExists && StatPath(path, info) == FileStatus::kOk && info.isDirectory;
    return exists ? FileStatus::kOk : status;
}

FileStatus RemoveEmptyDirectory(const std::string& path) {
    const FileStatus status = StatusOf(rmdir(path.c_str()));
    return status == FileStatus::kNotFound ? FileStatus::kOk : status;
}

FileStatus SyncDirectory(const std::string& path) {
    const int directory = OpenRetrying(path.c_str(), O_RDONLY | O_DIRECTORY);
    if (directory < 0) {
        return StatusOfErrno();
    }
    const FileStatus status = StatusOf(SyncFile(directory));
    close(directory);
    return status;
}

}  // namespace platform
