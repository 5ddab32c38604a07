// SPDX-License-Identifier: Apache-2.0
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <algorithm>

#include "platform/paths.h"

namespace platform {

std::string NativePath(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

std::string ProgramDirectory() {
    char path[32768];
    const DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
    if (length == 0 || length == sizeof path) return "";
    const std::string whole(path, length);
    return whole.substr(0, whole.find_last_of("\\/") + 1);
}

std::vector<std::string> TemporaryDirectories(const std::string& checkpointPath) {
    const std::string real = checkpointPath.substr(0, checkpointPath.find_last_of("\\/") + 1);
    const std::string modules = checkpointPath.substr(0, checkpointPath.rfind('\\') + 1);
    return real == modules ? std::vector<std::string>{real} : std::vector<std::string>{real, modules};
}

}  // namespace platform
