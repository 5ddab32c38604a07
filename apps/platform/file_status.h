// SPDX-License-Identifier: Apache-2.0

// Lists the results of operations on files and directories.
#pragma once

#include <string>

namespace platform {

enum class FileStatus {
    kOk,
    kNotFound,  ///< the file, or a directory on the way to it, does not exist
    kExists,    ///< something has that name already
    kBusy,      ///< another process, or another handle of this one, holds it
    kFailed,    ///< anything else
};

/// Returns the system's error for the calling thread's last FileStatus other than kOk, or its last LockResult
/// of kDenied, kNotFound or kFailed. No other result changes it.
[[nodiscard]] const std::string& LastFileError();

}  // namespace platform
