// SPDX-License-Identifier: Apache-2.0

// Acquires the locks that show that a process is alive: one for each unit of work, and one for each open of a
// queue for input.
#pragma once

#include <string>

#include "platform/lock.h"
#include "spoolmq/base/status.h"

namespace spoolmq {

/// Creates the lock file if it is missing and holds it until platform::ReleaseLock or the end of the process.
/// Returns kBusy if the lock is held already. `lock` is platform::kNoLock unless the result is kOk.
[[nodiscard]] FileStatus AcquireProcessLock(const std::string& path, platform::LockHandle& lock);

}  // namespace spoolmq
