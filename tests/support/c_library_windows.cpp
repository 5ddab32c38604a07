// SPDX-License-Identifier: Apache-2.0
#include "tests/support/c_library.h"

#include <fcntl.h>
#include <io.h>

#include "platform/process.h"

void SetStreamError(std::FILE* stream) {
    stream->_flag |= _IOERR;
}

void AbandonStream(std::FILE* stream) {
    const int nowhere = _open("NUL", _O_RDWR | _O_BINARY);
    _dup2(nowhere, _fileno(stream));
    _close(nowhere);
    std::fclose(stream);
}

void CloseForgottenStreams() {
    _fcloseall();
}

void EndTestProgram(int exitCode) {
    static_cast<void>(std::fflush(nullptr));
    platform::ExitImmediately(exitCode);
}
