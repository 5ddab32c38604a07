#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "platform/standard_streams.h"

namespace platform {

namespace {

constexpr int kStandardOutput = 1;
constexpr int kStandardError = 2;

}  // namespace

// The C library never gives the number of a closed standard stream to a file.
void ReopenClosedStdStreams() {}

int RedirectStdout(ModuleOutput output) {
    std::fflush(stdout);
    const int original = _dup(kStandardOutput);
    if (original < 0) return -1;
    _setmode(original, _O_BINARY);
    if (output == ModuleOutput::kToStandardError) {
        return _dup2(kStandardError, kStandardOutput) < 0 ? -1 : original;
    }
    const int nowhere = _open("NUL", _O_WRONLY);
    if (nowhere < 0 || _dup2(nowhere, kStandardOutput) < 0) return -1;
    _close(nowhere);
    return original;
}

}  // namespace platform
