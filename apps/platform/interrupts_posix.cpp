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

std::atomic<int> watchedInterrupts{0};
InterruptResponse interruptResponse;

// A service manager and `timeout` send a signal to every process they know, and a command forwards its own, so
// that one interrupt arrives several times within a moment.
constexpr long long kMomentNanoseconds = 100000000;
std::atomic<long long> firstInterruptAt{0};

std::atomic<pid_t> interruptReceiver{0};
std::atomic<bool> interruptForwarded{false};

long long MonotonicNanoseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

extern "C" void CountInterrupt(int /*signalNumber*/) {
    const int savedErrno = errno;
    const long long now = MonotonicNanoseconds();
    const bool first = watchedInterrupts.fetch_add(1) == 0;
    if (first) firstInterruptAt = now;
    if (!first && now - firstInterruptAt < kMomentNanoseconds) {
        errno = savedErrno;
        return;
    }
    const char* text = first ? interruptResponse.firstText : interruptResponse.secondText;
    const ssize_t written = write(STDERR_FILENO, text, std::strlen(text));
    static_cast<void>(written);
    if (!first) _exit(interruptResponse.secondExitCode);
    errno = savedErrno;
}

// A terminal sends Ctrl-C to the child as well; a signal that someone sent to this process does not reach it.
extern "C" void ForwardInterrupt(int signalNumber, siginfo_t* information, void* /*context*/) {
    const int savedErrno = errno;
    interruptForwarded = true;
    const pid_t process = interruptReceiver.load();
    if (process > 0 && information->si_code <= 0) kill(process, signalNumber);
    errno = savedErrno;
}

}  // namespace

void WatchInterrupts(const InterruptResponse& response) {
    interruptResponse = response;
    struct sigaction action = {};
    action.sa_handler = CountInterrupt;
    // An interrupt must not make the module's file calls fail.
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
}

bool InterruptRequested() {
    return watchedInterrupts.load(std::memory_order_relaxed) > 0;
}

void ForwardInterrupts() {
    struct sigaction action = {};
    action.sa_sigaction = ForwardInterrupt;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    action.sa_flags = 0;
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
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
    sigaddset(&interrupts, SIGINT);
    sigaddset(&interrupts, SIGTERM);
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
