// SPDX-License-Identifier: Apache-2.0

// Describes the outcome of an operation of the stand-in, with the error message for a user.
#pragma once

#include <string>

#include "platform/file_status.h"

namespace spoolmq {

/// FileStatus is the result of an operation on one file or directory. Users see a Status instead.
using platform::FileStatus;

enum class StatusCode {
    kOk,
    kUnknownQueueManager,
    kUnknownQueue,
    kAlreadyExists,
    kInUse,         ///< someone has the queue open for input, is connected, or has messages in a unit of work
    kQueueDeleted,  ///< the directory of an open queue is gone
    kNoMessage,
    kMessageGone,  ///< another reader was faster; look for a message again
    kFailed,       ///< the file system refused an operation, or a file or a value is not valid
};

struct [[nodiscard]] Status {
    StatusCode code = StatusCode::kOk;
    std::string error;  ///< what failed, why, and what to do if that is known; empty for kOk

    [[nodiscard]] bool IsOk() const { return code == StatusCode::kOk; }
};

/// Returns kFailed, with the path and the reason of the calling thread's last failed operating-system call.
Status FileError(const std::string& path);

}  // namespace spoolmq
