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

}  // namespace platform
