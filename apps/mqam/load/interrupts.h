// SPDX-License-Identifier: Apache-2.0

// What a load prints when it is interrupted.
#pragma once

#include "platform/interrupts.h"

namespace mqam {

/// From now on the first interrupt asks the load to finish, and the second one ends the process with
/// `secondExitCode`.
inline void WatchInterrupts(int secondExitCode) {
    platform::WatchInterrupts(
        {"\nmqam: finishing (a read that waits for messages ends first); press again to stop at once\n",
         "\nmqam: stopped at once\n", secondExitCode});
}

}  // namespace mqam
