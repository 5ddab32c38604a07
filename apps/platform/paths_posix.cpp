// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <climits>

#include "platform/paths.h"

namespace platform {

std::string NativePath(std::string path) {
    return path;
}

std::string ProgramDirectory() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0) return "";
    const std::string whole(path, static_cast<std::size_t>(length));
    return whole.substr(0, whole.rfind('/') + 1);
}

std::vector<std::string> TemporaryDirectories(const std::string& checkpointPath) {
    return {checkpointPath.substr(0, checkpointPath.rfind('/') + 1)};
}

}  // namespace platform
