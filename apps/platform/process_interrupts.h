// SPDX-License-Identifier: Apache-2.0

// What process.h and interrupts.h share; of the POSIX sources of this directory only.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <vector>

namespace platform {

/// Returns the signals that are interrupts: SIGINT, SIGTERM, and SIGHUP unless this process was started with SIGHUP
/// ignored, as by nohup.
[[nodiscard]] std::vector<int> InterruptSignals();

/// Blocks the interrupts for the life of the object.
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

/// Makes `process` the receiver of interrupts. An interrupt that arrived earlier is sent to it now. To be called
/// with the interrupts blocked.
void SetInterruptReceiver(pid_t process);

/// Ends that, if `process` is the receiver. To be called once the process has been waited for.
void RemoveInterruptReceiver(pid_t process);

}  // namespace platform
