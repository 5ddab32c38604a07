// SPDX-License-Identifier: Apache-2.0

// Lists the file calls that a restarted load makes, with every way in which each of them can fail. Of the
// calls on the trace and of the flushes of all streams, it lists a sample.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/failures/failing_load.h"

inline constexpr char kTraceFile[] = "trace.txt";
inline constexpr char kTemporaryFile[] = "MQAMtmp.";

struct FileFailureCase {
    std::string name;  ///< part of the test's name: "fflush_3_of_attempt_2_ENOSPC_once_TLF_yes"
    bool tlf = true;
    int attempt = 1;  ///< the attempt in which the fault strikes first
    Fault fault{};    ///< its `nth` counts from the beginning of that attempt
};

inline void PrintTo(const FileFailureCase& failure, std::ostream* stream) {
    *stream << failure.name;
}

/// Returns the load of all cases, which keeps a log and a trace.
LoadPlan FileFailurePlan(bool tlf);
/// Returns a commit that fails and breaks the connection, so that the next attempt begins with a replay.
MqiFault LostCommit();

/// Returns the cases for the files whose name contains the text.
std::vector<FileFailureCase> FileFailureCases(const std::string& file);
