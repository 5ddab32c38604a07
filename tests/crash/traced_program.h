// Runs a program under a tracer that counts the system calls which change files, over all its processes and
// threads, and kills at one of them.
#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/crash/death.h"

/// Who is killed where the death is planned.
enum class Victim {
    kCommand,  ///< all at once
    kWorker,   ///< the process that makes the call; the command goes on
};

struct ProgramOrder {
    std::vector<std::string> arguments;  ///< the program first, by its path
    std::map<std::string, std::string> environment;
    std::string console;        ///< file for both standard output and standard error, appended
    std::string ownFolder;      ///< calls on files in here are the load's own, but for those in:
    std::string storeFolder;    ///< the queue manager's files
    std::string faultPlanFile;  ///< where the stand-in looks for its fault plan in each process
    int fileKibibytesMax = 0;   ///< a write that would make a file longer fails; 0: none does
};

/// How many calls there were up to the end or the death: the numbers that a Death of the scope can have.
struct CallCounts {
    std::uint64_t calls[3] = {};   ///< by DeathScope: own, store, look
    std::uint64_t writes[3] = {};  ///< those of them that can be cut short
};

struct TracedEnd {
    bool came = false;         ///< the planned death, or failure of a call, came
    bool died = false;         ///< it was a death
    bool commandDied = false;  ///< it took the command
    std::string where;         ///< the call it came at
    int exitCode = -1;         ///< of the command; -1 when it was killed
    std::string unplanned;     ///< a process that crashed by itself, or a call that cannot be judged; or ""
    CallCounts counts;
};

/// Runs without a tracer. Returns the exit code, or -1 when the program did not end by itself.
[[nodiscard]] int RunProgramToEnd(const ProgramOrder& order);

/// Runs with the planned death, or to the end to count. A problem with tracing itself ends this process with
/// a complaint.
[[nodiscard]] TracedEnd RunProgramToDeath(const ProgramOrder& order, const std::optional<Death>& death,
                                          Victim victim);
