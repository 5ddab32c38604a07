// SPDX-License-Identifier: Apache-2.0
#include "mqam/base/answer.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"

namespace mqam {

int PrintAnswer(const std::string& command, const std::string& text) {
    // A failure of fwrite leaves the stream in error, and FinishAnswer reports it.
    (void)std::fwrite(text.data(), 1, text.size(), stdout);
    return FinishAnswer(command);
}

int FinishAnswer(const std::string& command) {
    const bool hasFailed = std::ferror(stdout) != 0;
    const int earlierError = errno;
    if (std::fflush(stdout) == 0 && !hasFailed) return kExitDone;
    const int code = hasFailed ? earlierError : errno;
    PrintMessage(command + ": standard output cannot be written" +
                 (code == 0 ? std::string() : std::string(": ") + std::strerror(code)) +
                 "; make room or choose another file, then run the command again\n");
    return kExitTargetFailed;
}

}  // namespace mqam
