// SPDX-License-Identifier: Apache-2.0
#include "platform/shared_file.h"
#include "platform/windows_text.h"

namespace platform {

FileStatus MapSharedFile(const std::string& path, std::size_t bytes, SharedFile& shared) {
    shared = SharedFile();
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileW(Wide(path).c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return StatusOfLastError();
    }
    FileStatus status = FileStatus::kOk;
    const HANDLE mapping =
        CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(bytes), nullptr);
    if (mapping == nullptr) {
        status = StatusOfLastError();
    } else {
        void* memory = MapViewOfFile(mapping, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, bytes);
        if (memory == nullptr) {
            status = StatusOfLastError();
        } else {
            shared = {memory, bytes, kNoFile};
        }
        CloseHandle(mapping);
    }
    CloseHandle(file);
    return status;
}

// No one can truncate a file that is mapped.
bool EnsureFileSize(const SharedFile& /*shared*/) {
    return true;
}

void UnmapSharedFile(SharedFile& shared) {
    if (shared.memory != nullptr) {
        UnmapViewOfFile(shared.memory);
    }
    shared = SharedFile();
}

}  // namespace platform
