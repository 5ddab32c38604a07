// SPDX-License-Identifier: Apache-2.0

// Handles interrupts. On POSIX these are SIGINT (Ctrl-C), SIGTERM, and SIGHUP unless the process was started
// with SIGHUP ignored. On Windows they are Ctrl-C, Ctrl-Break, the closing of the console, the log-off and
// the shutdown. A process either watches for interrupts itself (WatchInterrupts) or leaves them to a child
// process (ForwardInterrupts). Both also ignore SIGPIPE, so that a write fails when its reader has gone.
//
// At the closing of the console, a log-off or a shutdown, Windows ends the process as soon as the handler
// returns. The handler therefore waits for the process to end by itself, but not longer than the system
// would.
#pragma once

#include "platform/process.h"

namespace platform {

struct InterruptResponse {
    const char* firstText = "";   ///< printed to standard error at the first interrupt; a string literal
    const char* secondText = "";  ///< printed to standard error at the second; a string literal
    int secondExitCode = 1;       ///< the second ends the process immediately with this code
};

/// From now on the first interrupt prints a text and makes InterruptRequested true. The second one prints
/// another text and ends the process without any exit routine. Signals within 0.1 s of the first one count as
/// the same interrupt. SIGHUP and the events that end a Windows session never count as the second one,
/// because the system may send them several times.
void WatchInterrupts(const InterruptResponse& response);

/// Returns whether an interrupt has arrived since WatchInterrupts was called.
[[nodiscard]] bool InterruptRequested();

/// From now on an interrupt is for the child process that was started with `receivesInterrupts`. It is
/// forwarded to a child that does not see it by itself, and to one that is started later.
void ForwardInterrupts();

/// Returns whether an interrupt has arrived since ForwardInterrupts was called.
[[nodiscard]] bool InterruptForwarded();

/// Prepares this process for SendInterrupt; must be called before the receiver is started. On Windows, where
/// an interrupt reaches every process of a console, it gives this process a console of its own, which the
/// receiver shares, and makes this process ignore interrupts. Returns false if that fails.
[[nodiscard]] bool PrepareToSendInterrupts();

/// Sends the interrupt that Ctrl-C sends. Returns false if it cannot be sent.
[[nodiscard]] bool SendInterrupt(ProcessHandle process);

}  // namespace platform
