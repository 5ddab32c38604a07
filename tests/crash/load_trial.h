// SPDX-License-Identifier: Apache-2.0

// Tries one load in a directory of its own: creates its queue and messages, composes its command line, and
// checks what must be there when the load is done.
#pragma once

#include <string>

#include "tests/crash/crash_class.h"
#include "tests/crash/traced_program.h"

struct Programs {
    std::string mqam;
    std::string mqLibrary;
};

/// Creates `folder` with a queue that contains the messages of the class. Returns false, with the reason in
/// errno, if that fails.
[[nodiscard]] bool MakeTrial(const CrashClass& crashClass, const std::string& folder);

/// Returns the load's command.
///   checkpointEvery   in   the number of records between two checkpoints
///   goesOn            in   whether the command itself retries after its worker was killed
[[nodiscard]] ProgramOrder ComposeLoad(const CrashClass& crashClass, const std::string& folder,
                                       const Programs& programs, int checkpointEvery, bool goesOn);

/// Checks the target and the queue of a load that reported that it was done. Returns an empty string if every
/// message is in the target exactly once, in order and byte for byte, and the queue is empty. Otherwise
/// returns what is wrong.
[[nodiscard]] std::string CheckTarget(const CrashClass& crashClass, const std::string& folder);

/// Makes the same checks as CheckTarget, and also checks that no file is missing and no other file is left.
/// Returns an empty string, or what is wrong.
[[nodiscard]] std::string CheckLoaded(const CrashClass& crashClass, const std::string& folder);
