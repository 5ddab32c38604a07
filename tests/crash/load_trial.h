// One load on trial, in a folder of its own: its queue and messages, its command line, and what must be there
// when it is done.
#pragma once

#include <string>

#include "tests/crash/crash_class.h"
#include "tests/crash/traced_program.h"

struct Programs {
    std::string mqam;
    std::string mqLibrary;
};

/// Makes `folder` with a queue that holds the class's messages. Returns false with errno.
[[nodiscard]] bool MakeTrial(const CrashClass& crashClass, const std::string& folder);

/// The load's command.
///   checkpointEvery   in   records
///   goesOn            in   starts again by itself after a worker's death
[[nodiscard]] ProgramOrder ComposeLoad(const CrashClass& crashClass, const std::string& folder,
                                       const Programs& programs, int checkpointEvery, bool goesOn);

/// Looks at the target of a load that said it is done, and at its queue. Returns an empty string when every
/// message is in the target once, in order, byte for byte, and the queue is empty; or else what is wrong.
[[nodiscard]] std::string CheckTarget(const CrashClass& crashClass, const std::string& folder);

/// Looks at what a load that said it is done left. Returns an empty string when every message is in the
/// target once, in order, byte for byte, the queue is empty and nothing else is left; or else what is wrong.
[[nodiscard]] std::string CheckLoaded(const CrashClass& crashClass, const std::string& folder);
