#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "spoolmq/os/os.h"

namespace spoolmq {

const char kPlatformApplType = 6;

namespace {

thread_local std::string lastErrorText;

OsStatus StatusOfErrno() {
    const int code = errno;
    std::array<char, 256> buffer{};
    lastErrorText = strerror_r(code, buffer.data(), buffer.size());
    switch (code) {
        case ENOENT:
        case ENOTDIR: return OsStatus::NotFound;
        case EEXIST: return OsStatus::Exists;
        case EWOULDBLOCK:
        case EBUSY: return OsStatus::Busy;
        default: return OsStatus::Failed;
    }
}

OsStatus StatusOf(int result) {
    return result == 0 ? OsStatus::Ok : StatusOfErrno();
}

std::int64_t Nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

FileInfo InfoOf(const struct stat& status) {
    FileInfo info;
    info.bytes = status.st_size;
    info.writeTimeNs = Nanoseconds(status.st_mtim);
    info.changeTimeNs = Nanoseconds(status.st_ctim);
    info.identity = status.st_ino;
    info.isFolder = S_ISDIR(status.st_mode);
    info.isFile = S_ISREG(status.st_mode);
    return info;
}

int OpenRetrying(const char* path, int flags, mode_t mode = 0) {
    int file = -1;
    do {
        file = open(path, flags | O_CLOEXEC, mode);
    } while (file < 0 && errno == EINTR);
    return file;
}

/// Makes the file so long, with room on the disk for it: to touch a page for which there is none ends the
/// process as well.
OsStatus Lengthen(int file, std::size_t bytes) {
    int failed = 0;
    do {
        failed = fallocate(file, 0, 0, static_cast<off_t>(bytes));
    } while (failed != 0 && errno == EINTR);
    if (failed == 0) return OsStatus::Ok;
    if (errno != EOPNOTSUPP && errno != ENOSYS) return StatusOfErrno();
    return StatusOf(ftruncate(file, static_cast<off_t>(bytes)));
}

OsStatus WriteAll(int file, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(file, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return StatusOfErrno();
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return OsStatus::Ok;
}

}  // namespace

const std::string& LastOsErrorText() {
    return lastErrorText;
}

OsStatus StatPath(const std::string& path, FileInfo* info) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return StatusOfErrno();
    *info = InfoOf(status);
    return OsStatus::Ok;
}

OsStatus ListFolder(const std::string& path, std::vector<FolderEntry>* entries) {
    entries->clear();
    DIR* folder = opendir(path.c_str());
    if (folder == nullptr) return StatusOfErrno();
    while (const dirent* entry =
               readdir(folder)) {  // NOLINT(concurrency-mt-unsafe): the stream is this call's own
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        FileInfo info;
        info.isFolder = entry->d_type == DT_DIR;
        info.isFile = entry->d_type == DT_REG;
        // A link that leads nowhere is neither.
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK)
            static_cast<void>(StatPath(path + '/' + entry->d_name, &info));
        entries->push_back({std::string(name), info.isFolder, info.isFile});
    }
    closedir(folder);
    return OsStatus::Ok;
}

OsStatus MakeFolder(const std::string& path) {
    const OsStatus status = StatusOf(mkdir(path.c_str(), 0777));
    FileInfo info;
    const bool isThere = status == OsStatus::Exists && StatPath(path, &info) == OsStatus::Ok && info.isFolder;
    return isThere ? OsStatus::Ok : status;
}

OsStatus RemoveEmptyFolder(const std::string& path) {
    const OsStatus status = StatusOf(rmdir(path.c_str()));
    return status == OsStatus::NotFound ? OsStatus::Ok : status;
}

OsStatus RemoveFile(const std::string& path) {
    const OsStatus status = StatusOf(unlink(path.c_str()));
    return status == OsStatus::NotFound ? OsStatus::Ok : status;
}

OsStatus RenameNew(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return OsStatus::Ok;
    if (errno != EINVAL && errno != ENOSYS) return StatusOfErrno();
    // A file system that does not know the flag: look first. Names made by the stand-in are unique, so that
    // only files of equal name copied in by hand within one clock tick could meet in the gap.
    if (access(to.c_str(), F_OK) == 0) {
        errno = EEXIST;
        return StatusOfErrno();
    }
    return StatusOf(rename(from.c_str(), to.c_str()));
}

OsStatus RenameOver(const std::string& from, const std::string& to) {
    return StatusOf(rename(from.c_str(), to.c_str()));
}

OsStatus SyncFolder(const std::string& path) {
    const int folder = OpenRetrying(path.c_str(), O_RDONLY | O_DIRECTORY);
    if (folder < 0) return StatusOfErrno();
    const OsStatus status = StatusOf(fsync(folder));
    close(folder);
    return status;
}

OsStatus OpenForReading(const std::string& path, OsFile* file, FileInfo* info) {
    *file = kNoFile;
    // Opening a pipe would wait for somebody to write to it.
    const int opened = OpenRetrying(path.c_str(), O_RDONLY | O_NONBLOCK);
    if (opened < 0) return StatusOfErrno();
    struct stat found {};
    OsStatus status = StatusOf(fstat(opened, &found));
    if (status == OsStatus::Ok && !S_ISREG(found.st_mode)) {
        lastErrorText = "Not a file";
        status = OsStatus::NotFound;
    }
    if (status != OsStatus::Ok) {
        close(opened);
        return status;
    }
    if (info != nullptr) *info = InfoOf(found);
    *file = opened;
    return OsStatus::Ok;
}

OsStatus ReadFromStart(OsFile file, void* buffer, std::size_t bytes, std::size_t* got) {
    *got = 0;
    while (*got < bytes) {
        const ssize_t count = pread(static_cast<int>(file), static_cast<char*>(buffer) + *got, bytes - *got,
                                    static_cast<off_t>(*got));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return StatusOfErrno();
        if (count == 0) break;
        *got += static_cast<std::size_t>(count);
    }
    return OsStatus::Ok;
}

void CloseFile(OsFile file) {
    if (file != kNoFile) close(static_cast<int>(file));
}

OsStatus ReadWholeFile(const std::string& path, std::string* content) {
    content->clear();
    OsFile file = kNoFile;
    FileInfo info;
    OsStatus status = OpenForReading(path, &file, &info);
    if (status != OsStatus::Ok) return status;
    content->resize(static_cast<std::size_t>(info.bytes));
    std::size_t got = 0;
    status = ReadFromStart(file, content->data(), content->size(), &got);
    content->resize(got);
    CloseFile(file);
    return status;
}

OsStatus WriteNewFile(const std::string& path, const void* content, std::size_t bytes, bool sync) {
    const int file = OpenRetrying(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
    if (file < 0) return StatusOfErrno();
    OsStatus status = WriteAll(file, static_cast<const char*>(content), bytes);
    if (status == OsStatus::Ok && sync && fdatasync(file) != 0) status = StatusOfErrno();
    if (close(file) != 0 && status == OsStatus::Ok) status = StatusOfErrno();
    if (status != OsStatus::Ok) unlink(path.c_str());
    return status;
}

OsStatus AcquirePresence(const std::string& path, OsFile* presence) {
    *presence = kNoFile;
    for (;;) {
        const int file = OpenRetrying(path.c_str(), O_RDWR | O_CREAT, 0666);
        if (file < 0) return StatusOfErrno();
        if (flock(file, LOCK_EX | LOCK_NB) != 0) {
            const OsStatus status = StatusOfErrno();
            close(file);
            return status;
        }
        // The one who held it before may have deleted the file between our open and our lock: a lock on a
        // file without a name excludes nobody.
        struct stat held {};
        struct stat named {};
        if (fstat(file, &held) == 0 && stat(path.c_str(), &named) == 0 && held.st_ino == named.st_ino) {
            *presence = file;
            return OsStatus::Ok;
        }
        close(file);
    }
}

void ReleasePresence(const std::string& path, OsFile presence) {
    if (presence == kNoFile) return;
    unlink(path.c_str());
    close(static_cast<int>(presence));
}

OsStatus MapSharedFile(const std::string& path, std::size_t bytes, SharedFile* shared) {
    *shared = SharedFile();
    const int file = OpenRetrying(path.c_str(), O_RDWR | O_CREAT, 0666);
    if (file < 0) return StatusOfErrno();
    OsStatus status = Lengthen(file, bytes);
    if (status == OsStatus::Ok) {
        void* mapped = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (mapped != MAP_FAILED) {
            *shared = {mapped, bytes, file};
            return OsStatus::Ok;
        }
        status = StatusOfErrno();
    }
    close(file);
    return status;
}

bool MakeWhole(const SharedFile& shared) {
    struct stat status {};
    const int file = static_cast<int>(shared.file);
    if (fstat(file, &status) != 0) return false;
    return status.st_size >= static_cast<off_t>(shared.bytes) || Lengthen(file, shared.bytes) == OsStatus::Ok;
}

void UnmapSharedFile(SharedFile* shared) {
    if (shared->memory != nullptr) munmap(shared->memory, shared->bytes);
    CloseFile(shared->file);
    *shared = SharedFile();
}

// The kernel stamps files from its coarse clock: the precise one would run ahead of it by up to a tick.
std::int64_t FileClockNs() {
    timespec time{};
    clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return Nanoseconds(time);
}

std::int64_t MonotonicMs() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return Nanoseconds(time) / 1000000;
}

void SleepMs(std::int64_t milliseconds) {
    const timespec time{milliseconds / 1000, (milliseconds % 1000) * 1000000};
    nanosleep(&time, nullptr);
}

std::int64_t ProcessId() {
    return getpid();
}
std::uint64_t ThreadId() {
    return static_cast<std::uint64_t>(syscall(SYS_gettid));
}

std::uint64_t RandomNumber() {
    std::uint64_t number = 0;
    if (getentropy(&number, sizeof number) != 0)
        number = static_cast<std::uint64_t>(FileClockNs()) * 2654435761U;
    return number;
}

std::string UserName() {
    std::array<char, 1024> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr)
        return entry.pw_name;
    return std::to_string(geteuid());
}

std::string ProgramName() {
    std::array<char, 4096> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0) return {};
    const std::string_view text(path.data(), static_cast<std::size_t>(length));
    return std::string(text.substr(text.rfind('/') + 1));
}

std::string EnvironmentVariable(const char* name) {
    const char* value = getenv(name);  // NOLINT(concurrency-mt-unsafe): there is no other way to ask
    return value == nullptr ? std::string() : std::string(value);
}

void UseBinaryStreams() {}

void EndProcessAtOnce() {
    kill(getpid(), SIGKILL);
    for (;;)
        pause();
}

OsFile EnterGuard(const std::string& path) {
    const int file = OpenRetrying(path.c_str(), O_RDWR | O_CREAT, 0666);
    if (file < 0) {
        static_cast<void>(StatusOfErrno());
        return kNoFile;
    }
    while (flock(file, LOCK_EX) != 0 && errno == EINTR) {
    }
    return file;
}

void LeaveGuard(OsFile guard) {
    CloseFile(guard);
}

}  // namespace spoolmq
