// SPDX-License-Identifier: Apache-2.0
#include "platform/directory.h"

#include <cwchar>

#include "platform/file.h"
#include "platform/windows_text.h"

namespace platform {

FileStatus ListDirectory(const std::string& path, std::vector<DirectoryEntry>& entries) {
    entries.clear();
    const bool needsDelimiter = !path.empty() && path.back() != '/' && path.back() != '\\';
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(Wide(path + (needsDelimiter ? "/*" : "*")).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return StatusOfLastError();
    }
    do {
        std::string name = Narrow(found.cFileName, std::wcslen(found.cFileName));
        if (name == "." || name == "..") {
            continue;
        }
        const bool isDirectory = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        entries.push_back({std::move(name), isDirectory, !isDirectory});
    } while (FindNextFileW(search, &found) != 0);
    FindClose(search);
    return FileStatus::kOk;
}

FileStatus MakeDirectory(const std::string& path) {
    const FileStatus status = StatusOf(CreateDirectoryW(Wide(path).c_str(), nullptr));
    FileInfo info;
    const bool exists =
        status == FileStatus::kExists && StatPath(path, info) == FileStatus::kOk && info.isDirectory;
    return exists ? FileStatus::kOk : status;
}

FileStatus RemoveEmptyDirectory(const std::string& path) {
    const FileStatus status = StatusOf(RemoveDirectoryW(Wide(path).c_str()));
    return status == FileStatus::kNotFound ? FileStatus::kOk : status;
}

FileStatus SyncDirectory(const std::string& /*path*/) {
    return FileStatus::kOk;
}

}  // namespace platform
