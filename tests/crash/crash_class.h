// The classes of crash points as data: which load, killed how, at which of its calls.
#pragma once

#include <string>
#include <vector>

#include "tests/crash/death.h"
#include "tests/crash/traced_program.h"

enum class TargetKind { kFile, kSqlite };

struct CrashClass {
    const char* name;
    const char* what;  ///< for people
    TargetKind target;
    bool hasLog;
    int messages;
    int checkpointEvery;
    Victim victim;
    const char* prelude;  ///< a point; the load dies there before the points of the class begin; or ""
    int preludeCheckpointEvery;
    std::vector<const char*> series;  ///< points without the last number: each is counted up to its end
    int smokePoints;                  ///< of each series, in the short run
    int fileKibibytesMax = 0;  ///< the load that dies can make no file longer and fails at the end; 0: it can
    const char* touches = "";  ///< part of the name of a file at whose calls points must come
};

[[nodiscard]] const std::vector<CrashClass>& CrashClasses();
[[nodiscard]] const CrashClass* FindCrashClass(const std::string& name);
