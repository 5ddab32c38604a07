// SPDX-License-Identifier: Apache-2.0

// Every file call of a restarted load, taken from a load without failures, and every way in which each can
// fail.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/failures/failing_load.h"

inline constexpr char kTraceFile[] = "trace.txt";
inline constexpr char kTemporaryFile[] = "MQAMtmp.";

struct FileFailureCase {
    std::string name;  ///< of the test, as "flush_ckpt_life2_3_ENOSPC_for_ever"
    bool tlf = true;
    int life = 1;   ///< the attempt in which the fault strikes first
    Fault fault{};  ///< its nth counts from the beginning of that attempt
};

inline void PrintTo(const FileFailureCase& failure, std::ostream* stream) {
    *stream << failure.name;
}

/// The load of all cases, with the log and the trace.
LoadPlan FileFailurePlan(bool tlf);
/// The fault that makes an attempt of that load end so that the next one begins with a replay.
MqiFault LostCommit();

/// Returns the cases for the files whose name contains the text.
std::vector<FileFailureCase> FileFailureCases(const std::string& file);
