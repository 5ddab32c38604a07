// SPDX-License-Identifier: Apache-2.0

// Declares what process.h and interrupts.h share; only the POSIX sources of this directory use it.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <vector>

namespace platform {

/// Returns the signals that are interrupts: SIGINT, SIGTERM, and SIGHUP unless this process was started with
/// SIGHUP ignored, as by nohup.
[[nodiscard]] std::vector<int> InterruptSignals();

/// Blocks the interrupts for as long as the object exists, or until Restore.
class BlockedInterrupts {
  public:
    BlockedInterrupts();
    BlockedInterrupts(const BlockedInterrupts&) = delete;
    BlockedInterrupts& operator=(const BlockedInterrupts&) = delete;
    ~BlockedInterrupts() { Restore(); }
    void Restore() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_ = {};
};

/// Makes `process` the receiver of interrupts. An interrupt that arrived earlier is sent to it now. The
/// interrupts must be blocked during the call.
void SetInterruptReceiver(pid_t process);

/// If `process` is the receiver of interrupts, there is no receiver any more. Must be called once the process
/// has been waited for.
void RemoveInterruptReceiver(pid_t process);

}  // namespace platform
