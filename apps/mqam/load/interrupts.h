// SPDX-License-Identifier: Apache-2.0

// Watches for interrupts, with the messages that a load prints when one arrives.
#pragma once

#include "platform/interrupts.h"

namespace mqam {

/// From now on the first interrupt asks the load to finish, and the second one ends the process with
/// `secondExitCode`.
inline void WatchInterrupts(int secondExitCode) {
    platform::WatchInterrupts({"\nmqam: finishing; press again to stop immediately\n",
                               "\nmqam: stopped immediately\n", secondExitCode});
}

}  // namespace mqam
