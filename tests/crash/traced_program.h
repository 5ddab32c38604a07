// SPDX-License-Identifier: Apache-2.0

// Runs a program under a tracer, which counts the system calls that change files, in all processes and
// threads of the program, and kills at one of them.
#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/crash/death.h"
#include "tests/crash/power_cut.h"

/// Says which processes the planned kill ends.
enum class Victim {
    kCommand,  ///< all processes of the program
    kWorker,   ///< the process that makes the call; the command continues
};

struct ProgramOrder {
    std::vector<std::string> arguments;  ///< the program first, by its path
    std::map<std::string, std::string> environment;
    std::string console;           ///< file for both standard output and standard error, appended
    std::string ownFolder;         ///< calls on files in it are the load's own, except in storeFolder
    std::string storeFolder;       ///< the directory of the queue manager's files
    std::string faultPlanFile;     ///< where the stand-in looks for its fault plan in each process
    SyncedTree* synced = nullptr;  ///< notes every sync of the load's own files; may be null
    int fileKibibytesMax = 0;      ///< a write that would make a file longer fails; 0 = no limit
};

/// The numbers of calls up to the end or the kill. A Death of the scope can have each number up to these.
struct CallCounts {
    std::uint64_t calls[3] = {};   ///< by DeathScope: own, store, look
    std::uint64_t writes[3] = {};  ///< the writes among them that can be cut short
};

struct TracedEnd {
    bool came = false;         ///< the planned kill or failure happened
    bool died = false;         ///< that event was a kill
    bool commandDied = false;  ///< the kill ended the command
    std::string where;         ///< the call at which that event happened
    int exitCode = -1;         ///< of the command; -1 if it was killed
    std::string unplanned;     ///< a process that crashed by itself, or a call that cannot be judged; or ""
    CallCounts counts;
};

/// Runs the program without a tracer. Returns its exit code, or -1 if it did not end by itself.
[[nodiscard]] int RunProgramToEnd(const ProgramOrder& order);

/// Runs the program to the planned kill, or to its end in order to count. An error of the tracing itself ends
/// this process with a message.
[[nodiscard]] TracedEnd RunProgramToDeath(const ProgramOrder& order, const std::optional<Death>& death,
                                          Victim victim);
