// SPDX-License-Identifier: Apache-2.0

// The kind of program that puts messages on this system.
#pragma once

#include "platform/system.h"

namespace spoolmq {

/// PutApplType: MQAT_WINDOWS_NT or MQAT_UNIX.
inline constexpr char kPlatformApplType = platform::kIsWindows ? 11 : 6;

}  // namespace spoolmq
