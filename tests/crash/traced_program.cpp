// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/traced_program.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>

#include "tests/crash/call_filter.h"

namespace {

constexpr std::uint64_t kShortestCutWrite = 5;

enum class Tracing { kNone, kProcesses, kCalls, kCallsAndLooks };

struct Trace {
    const ProgramOrder& order;
    const std::optional<Death>& death;
    Victim victim = Victim::kCommand;
    pid_t command = 0;
    int programs = 0;        // started so far: the command, then the worker of each attempt
    pid_t awaitingExit = 0;  // the thread that is inside the call after which to kill
    TracedEnd end = {};
    std::string failingPath = {};        // calls on this file keep failing
    std::set<pid_t> failingAtExit = {};  // threads inside a call that fails once it has taken effect
};

[[noreturn]] void Abort(const char* what) {
    std::fprintf(stderr, "crash: %s: %s\n", what, std::strerror(errno));
    std::exit(70);
}

void BecomeProgram(const ProgramOrder& order, Tracing tracing) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int console = open(order.console.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (console < 0 || nothing < 0) _exit(127);
    dup2(nothing, STDIN_FILENO);
    dup2(console, STDOUT_FILENO);
    dup2(console, STDERR_FILENO);
    if (order.fileKibibytesMax > 0) {
        const rlim_t bytes = static_cast<rlim_t>(order.fileKibibytesMax) * 1024;
        const rlimit limit = {bytes, bytes};
        // By default, the signal that accompanies the failed write would end the program.
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0 || std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR) _exit(127);
    }
    for (const auto& [name, value] : order.environment)
        setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> arguments;
    for (const std::string& argument : order.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    if (tracing != Tracing::kNone) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(126);
        raise(SIGSTOP);
    }
    const bool alsoLooks = tracing == Tracing::kCallsAndLooks;
    if ((tracing == Tracing::kCalls || alsoLooks) && !StopAtStateCalls(alsoLooks)) _exit(126);
    execv(arguments[0], arguments.data());
    _exit(127);
}

pid_t StartProgram(const ProgramOrder& order, Tracing tracing) {
    const pid_t process = fork();
    if (process < 0) Abort("fork");
    if (process == 0) BecomeProgram(order, tracing);
    return process;
}

void WriteFaultPlan(const Trace& trace) {
    std::ofstream plan(trace.order.faultPlanFile, std::ios::trunc);
    const Death& death = *trace.death;
    if (trace.programs == death.life + 1) {
        plan << death.verb << ' ' << death.number << " kill "
             << (death.moment == DeathMoment::kBefore ? "before" : "after") << '\n';
    }
}

pid_t ProcessOf(pid_t thread) {
    std::ifstream status("/proc/" + std::to_string(thread) + "/status");
    std::string word;
    while (status >> word) {
        pid_t process = 0;
        if (word == "Tgid:" && status >> process) return process;
    }
    return thread;
}

void Kill(Trace& trace, pid_t thread) {
    const pid_t process = ProcessOf(thread);
    trace.end.came = true;
    trace.end.died = true;
    trace.end.commandDied = trace.victim == Victim::kCommand || process == trace.command;
    // Kills the command first, so that it does not notice its worker's death.
    if (trace.end.commandDied) kill(trace.command, SIGKILL);
    kill(process, SIGKILL);
}

bool IsInside(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

// Makes the call fail. Returns false if the thread must not be resumed, because the call fails only after it
// has taken effect.
bool MakeFail(Trace& trace, pid_t thread, const StateCall& call) {
    const DeathMoment moment = trace.death->moment;
    trace.end.came = true;
    if (GoesOnFailing(moment)) trace.failingPath = call.path;
    if (!call.failsWhenDone) {
        if (!FailCall(thread, ErrorAt(moment))) Abort("a call cannot be made to fail");
        return true;
    }
    trace.failingAtExit.insert(thread);
    if (ptrace(PTRACE_SYSCALL, thread, nullptr, nullptr) != 0) Abort("resume to the end of a call");
    return false;
}

std::string DescribeCall(const Trace& trace, const StateCall& call) {
    const std::size_t prefix = trace.order.ownFolder.size() + 1;
    std::string text = call.name + std::string(" ");
    text += call.path.size() > prefix ? call.path.substr(prefix) : "the folder";
    if (call.length > 0) text += ", " + std::to_string(call.length) + " bytes";
    if (trace.programs > 1) text += ", life " + std::to_string(trace.programs - 1);
    return text;
}

// Notes a sync when the handling of its entry ends, unless the process is killed before the call.
struct SyncNote {
    SyncedTree* tree = nullptr;
    std::string path = {};
    SyncNote() = default;
    SyncNote(const SyncNote&) = delete;
    SyncNote& operator=(const SyncNote&) = delete;
    ~SyncNote() {
        if (tree != nullptr) tree->NoteSync(path);
    }
};

// Handles the entry of a call that changes a file or looks at one. Returns false if the thread must not be
// resumed.
bool CountCall(Trace& trace, pid_t thread) {
    StateCall call;
    // A thread that was killed in the meantime cannot be read.
    if (!ReadStateCall(thread, call)) return true;
    const bool isStore = IsInside(call.path, trace.order.storeFolder);
    const bool isOurs = call.path == trace.order.ownFolder || IsInside(call.path, trace.order.ownFolder);
    // The queue manager maps its counters into memory and changes them between two calls.
    if (!call.isKnown && (call.path.empty() || (isOurs && !isStore))) {
        trace.end.unplanned = "it made the system call " + call.name + ", which nobody has looked at";
    }
    if (!call.isKnown || !isOurs) return true;
    if (isStore && call.looks) return true;
    SyncNote note;
    if (!isStore && (call.name == "fsync" || call.name == "fdatasync")) {
        note.tree = trace.order.synced;
        note.path = call.path;
    }
    const auto scope = isStore ? DeathScope::kStore : call.looks ? DeathScope::kLook : DeathScope::kOwn;
    if (call.path == trace.failingPath &&
        (scope == trace.death->scope || FailsEveryScope(trace.death->moment))) {
        return MakeFail(trace, thread, call);
    }
    const auto index = static_cast<std::size_t>(scope);
    const std::uint64_t number = ++trace.end.counts.calls[index];
    if (call.length >= kShortestCutWrite) ++trace.end.counts.writes[index];
    if (!trace.death || trace.end.came || trace.awaitingExit != 0 || trace.death->scope != scope) return true;
    const bool isCut = IsCut(trace.death->moment);
    if (isCut && call.length < kShortestCutWrite) return true;
    if ((isCut ? trace.end.counts.writes[index] : number) != trace.death->number) return true;

    trace.end.where = DescribeCall(trace, call);
    if (ErrorAt(trace.death->moment) != 0) return MakeFail(trace, thread, call);
    std::uint64_t length = call.length;
    switch (trace.death->moment) {
        case DeathMoment::kBefore:
            note.tree = nullptr;
            Kill(trace, thread);
            return false;
        case DeathMoment::kAfter: break;
        case DeathMoment::kCutToThree: length = 3; break;
        case DeathMoment::kCutToHalf: length /= 2; break;
        case DeathMoment::kCutByOne: --length; break;
        default: break;
    }
    if (isCut && !CutWrite(thread, length)) Abort("a write cannot be cut short");
    trace.awaitingExit = thread;
    if (ptrace(PTRACE_SYSCALL, thread, nullptr, nullptr) != 0) Abort("resume to the end of a call");
    return false;
}

void HandleStop(Trace& trace, pid_t thread, int status) {
    const int signal = WSTOPSIG(status);
    const int event = status >> 16;
    int deliver = 0;
    if (event == PTRACE_EVENT_SECCOMP) {
        if (!CountCall(trace, thread)) return;
    } else if (event == PTRACE_EVENT_EXEC) {
        ++trace.programs;
        if (trace.death && trace.death->scope == DeathScope::kMqi) WriteFaultPlan(trace);
    } else if (event == 0 && signal == (SIGTRAP | 0x80)) {
        if (trace.failingAtExit.erase(thread) > 0) {
            if (!FailDoneCall(thread, ErrorAt(trace.death->moment))) Abort("a call cannot be made to fail");
        } else if (thread == trace.awaitingExit) {
            trace.awaitingExit = 0;
            Kill(trace, thread);
            return;
        }
    } else if (event == 0 && signal != SIGSTOP) {
        deliver = signal;
    }
    // A thread that was killed in the meantime cannot be resumed. Its end is reported next.
    ptrace(PTRACE_CONT, thread, nullptr, static_cast<long>(deliver));
}

}  // namespace

int RunProgramToEnd(const ProgramOrder& order) {
    const pid_t process = StartProgram(order, Tracing::kNone);
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TracedEnd RunProgramToDeath(const ProgramOrder& order, const std::optional<Death>& death, Victim victim) {
    Trace trace{order, death, victim};
    const bool countsCalls = !death || death->scope != DeathScope::kMqi;
    const bool countsLooks = death && death->scope == DeathScope::kLook;
    trace.command = StartProgram(order, countsLooks   ? Tracing::kCallsAndLooks
                                        : countsCalls ? Tracing::kCalls
                                                      : Tracing::kProcesses);
    int status = 0;
    if (waitpid(trace.command, &status, 0) != trace.command || !WIFSTOPPED(status))
        Abort("the traced program");
    const long options = PTRACE_O_EXITKILL | PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEEXEC | PTRACE_O_TRACEFORK |
                         PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE | PTRACE_O_TRACESECCOMP;
    if (ptrace(PTRACE_SETOPTIONS, trace.command, nullptr, options) != 0) Abort("trace options");
    ptrace(PTRACE_CONT, trace.command, nullptr, 0L);
    for (;;) {
        const pid_t thread = waitpid(-1, &status, __WALL);
        if (thread < 0 && errno == EINTR) continue;
        if (thread < 0) break;
        if (WIFSTOPPED(status)) {
            HandleStop(trace, thread, status);
        } else if (thread == trace.command && WIFEXITED(status)) {
            trace.end.exitCode = WEXITSTATUS(status);
        } else if (WIFSIGNALED(status) && WTERMSIG(status) != SIGKILL) {
            trace.end.unplanned = "a process was ended by signal " + std::to_string(WTERMSIG(status));
        } else if (WIFSIGNALED(status) && trace.death && trace.death->scope == DeathScope::kMqi) {
            trace.end.came = true;
            trace.end.died = true;
        }
    }
    // The next program must not find the plan of this one.
    if (!countsCalls) std::ofstream(order.faultPlanFile, std::ios::trunc).flush();
    return trace.end;
}
