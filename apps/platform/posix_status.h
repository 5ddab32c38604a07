// SPDX-License-Identifier: Apache-2.0

// Results from errno; for the POSIX sources of this directory only.
#pragma once

#include "platform/file_status.h"

namespace platform {

/// Records the text of errno for LastFileError and returns what it means. errno is unchanged.
FileStatus StatusOfErrno();

/// kOk for 0, else StatusOfErrno.
inline FileStatus StatusOf(int result) {
    return result == 0 ? FileStatus::kOk : StatusOfErrno();
}

/// Records an error that errno cannot express.
void SetLastFileError(const char* text);

/// open(), closed in child processes and repeated when a signal interrupts it.
int OpenRetrying(const char* path, int flags, unsigned mode = 0);

}  // namespace platform
