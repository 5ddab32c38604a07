// SPDX-License-Identifier: Apache-2.0

// clang-format off
#include <windows.h>
// clang-format on

#include <process.h>

#include <cstdio>
#include <cstdlib>

#include "platform/os.h"

namespace mqamod {

const char kPathDelimiter = '\\';
const char* const kBuildTarget = "64-bit WIN64";
const MqLibraryNames kMqLibraryNames = {"mqic.dll", "mqm.dll", "C:\\Program Files\\IBM\\MQ\\bin64\\"};

int DeleteByCommand(const char* path) {
    static char command[32766 + sizeof "del "];  // scratch space; it has no meaning between calls
    std::snprintf(command, sizeof command, "del %s", path);
    return std::system(command) == -1 ? -1 : 0;
}

int CurrentProcessId() {
    return _getpid();
}

void SleepMilliseconds(std::uint32_t milliseconds) {
    Sleep(milliseconds);
}

bool GetStreamPosition(std::FILE* stream, std::int64_t& position) {
    std::fpos_t streamPosition{};
    static_assert(sizeof streamPosition == sizeof position);
    if (std::fgetpos(stream, &streamPosition) != 0) return false;
    position = streamPosition;
    return true;
}

bool SetStreamPosition(std::FILE* stream, std::int64_t position) {
    const std::fpos_t streamPosition = position;
    return std::fsetpos(stream, &streamPosition) == 0;
}

// Only with the altered search path does a library given by its full path find the libraries next to it.
void* LoadSharedLibrary(const char* path, char* reason, std::size_t reasonBytes) {
    const bool fullPath = path[0] != '\0' && (path[1] == ':' || path[0] == '\\' || path[0] == '/');
    HMODULE library = LoadLibraryExA(path, nullptr, fullPath ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
    if (library == nullptr) {
        const DWORD error = GetLastError();
        std::snprintf(reason, reasonBytes, "%s: Windows error %lu", path, static_cast<unsigned long>(error));
    }
    return reinterpret_cast<void*>(library);
}

void* FindLibrarySymbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

}  // namespace mqamod
