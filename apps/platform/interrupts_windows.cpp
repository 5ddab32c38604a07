// SPDX-License-Identifier: Apache-2.0
#include "platform/interrupts.h"

#include <atomic>
#include <cstdio>

#include "platform/console_events.h"

namespace platform {

namespace {

std::atomic<int> watchedInterrupts{0};
InterruptResponse interruptResponse;
std::atomic<bool> interruptForwarded{false};

// The system ends a process 5 s after its console was closed, and later after the other events.
constexpr DWORD kEndOfProcessMs = 4800;

enum class EventKind { kNone, kKeys, kEndOfSession };

EventKind KindOf(DWORD event) {
    switch (event) {
        case CTRL_C_EVENT:
        case CTRL_BREAK_EVENT: return EventKind::kKeys;
        case CTRL_CLOSE_EVENT:
        case CTRL_LOGOFF_EVENT:
        case CTRL_SHUTDOWN_EVENT: return EventKind::kEndOfSession;
        default: return EventKind::kNone;
    }
}

void Print(const char* text) {
    std::fputs(text, stderr);
    std::fflush(stderr);
}

// Gives the process time to end by itself. The system ends it when the handler returns.
BOOL AwaitEndOfProcess() {
    Sleep(kEndOfProcessMs);
    return TRUE;
}

}  // namespace

BOOL WINAPI CountConsoleEvent(DWORD event) {
    const EventKind kind = KindOf(event);
    if (kind == EventKind::kNone) return FALSE;
    int none = 0;
    const bool first = watchedInterrupts.compare_exchange_strong(none, 1);
    if (first) Print(interruptResponse.firstText);
    if (kind == EventKind::kEndOfSession) return AwaitEndOfProcess();
    if (first) return TRUE;
    Print(interruptResponse.secondText);
    ExitImmediately(interruptResponse.secondExitCode);
}

// Forwards nothing, because the child has the same console and receives the event itself.
BOOL WINAPI NoteConsoleEvent(DWORD event) {
    const EventKind kind = KindOf(event);
    if (kind == EventKind::kNone) return FALSE;
    interruptForwarded = true;
    return kind == EventKind::kEndOfSession ? AwaitEndOfProcess() : TRUE;
}

namespace {

void SetHandler(PHANDLER_ROUTINE handler) {
    // This switches Ctrl-C on. A parent that started this process in a group of its own has switched it off.
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(handler, TRUE);
}

}  // namespace

void WatchInterrupts(const InterruptResponse& response) {
    interruptResponse = response;
    SetHandler(CountConsoleEvent);
}

bool InterruptRequested() {
    return watchedInterrupts.load(std::memory_order_relaxed) > 0;
}

void ForwardInterrupts() {
    SetHandler(NoteConsoleEvent);
}

bool InterruptForwarded() {
    return interruptForwarded;
}

bool PrepareToSendInterrupts() {
    FreeConsole();
    return AllocConsole() != 0 && SetConsoleCtrlHandler([](DWORD) { return TRUE; }, TRUE) != 0;
}

bool SendInterrupt(ProcessHandle /*process*/) {
    return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0;
}

}  // namespace platform
