// SPDX-License-Identifier: Apache-2.0
#include "platform/interrupts.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "platform/process_interrupts.h"

namespace platform {

namespace {

InterruptResponse interruptResponse;

// A service manager and `timeout` send a signal to all processes of a command, and a parent forwards the one
// that it receives, so one interrupt may arrive several times within a moment.
constexpr long long kMomentNanoseconds = 100000000;
std::atomic<long long> firstInterruptAt{0};  // 0 if no interrupt has arrived

std::atomic<pid_t> interruptReceiver{0};
std::atomic<bool> interruptForwarded{false};

long long MonotonicNanoseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

extern "C" void CountInterrupt(int signalNumber) {
    const int savedErrno = errno;
    const long long now = MonotonicNanoseconds();
    long long first = 0;
    const bool isFirst = firstInterruptAt.compare_exchange_strong(first, now);
    // When a terminal closes, SIGHUP arrives more than once, from the shell and from the system.
    if (!isFirst && (signalNumber == SIGHUP || now - first < kMomentNanoseconds)) {
        errno = savedErrno;
        return;
    }
    const char* text = isFirst ? interruptResponse.firstText : interruptResponse.secondText;
    const ssize_t written = write(STDERR_FILENO, text, std::strlen(text));
    static_cast<void>(written);
    if (!isFirst) _exit(interruptResponse.secondExitCode);
    errno = savedErrno;
}

// Forwards a signal that a process has sent. A terminal sends Ctrl-C to the child as well, but a signal from
// a process reaches only this process.
extern "C" void ForwardInterrupt(int signalNumber, siginfo_t* information, void* /*context*/) {
    const int savedErrno = errno;
    interruptForwarded = true;
    const pid_t process = interruptReceiver.load();
    if (process > 0 && information->si_code <= 0) kill(process, signalNumber);
    errno = savedErrno;
}

void Handle(const struct sigaction& action) {
    for (const int interrupt : InterruptSignals())
        sigaction(interrupt, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace

std::vector<int> InterruptSignals() {
    std::vector<int> signals = {SIGINT, SIGTERM};
    struct sigaction hangup = {};
    sigaction(SIGHUP, nullptr, &hangup);
    if (hangup.sa_handler != SIG_IGN) signals.push_back(SIGHUP);
    return signals;
}

void WatchInterrupts(const InterruptResponse& response) {
    interruptResponse = response;
    struct sigaction action = {};
    action.sa_handler = CountInterrupt;
    // An interrupt must not make the module's file calls fail.
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    Handle(action);
}

bool InterruptRequested() {
    return firstInterruptAt.load(std::memory_order_relaxed) != 0;
}

void ForwardInterrupts() {
    struct sigaction action = {};
    action.sa_sigaction = ForwardInterrupt;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    Handle(action);
}

bool InterruptForwarded() {
    return interruptForwarded;
}

bool PrepareToSendInterrupts() {
    return true;
}

bool SendInterrupt(ProcessHandle process) {
    return SignalProcess(process, SIGINT);
}

BlockedInterrupts::BlockedInterrupts() {
    sigset_t interrupts;
    sigemptyset(&interrupts);
    for (const int interrupt : InterruptSignals())
        sigaddset(&interrupts, interrupt);
    sigprocmask(SIG_BLOCK, &interrupts, &before_);
}

void SetInterruptReceiver(pid_t process) {
    interruptReceiver = process;
    if (interruptForwarded) kill(process, SIGTERM);
}

void RemoveInterruptReceiver(pid_t process) {
    pid_t expected = process;
    interruptReceiver.compare_exchange_strong(expected, 0);
}

}  // namespace platform
