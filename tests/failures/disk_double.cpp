// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/disk_double.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

DiskDouble::File& FileOf(void* cookie) {
    return *static_cast<DiskDouble::File*>(cookie);
}

ssize_t ReadFile(void* cookie, char* buffer, std::size_t bytes) {
    const DiskDouble::File& file = FileOf(cookie);
    if (const DiskFault* fault = file.disk->Strike(DiskCall::Read, file.path)) {
        errno = fault->error;
        return -1;
    }
    return read(file.descriptor, buffer, bytes);
}

// Returns the number of bytes written. A number less than requested is an error, which errno describes.
ssize_t WriteFile(void* cookie, const char* buffer, std::size_t bytes) {
    const DiskDouble::File& file = FileOf(cookie);
    if (!*file.alive) return static_cast<ssize_t>(bytes);
    const DiskFault* fault = file.disk->Strike(DiskCall::Write, file.path);
    std::size_t through = bytes;
    if (fault != nullptr) through = fault->takesHalf ? bytes / 2 : 0;
    const ssize_t written = through > 0 ? write(file.descriptor, buffer, through) : 0;
    if (fault != nullptr) errno = fault->error;
    return written;
}

int SeekFile(void* cookie, off64_t* offset, int whence) {
    const off_t at = lseek(FileOf(cookie).descriptor, *offset, whence);
    if (at == -1) return -1;
    *offset = at;
    return 0;
}

int CloseFile(void* cookie) {
    const std::unique_ptr<DiskDouble::File> file(&FileOf(cookie));
    return close(file->descriptor);
}

int FlagsOf(const std::string& mode) {
    const bool both = mode.find('+') != std::string::npos;
    if (mode[0] == 'r') return both ? O_RDWR : O_RDONLY;
    return (both ? O_RDWR : O_WRONLY) | O_CREAT | (mode[0] == 'a' ? O_APPEND : O_TRUNC);
}

}  // namespace

void DiskDouble::BeginProcess() {
    faults_.clear();
    counts_.clear();
    points.clear();
    alive_ = std::make_shared<bool>(true);
}

std::FILE* DiskDouble::Open(const char* path, const char* mode) {
    const int descriptor = open(path, FlagsOf(mode), 0600);
    if (descriptor < 0) return nullptr;
    auto file = std::make_unique<File>(File{this, descriptor, path, alive_});
    return fopencookie(file.release(), mode, {ReadFile, WriteFile, SeekFile, CloseFile});
}

const DiskFault* DiskDouble::Strike(DiskCall call, const std::string& path) {
    const int nth = ++counts_[{call, path}];
    points.push_back({call, nth, path});
    const auto fits = [&](const DiskFault& fault) {
        return fault.call == call && path.find(fault.file) != std::string::npos &&
               (fault.stays ? nth >= fault.nth : nth == fault.nth);
    };
    const auto fault = std::find_if(faults_.begin(), faults_.end(), fits);
    if (fault == faults_.end()) return nullptr;
    struck_ = *fault;
    if (onStrike) onStrike(struck_, path);
    return &struck_;
}
