// SPDX-License-Identifier: Apache-2.0
#include <io.h>

#include <cstdio>

#include "platform/terminal.h"

namespace platform {

bool IsStandardErrorTerminal() {
    return IsTerminal(_fileno(stderr));
}

bool IsTerminal(int descriptor) {
    return _isatty(descriptor) != 0;
}

}  // namespace platform
