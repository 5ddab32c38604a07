// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include "platform/terminal.h"

namespace platform {

bool IsStandardErrorTerminal() {
    return IsTerminal(STDERR_FILENO);
}

bool IsTerminal(int descriptor) {
    return isatty(descriptor) == 1;
}

}  // namespace platform
