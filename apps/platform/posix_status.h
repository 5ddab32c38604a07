// SPDX-License-Identifier: Apache-2.0

// Turns errno into results; only the POSIX sources of this directory use it.
#pragma once

#include "platform/file_status.h"

namespace platform {

/// Records the text of errno for LastFileError and returns what it means. errno is unchanged.
FileStatus StatusOfErrno();

/// Returns kOk for 0, otherwise StatusOfErrno.
inline FileStatus StatusOf(int result) {
    return result == 0 ? FileStatus::kOk : StatusOfErrno();
}

/// Records an error that errno cannot express.
void SetLastFileError(const char* text);

/// Calls open() so that child processes do not inherit the descriptor, and repeats it when a signal
/// interrupts it.
int OpenRetrying(const char* path, int flags, unsigned mode = 0);

}  // namespace platform
