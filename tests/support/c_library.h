// SPDX-License-Identifier: Apache-2.0

// What the tests do to the C library: errors of streams, streams of a process that died, the end of a test program.
#pragma once

#include <cstdio>

/// Makes ferror true for the stream, as a failed transfer does.
void SetStreamError(std::FILE* stream);

/// Closes the stream as the death of its process does: what it buffers never reaches the file.
void AbandonStream(std::FILE* stream);

/// Closes streams that the module left open by design, so that the files can be deleted where the system refuses to
/// delete an open file. Does nothing elsewhere.
void CloseForgottenStreams();

/// Ends a test program whose tests are over. On Windows without the exit routines: under Wine a process now and then
/// hangs in them.
[[noreturn]] void EndTestProgram(int exitCode);
