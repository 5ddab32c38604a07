// SPDX-License-Identifier: Apache-2.0
#include <windows.h>

#include <io.h>

#include <cstdio>

#include "platform/terminal.h"

namespace platform {

bool IsStandardErrorTerminal() {
    return IsTerminal(_fileno(stderr));
}

bool IsTerminal(int descriptor) {
    // _isatty is true for every character device, the null device included.
    DWORD mode = 0;
    return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &mode) != 0;
}

int TerminalColumns(int descriptor) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const auto console = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    if (GetConsoleScreenBufferInfo(console, &info) == 0) return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

int StandardErrorColumns() {
    return TerminalColumns(_fileno(stderr));
}

}  // namespace platform
