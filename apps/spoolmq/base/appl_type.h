// SPDX-License-Identifier: Apache-2.0

// Says what kind of program puts messages on this system.
#pragma once

#include "platform/system.h"

namespace spoolmq {

/// The PutApplType of messages that are put on this system: MQAT_WINDOWS_NT or MQAT_UNIX.
inline constexpr char kPlatformApplType = platform::kIsWindows ? 11 : 6;

}  // namespace spoolmq
