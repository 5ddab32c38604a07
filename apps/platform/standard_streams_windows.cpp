// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <cstdio>

#include "platform/standard_streams.h"

namespace platform {

namespace {

constexpr int kStandardOutput = 1;
constexpr int kStandardError = 2;

}  // namespace

// The C library never gives the number of a closed standard stream to a file.
void ReopenClosedStdStreams() {}

void SetBinaryStreams() {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
}

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

int RedirectStdoutToFile(const std::string& path) {
    std::fflush(stdout);
    const int file =
        _open(path.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_APPEND | _O_BINARY, _S_IREAD | _S_IWRITE);
    if (file < 0) {
        return -1;
    }
    const int original = _dup(kStandardOutput);
    _dup2(file, kStandardOutput);
    _close(file);
    return original;
}

void RestoreStdout(int original) {
    std::fflush(stdout);
    _dup2(original, kStandardOutput);
    _close(original);
}

}  // namespace platform
