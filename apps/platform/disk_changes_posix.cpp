#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/disk_changes.h"
#include "platform/platform.h"

namespace platform {

namespace {

std::string FolderOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

bool Fail(std::string& reason) {
    reason = std::strerror(errno);
    return false;
}

bool WriteWhole(int descriptor, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const long written = WriteBytes(descriptor, bytes.data() + done, bytes.size() - done);
        if (written <= 0) {
            if (written == 0) errno = ENOSPC;
            return false;
        }
        done += static_cast<std::size_t>(written);
    }
    return true;
}

// Opens, syncs and closes a file or directory.
bool SyncPath(const std::string& path, std::string& reason) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return Fail(reason);
    const bool synced = SyncFile(descriptor) == 0;
    if (!synced) (void)Fail(reason);
    close(descriptor);
    return synced;
}

}  // namespace

std::vector<std::string> TemporaryDirectories(const std::string& checkpointPath) {
    return {FolderOf(checkpointPath)};
}

std::vector<std::string> ListDirectory(const std::string& folder) {
    std::vector<std::string> names;
    DIR* listing = opendir(folder.empty() ? "." : folder.c_str());
    if (listing == nullptr) return names;
    while (const dirent* entry = readdir(listing)) {
        names.emplace_back(entry->d_name);
    }
    closedir(listing);
    return names;
}

bool MoveStreamTo(std::FILE* stream, std::uint64_t offset) {
    return fseeko(stream, static_cast<off_t>(offset), SEEK_SET) == 0;
}

bool SyncParentDirectory(const std::string& path, std::string& reason) {
    const std::string folder = FolderOf(path);
    return SyncPath(folder.empty() ? "." : folder, reason);
}

bool RenameDurably(const std::string& from, const std::string& to, std::string& reason) {
    if (!SyncPath(from, reason)) return false;
    struct stat status = {};
    if (lstat(to.c_str(), &status) == 0) {
        errno = EEXIST;
        return Fail(reason);
    }
    if (rename(from.c_str(), to.c_str()) != 0) return Fail(reason);
    return SyncParentDirectory(to, reason);
}

bool DeleteDurably(const std::string& path, std::string& reason) {
    if (unlink(path.c_str()) != 0) return Fail(reason);
    return SyncParentDirectory(path, reason);
}

bool ReplaceDurably(const std::string& path, const std::string& scratch, const std::string& bytes,
                    std::string& reason) {
    const int descriptor = open(scratch.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) return Fail(reason);
    const bool written = WriteWhole(descriptor, bytes) && SyncFile(descriptor) == 0;
    if (!written) (void)Fail(reason);
    if (close(descriptor) != 0 && written) return Fail(reason);
    if (!written) return false;
    if (rename(scratch.c_str(), path.c_str()) != 0) return Fail(reason);
    return SyncParentDirectory(path, reason);
}

bool TruncateDurably(const std::string& path, std::uint64_t bytes, std::string& reason) {
    if (truncate(path.c_str(), static_cast<off_t>(bytes)) != 0) return Fail(reason);
    return SyncPath(path, reason);
}

}  // namespace platform
