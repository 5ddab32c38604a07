// SPDX-License-Identifier: Apache-2.0

// Declares the handlers of console events, only for the Windows source of interrupts.h and its test: a test
// has no call with which the system would send the events that end a session.
#pragma once

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace platform {

/// The handler of WatchInterrupts. The system calls handlers on a thread of its own. Returns FALSE if `event` is not an
/// interrupt; does not return before the process ends, or the system would end it, if it ends the session.
BOOL WINAPI CountConsoleEvent(DWORD event);

/// This is the handler of ForwardInterrupts, with the same results.
BOOL WINAPI NoteConsoleEvent(DWORD event);

}  // namespace platform
