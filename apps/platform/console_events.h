// SPDX-License-Identifier: Apache-2.0

// Declares the handlers of console events, for the Windows source of interrupts.h and for its test. The test
// calls them directly, because no call makes the system send the events that end a session.
#pragma once

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace platform {

/// This is the handler of WatchInterrupts, which the system calls on a thread of its own. Returns TRUE if
/// `event` is an interrupt. If the event ends the session, it returns only when the system is about to end
/// the process.
BOOL WINAPI CountConsoleEvent(DWORD event);

/// This is the handler of ForwardInterrupts, with the same results.
BOOL WINAPI NoteConsoleEvent(DWORD event);

}  // namespace platform
