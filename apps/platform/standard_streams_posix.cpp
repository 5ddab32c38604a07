// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "platform/standard_streams.h"

namespace platform {

void ReopenClosedStdStreams() {
    int descriptor = -1;
    do {
        descriptor = open("/dev/null", O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) close(descriptor);
}

void SetBinaryStreams() {}

int RedirectStdout(ModuleOutput output) {
    std::fflush(stdout);
    const int original = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (original < 0) return -1;
    if (output == ModuleOutput::kToStandardError) {
        return dup2(STDERR_FILENO, STDOUT_FILENO) < 0 ? -1 : original;
    }
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0 || dup2(nowhere, STDOUT_FILENO) < 0) return -1;
    close(nowhere);
    return original;
}

int RedirectStdoutToFile(const std::string& path) {
    std::fflush(stdout);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    if (file < 0) {
        return -1;
    }
    const int original = dup(STDOUT_FILENO);
    dup2(file, STDOUT_FILENO);
    close(file);
    return original;
}

void RestoreStdout(int original) {
    std::fflush(stdout);
    dup2(original, STDOUT_FILENO);
    close(original);
}

}  // namespace platform
