// SPDX-License-Identifier: Apache-2.0
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/terminal.h"

namespace platform {

bool IsStandardErrorTerminal() {
    return IsTerminal(STDERR_FILENO);
}

bool IsTerminal(int descriptor) {
    return isatty(descriptor) == 1;
}

int TerminalColumns(int descriptor) {
    winsize size{};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

int StandardErrorColumns() {
    return TerminalColumns(STDERR_FILENO);
}

}  // namespace platform
