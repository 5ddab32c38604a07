// SPDX-License-Identifier: Apache-2.0
#include "tests/support/c_library.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

void SetStreamError(std::FILE* stream) {
    constexpr int kErrorSeen = 0x20;  // glibc's _IO_ERR_SEEN
    stream->_flags |= kErrorSeen;
}

void AbandonStream(std::FILE* stream) {
    // A stream without a descriptor belongs to the test, which itself makes sure that nothing is written.
    if (fileno(stream) >= 0) {
        const int nowhere = open("/dev/null", O_RDWR);
        dup2(nowhere, fileno(stream));
        close(nowhere);
    }
    std::fclose(stream);
}

void CloseForgottenStreams() {}

void EndTestProgram(int exitCode) {
    std::exit(exitCode);
}
