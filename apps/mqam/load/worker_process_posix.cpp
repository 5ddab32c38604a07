#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "mqam/load/worker_process.h"

namespace mqam {
namespace {

// Of a worker that did not come to life; no exit code of this program.
constexpr int kNoWorker = 127;

std::vector<std::string> keptArguments;

std::atomic<pid_t> worker{0};
std::atomic<bool> interruptCame{false};

// A terminal's Ctrl-C reaches the worker by itself; a signal that somebody sent to this process does not.
extern "C" void HandOnInterrupt(int signalNumber, siginfo_t* information, void* /*context*/) {
    const int savedErrno = errno;
    interruptCame = true;
    const pid_t process = worker.load();
    if (process > 0 && information->si_code <= 0) kill(process, signalNumber);
    errno = savedErrno;
}

// Holds SIGINT and SIGTERM back while it lives.
class HeldInterrupts {
  public:
    HeldInterrupts() {
        sigset_t interrupts;
        sigemptyset(&interrupts);
        sigaddset(&interrupts, SIGINT);
        sigaddset(&interrupts, SIGTERM);
        sigprocmask(SIG_BLOCK, &interrupts, &before_);
    }
    HeldInterrupts(const HeldInterrupts&) = delete;
    HeldInterrupts& operator=(const HeldInterrupts&) = delete;
    ~HeldInterrupts() { LetGo(); }
    void LetGo() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_ = {};
};

[[noreturn]] void BecomeWorker(char** arguments, pid_t parent) {
#ifdef __linux__
    // The parent may have gone before this took effect.
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != parent) _exit(kNoWorker);
#else
    static_cast<void>(parent);
#endif

    execv("/proc/self/exe", arguments);
    _exit(kNoWorker);
}

// Returns the process, or -1 with errno set. An interrupt that comes meanwhile is handed on, and so is one
// that came before.
pid_t StartWorker(char** arguments) {
    const HeldInterrupts held;
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        // Until the worker has handlers of its own an interrupt ends it.
        std::signal(SIGINT, SIG_DFL);
        std::signal(SIGTERM, SIG_DFL);
        held.LetGo();
        BecomeWorker(arguments, parent);
    }
    if (child < 0) return child;
    worker = child;
    if (interruptCame) kill(child, SIGTERM);
    return child;
}

}  // namespace

void KeepArguments(int count, char** arguments) {
    keptArguments.assign(arguments, arguments + count);
}

WorkerEnd RunWorker(const std::vector<std::string>& moreArguments) {
    std::vector<std::string> words = ComposeWorkerArguments(keptArguments, moreArguments);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    WorkerEnd end;
    const pid_t child = StartWorker(arguments.data());
    if (child < 0) {
        end.reason = std::strerror(errno);
        return end;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    worker = 0;
    end.killed = WIFSIGNALED(status);
    end.code = end.killed ? WTERMSIG(status) : WEXITSTATUS(status);
    end.started = end.killed || end.code != kNoWorker;
    if (!end.started) end.reason = "the program is not there any more, or not executable";
    return end;
}

int MarkWorkerExit(int exitCode) {
    return exitCode;
}

void LeaveInterruptsToWorker() {
    struct sigaction action = {};
    action.sa_sigaction = HandOnInterrupt;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // Nobody reads any more what is told: the load goes on.
    action.sa_flags = 0;
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
}

bool InterruptCame() {
    return interruptCame;
}

}  // namespace mqam
