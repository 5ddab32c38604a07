// SPDX-License-Identifier: Apache-2.0

// Keeps locks that show that a process lives: of a unit of work, and of a queue that is open for input.
#pragma once

#include <string>

#include "platform/lock.h"
#include "spoolmq/base/status.h"

namespace spoolmq {

/// Creates the lock file if it is missing and holds it until platform::ReleaseLock or the end of the process. kBusy if
/// it is held. `lock` is platform::kNoLock unless the result is kOk.
[[nodiscard]] FileStatus AcquireProcessLock(const std::string& path, platform::LockHandle& lock);

}  // namespace spoolmq
