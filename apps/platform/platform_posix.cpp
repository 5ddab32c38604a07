#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <ctime>

#include "platform/platform.h"

namespace platform {

const char* const kModuleFileName = "libmqamod.so";

namespace {

std::atomic<int> interrupts{0};
std::atomic<int> atOnceCode{1};

// A service manager and `timeout` send a signal to every process they know, and a command passes its own on.
// What arrives within a moment of the first is the same interrupt.
constexpr long long kMomentNanoseconds = 100000000;
std::atomic<long long> firstInterruptAt{0};

long long MonotonicNanoseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

extern "C" void CountInterrupt(int /*signalNumber*/) {
    const int savedErrno = errno;
    const long long now = MonotonicNanoseconds();
    const bool first = interrupts.fetch_add(1) == 0;
    if (first) firstInterruptAt = now;
    if (!first && now - firstInterruptAt < kMomentNanoseconds) {
        errno = savedErrno;
        return;
    }
    const char* text = first ? kFirstInterruptText : kSecondInterruptText;
    const std::size_t length = first ? sizeof kFirstInterruptText - 1 : sizeof kSecondInterruptText - 1;
    const ssize_t written = write(STDERR_FILENO, text, length);
    static_cast<void>(written);
    if (!first) _exit(atOnceCode.load());
    errno = savedErrno;
}

}  // namespace

std::string ProgramDirectory() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0) return "";
    const std::string whole(path, static_cast<std::size_t>(length));
    return whole.substr(0, whole.rfind('/') + 1);
}

std::string NativePath(std::string path) {
    return path;
}

void* OpenLibrary(const std::string& path, std::string& reason) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* words = dlerror();
        reason = words != nullptr ? words : "unknown reason";
    }
    return library;
}

void* FindFunction(void* library, const char* name) {
    return dlsym(library, name);
}

PathKind ProbePath(const std::string& path) {
    std::uint64_t bytes = 0;
    return ProbePath(path, bytes);
}

PathKind ProbePath(const std::string& path, std::uint64_t& bytes) {
    struct stat status = {};
    bytes = 0;
    if (stat(path.c_str(), &status) != 0) {
        return errno == ENOENT || errno == ENOTDIR ? PathKind::kMissing : PathKind::kUnknown;
    }
    if (!S_ISREG(status.st_mode)) return PathKind::kOther;
    bytes = static_cast<std::uint64_t>(status.st_size);
    return PathKind::kFile;
}

int OpenForWriting(const std::string& path, OpenMode mode) {
    int flags = O_WRONLY | O_CLOEXEC;
    switch (mode) {
        case OpenMode::kCreate: flags |= O_CREAT | O_EXCL; break;
        case OpenMode::kReplace: flags |= O_CREAT | O_TRUNC; break;
        case OpenMode::kAppend: flags |= O_CREAT | O_APPEND; break;
        case OpenMode::kExisting: break;
    }
    return open(path.c_str(), flags, 0666);
}

long WriteBytes(int descriptor, const char* bytes, std::size_t length) {
    for (;;) {
        const ssize_t written = write(descriptor, bytes, length);
        if (written >= 0 || errno != EINTR) return written;
    }
}

// Every fsync error on a regular file counts. On anything else, EINVAL and ENOTSUP only mean that it cannot
// be synced. EROFS is ignored on pipes, but on files and directories it means that the file system was
// remounted read-only after an error of its disk.
int SyncFile(int descriptor) {
    if (fsync(descriptor) == 0) return 0;
    const int code = errno;
    struct stat status = {};
    if (fstat(descriptor, &status) == 0) {
        const bool isFile = S_ISREG(status.st_mode);
        const bool isFolder = S_ISDIR(status.st_mode);
        if (!isFile && (code == EINVAL || code == ENOTSUP)) return 0;
        if (!isFile && !isFolder && code == EROFS) return 0;
    }
    errno = code;
    return -1;
}

bool IsFileAt(int descriptor, const std::string& path, std::uint64_t bytes) {
    struct stat mine = {};
    struct stat there = {};
    errno = 0;
    if (fstat(descriptor, &mine) != 0) return false;
    if (stat(path.c_str(), &there) != 0) {
        if (errno == ENOENT) errno = 0;
        return false;
    }
    return static_cast<std::uint64_t>(mine.st_size) == bytes && mine.st_dev == there.st_dev &&
           mine.st_ino == there.st_ino;
}

int CloseDescriptor(int descriptor) {
    return close(descriptor);
}

void ReopenClosedStdStreams() {
    int descriptor = -1;
    do {
        descriptor = open("/dev/null", O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) close(descriptor);
}

int RedirectStdout(ModuleOutput output) {
    std::fflush(stdout);
    const int claimed = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (claimed < 0) return -1;
    if (output == ModuleOutput::kToStandardError) {
        return dup2(STDERR_FILENO, STDOUT_FILENO) < 0 ? -1 : claimed;
    }
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0 || dup2(nowhere, STDOUT_FILENO) < 0) return -1;
    close(nowhere);
    return claimed;
}

bool IsStandardErrorTerminal() {
    return IsTerminal(STDERR_FILENO);
}
bool IsTerminal(int descriptor) {
    return isatty(descriptor) == 1;
}

void WatchInterrupts(int exitCodeAtOnce) {
    atOnceCode = exitCodeAtOnce;
    struct sigaction action = {};
    action.sa_handler = CountInterrupt;
    // Interrupts must not make the module's file calls fail.
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
}

bool InterruptRequested() {
    return interrupts.load(std::memory_order_relaxed) > 0;
}

void ExitImmediately(int exitCode) {
    _exit(exitCode);
}

}  // namespace platform
