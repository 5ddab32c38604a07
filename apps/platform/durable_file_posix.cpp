// SPDX-License-Identifier: Apache-2.0
#include "platform/durable_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/file.h"

namespace platform {

namespace {

std::string DirectoryOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

bool Fail(std::string& error) {
    error = std::strerror(errno);
    return false;
}

bool SyncPath(const std::string& path, std::string& error) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return Fail(error);
    const bool synced = SyncFile(descriptor) == 0;
    if (!synced) (void)Fail(error);
    close(descriptor);
    return synced;
}

}  // namespace

bool SyncParentDirectory(const std::string& path, std::string& error) {
    const std::string directory = DirectoryOf(path);
    return SyncPath(directory.empty() ? "." : directory, error);
}

bool RenameDurably(const std::string& from, const std::string& to, std::string& error) {
    if (!SyncPath(from, error)) return false;
    struct stat status = {};
    if (lstat(to.c_str(), &status) == 0) {
        errno = EEXIST;
        return Fail(error);
    }
    if (rename(from.c_str(), to.c_str()) != 0) return Fail(error);
    return SyncParentDirectory(to, error);
}

bool MoveOverDurably(const std::string& from, const std::string& to, std::string& error) {
    if (rename(from.c_str(), to.c_str()) != 0) return Fail(error);
    return SyncParentDirectory(to, error);
}

bool DeleteDurably(const std::string& path, std::string& error) {
    if (unlink(path.c_str()) != 0) return Fail(error);
    return SyncParentDirectory(path, error);
}

bool ReplaceDurably(const std::string& path, const std::string& scratch, const std::string& bytes,
                    std::string& error) {
    const int descriptor = open(scratch.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) return Fail(error);
    const bool written = WriteWhole(descriptor, bytes.data(), bytes.size()) && SyncFile(descriptor) == 0;
    if (!written) (void)Fail(error);
    if (close(descriptor) != 0 && written) return Fail(error);
    if (!written) return false;
    return MoveOverDurably(scratch, path, error);
}

bool TruncateDurably(const std::string& path, std::uint64_t bytes, std::string& error) {
    if (truncate(path.c_str(), static_cast<off_t>(bytes)) != 0) return Fail(error);
    return SyncPath(path, error);
}

}  // namespace platform
