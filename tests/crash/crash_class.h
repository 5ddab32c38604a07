// SPDX-License-Identifier: Apache-2.0

// Defines the classes of crash points as data: which load is killed, how, and at which of its calls.
#pragma once

#include <string>
#include <vector>

#include "tests/crash/death.h"
#include "tests/crash/power_cut.h"
#include "tests/crash/traced_program.h"

enum class TargetKind { kFile, kSqlite };

struct CrashClass {
    const char* name;
    const char* what;  ///< a description for people
    TargetKind target;
    bool hasLog;
    int messages;
    int checkpointEvery;
    Victim victim;
    const char* prelude;  ///< a point at which the load is killed before the points of the class; or ""
    int preludeCheckpointEvery;
    std::vector<const char*> series;  ///< points without their last number, which is counted up to the end
    int smokePoints;                  ///< points of each series in the short run
    int fileKibibytesMax = 0;         ///< limit on the size of a file in the killed load; 0 = none
    const char* touches = "";         ///< part of a file's name; some points must be at calls on that file
    bool isPlainest = false;          ///< the command names no other file than the target
    PowerCut cut = PowerCut::kNone;   ///< with each kill, the power fails
};

[[nodiscard]] const std::vector<CrashClass>& CrashClasses();
[[nodiscard]] const CrashClass* FindCrashClass(const std::string& name);
