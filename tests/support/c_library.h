// SPDX-License-Identifier: Apache-2.0

// Sets the error indicators of streams, closes the streams of a process that died, and ends a test program.
// Each C library needs its own code for this.
#pragma once

#include <cstdio>

/// Makes ferror true for the stream, as a failed transfer does.
void SetStreamError(std::FILE* stream);

/// Closes the stream as the death of its process does: what it buffers never reaches the file.
void AbandonStream(std::FILE* stream);

/// Closes streams that the module left open by design, where the system refuses to delete an open file. Does
/// nothing on other systems.
void CloseForgottenStreams();

/// Ends a test program whose tests are over. On Windows it does so without the exit routines, in which a
/// process sometimes hangs under Wine.
[[noreturn]] void EndTestProgram(int exitCode);
