// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/confirmation.h"

#include <cstdio>

#include "mqam/base/progress.h"
#include "platform/terminal.h"

namespace mqam {

bool IsConfirmed(const std::string& command, const std::string& question, bool yes) {
    if (yes) return true;
    constexpr int kStandardInput = 0;
    if (!platform::IsTerminal(kStandardInput)) {
        PrintMessage(command + ": nothing was changed; give --yes to make the changes without being asked\n");
        return false;
    }
    PrintMessage(question + " [y/N] ");
    char answer[16] = {};
    if (std::fgets(answer, sizeof answer, stdin) != nullptr && (answer[0] == 'y' || answer[0] == 'Y'))
        return true;
    PrintMessage(command + ": nothing was changed\n");
    return false;
}

}  // namespace mqam
