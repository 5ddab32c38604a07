// SPDX-License-Identifier: Apache-2.0

// Finds the system calls that change what is on disk: the filter stops a traced process at these calls, and
// the other routines say which file each of them concerns. The filter also stops at calls that it does not
// know, so every other call is known to change nothing. On request it also stops at calls that only look at
// a file.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

/// Makes the kernel stop this process, its threads and every process it starts, for a tracer, at the calls
/// that change state and at those that are not known. The traced process itself must call it, before exec.
///   alsoLooks   in   also stop at the calls that read, examine, lock or close a file
/// Returns false, with the reason in errno, if the kernel refuses.
[[nodiscard]] bool StopAtStateCalls(bool alsoLooks);

struct StateCall {
    std::string name;            ///< the number instead of the name if the call is not known
    bool isKnown = true;         ///< false also if it lets a file change later, as a mapping does
    bool looks = false;          ///< the call changes nothing
    bool failsWhenDone = false;  ///< the call fails only after it has taken effect
    std::string path;            ///< absolute path of what is written, created, removed, moved or looked at
    std::uint64_t length = 0;    ///< bytes to be written; 0 when the call writes none
};

/// Describes the call that the traced thread is about to make. Returns false if it cannot be read.
[[nodiscard]] bool ReadStateCall(pid_t thread, StateCall& call);

/// Reduces the number of bytes that a thread is about to write. Returns false if that is impossible.
[[nodiscard]] bool CutWrite(pid_t thread, std::uint64_t length);

/// Makes the call that the thread is about to make fail with `error` without taking effect. Returns false if
/// that is impossible.
[[nodiscard]] bool FailCall(pid_t thread, int error);

/// Makes the call that the thread has just made return `error`. Returns false if that is impossible.
[[nodiscard]] bool FailDoneCall(pid_t thread, int error);
