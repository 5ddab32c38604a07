// SPDX-License-Identifier: Apache-2.0
#include "platform/process.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "platform/clock.h"
#include "platform/process_interrupts.h"

namespace platform {

namespace {

// Contains everything that the child needs between fork and exec, where it must not allocate.
struct Image {
    const char* program;
    std::vector<char*> arguments;
    std::vector<char*> environment;
    const ProcessOptions& options;
    pid_t parent;
};

std::vector<char*> PointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (const std::string& string : strings)
        pointers.push_back(const_cast<char*>(string.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

// Returns this process's variables with those of `added`, which replace the ones of the same name.
std::vector<std::string> MergeEnvironment(const std::map<std::string, std::string>& added) {
    std::vector<std::string> merged;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        if (!added.contains(text.substr(0, text.find('=')))) merged.push_back(text);
    }
    for (const auto& [name, value] : added)
        merged.push_back(name + "=" + value);
    return merged;
}

void RedirectInChild(int standardStream, const char* path, int flags) {
    const int file = open(path, flags | O_CLOEXEC, 0666);
    if (file < 0 || dup2(file, standardStream) < 0) _exit(kNotExecuted);
}

[[noreturn]] void BecomeChild(const Image& image) {
#ifdef __linux__
    // The parent may have ended before PR_SET_PDEATHSIG took effect.
    const bool outlives =
        image.options.endsWithParent && (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != image.parent);
    if (outlives) _exit(kNotExecuted);
#endif
    constexpr int kEmptied = O_WRONLY | O_CREAT | O_TRUNC;
    if (image.options.hasEmptyInput) RedirectInChild(STDIN_FILENO, "/dev/null", O_RDONLY);
    if (!image.options.outputPath.empty())
        RedirectInChild(STDOUT_FILENO, image.options.outputPath.c_str(), kEmptied);
    if (!image.options.errorPath.empty())
        RedirectInChild(STDERR_FILENO, image.options.errorPath.c_str(), kEmptied);
    execve(image.program, image.arguments.data(), image.environment.data());
    _exit(kNotExecuted);
}

// Forks a child that receives interrupts. Interrupts that arrive in the meantime are delivered to it once it
// is the receiver.
pid_t ForkReceiver(const Image& image) {
    const std::vector<int> interrupts = InterruptSignals();
    const BlockedInterrupts blocked;
    const pid_t child = fork();
    if (child == 0) {
        // Until the child has handlers of its own, an interrupt ends it.
        for (const int interrupt : interrupts)
            std::signal(interrupt, SIG_DFL);
        blocked.Restore();
        BecomeChild(image);
    }
    if (child > 0) SetInterruptReceiver(child);
    return child;
}

ProcessEnd ReadStatus(pid_t process, int status) {
    RemoveInterruptReceiver(process);
    const bool killed = WIFSIGNALED(status);
    return {killed, killed ? WTERMSIG(status) : WEXITSTATUS(status)};
}

}  // namespace

std::int64_t CurrentProcessId() {
    return getpid();
}

void ExitImmediately(int exitCode) {
    _exit(exitCode);
}

void KillCurrentProcess() {
    kill(getpid(), SIGKILL);
    for (;;) {
        pause();
    }
}

std::uint64_t CurrentThreadId() {
    return static_cast<std::uint64_t>(syscall(SYS_gettid));
}

std::string HostName() {
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 && name[0] != '\0' ? name : "unknown";
}

std::string UserName() {
    std::array<char, 1024> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        return entry.pw_name;
    }
    return std::to_string(geteuid());
}

std::string ProgramName() {
    std::array<char, 4096> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0) {
        return {};
    }
    const std::string text(path.data(), static_cast<std::size_t>(length));
    return text.substr(text.rfind('/') + 1);
}

std::uint64_t RandomNumber() {
    std::uint64_t number = 0;
    if (getentropy(&number, sizeof number) != 0) {
        number = static_cast<std::uint64_t>(FileClockNs()) * 2654435761U;
    }
    return number;
}

void SuppressCrashDialogs() {}

void RaiseOpenFileLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return;
    }
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

std::string RunningProgramPath() {
    return "/proc/self/exe";
}

ProcessHandle StartProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const ProcessOptions& options, std::string& error) {
    const std::vector<std::string> environment = MergeEnvironment(options.environment);
    const Image image = {program.c_str(), PointersTo(arguments), PointersTo(environment), options, getpid()};
    const pid_t child = options.receivesInterrupts ? ForkReceiver(image) : fork();
    if (child == 0) BecomeChild(image);
    if (child > 0) return child;
    error = std::strerror(errno);
    return kNoProcess;
}

ProcessEnd WaitForProcess(ProcessHandle process) {
    const auto child = static_cast<pid_t>(process);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return ReadStatus(child, status);
}

std::optional<ProcessEnd> WaitForProcess(ProcessHandle process, std::int64_t timeoutMs) {
    constexpr auto kPause = std::chrono::milliseconds(5);
    const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    const auto child = static_cast<pid_t>(process);
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > limit) return std::nullopt;
        std::this_thread::sleep_for(kPause);
    }
    return ReadStatus(child, status);
}

void KillProcess(ProcessHandle process) {
    kill(static_cast<pid_t>(process), SIGKILL);
}

bool SignalProcess(ProcessHandle process, int signalNumber) {
    return kill(static_cast<pid_t>(process), signalNumber) == 0;
}

int MarkExitCode(int exitCode) {
    return exitCode;
}

ProcessEnd ReadMarkedExit(const ProcessEnd& end) {
    return end;
}

}  // namespace platform
