// SPDX-License-Identifier: Apache-2.0

// Locks the files of a load. A lock is a file that one process holds; it ends with the process, however that
// ends.
#pragma once

#include <string>

#include "mqam/base/status.h"

namespace mqam {

/// Acquires the lock of the file `path`, which is created if it is missing. Waits up to `timeoutSeconds` for a process
/// that is just ending. A process may hold several locks. The error is
///   kRefused    another process holds the lock, or the file is not empty: then it is not a lock file, and is left alone
///   kTransient  the file cannot be created or locked
Status AcquireLockFile(const std::string& path, int timeoutSeconds);

/// Releases the lock and deletes its file. Does nothing if this process does not hold it.
void ReleaseLockFile(const std::string& path);

/// Returns the lock file of a checkpoint file.
[[nodiscard]] std::string CheckpointLockPath(const std::string& checkpointFile);

}  // namespace mqam
