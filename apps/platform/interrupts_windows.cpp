// SPDX-License-Identifier: Apache-2.0
#include "platform/interrupts.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <atomic>
#include <cstdio>

namespace platform {

namespace {

std::atomic<int> watchedInterrupts{0};
InterruptResponse interruptResponse;
std::atomic<bool> interruptForwarded{false};

bool IsInterrupt(DWORD event) {
    return event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT || event == CTRL_CLOSE_EVENT;
}

// The system calls handlers on a thread of its own.
BOOL WINAPI CountInterrupt(DWORD event) {
    if (!IsInterrupt(event)) return FALSE;
    const bool first = watchedInterrupts.fetch_add(1) == 0;
    std::fputs(first ? interruptResponse.firstText : interruptResponse.secondText, stderr);
    std::fflush(stderr);
    if (!first) ExitImmediately(interruptResponse.secondExitCode);
    return TRUE;
}

// The child has the same console and sees the interrupt by itself.
BOOL WINAPI NoteInterrupt(DWORD event) {
    if (!IsInterrupt(event)) return FALSE;
    interruptForwarded = true;
    return TRUE;
}

void SetHandler(PHANDLER_ROUTINE handler) {
    // A parent that started this process in a group of its own has switched Ctrl-C off for it.
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(handler, TRUE);
}

}  // namespace

void WatchInterrupts(const InterruptResponse& response) {
    interruptResponse = response;
    SetHandler(CountInterrupt);
}

bool InterruptRequested() {
    return watchedInterrupts.load(std::memory_order_relaxed) > 0;
}

void ForwardInterrupts() {
    SetHandler(NoteInterrupt);
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
