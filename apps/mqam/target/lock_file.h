// SPDX-License-Identifier: Apache-2.0

// Locks the files of a load. A lock is a file that one process holds and that says which process that is. It ends with
// the process, however that ends; the file of a process that was killed stays and keeps no one out.
#pragma once

#include <string>

#include "mqam/base/status.h"

namespace mqam {

/// Acquires the lock of the file `path`, which is created if it is missing. Waits up to `timeoutSeconds` for a process
/// that is just ending. A process may hold several locks. The error is
///   kRefused    another process holds the lock; the error names the process, its host and when it started. Or the file is
///               not a lock file: it is left alone
///   kTransient  the file cannot be created or locked
Status AcquireLockFile(const std::string& path, int timeoutSeconds);

/// Releases the lock and deletes its file. Does nothing if this process does not hold it.
void ReleaseLockFile(const std::string& path);

/// Returns the lock file of the directory of a checkpoint file: the module makes temporary files there whose names do not
/// say which load they belong to.
[[nodiscard]] std::string CheckpointLockPath(const std::string& checkpointFile);

}  // namespace mqam
