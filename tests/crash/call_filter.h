// The system calls that change what is on disk: the filter that stops a traced process at them, and which
// file each concerns. Every other call must be known to change nothing: the filter stops at one that is not,
// too. Of those that change nothing there are some that look at a file, at which it stops on request.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

/// Lets the kernel stop this process, its threads and every process it starts at the calls that change state,
/// and at those that nobody has looked at, for a tracer. Called in the traced process itself, before exec.
///   alsoLooks   in   also at the calls that read a file, look at it, lock or close it
/// Returns false with errno.
[[nodiscard]] bool StopAtStateCalls(bool alsoLooks);

struct StateCall {
    std::string name;     ///< of a call that is not known: its number
    bool isKnown = true;  ///< to stop where it changes a file; a mapped file changes where nobody can stop
    bool looks = false;   ///< changes nothing
    bool failsWhenDone = false;  ///< fails only behind what it does
    std::string path;  ///< absolute: of the file written, the name made, removed or moved, or looked at
    std::uint64_t length = 0;  ///< bytes to be written; 0 when the call writes none
};

/// Describes the call at whose entry the traced thread stands. Returns false when it cannot be read.
[[nodiscard]] bool ReadStateCall(pid_t thread, StateCall& call);

/// Makes the thread, at the entry of a write, write fewer bytes. Returns false when that cannot be done.
[[nodiscard]] bool CutWrite(pid_t thread, std::uint64_t length);

/// Makes the call at whose entry the thread stands fail with `error`, undone. Returns false when that cannot
/// be done.
[[nodiscard]] bool FailCall(pid_t thread, int error);

/// Makes the call at whose end the thread stands return `error`. Returns false when that cannot be done.
[[nodiscard]] bool FailDoneCall(pid_t thread, int error);
