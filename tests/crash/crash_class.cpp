// SPDX-License-Identifier: Apache-2.0
#include "tests/crash/crash_class.h"

namespace {

using SeriesNames = std::vector<const char*>;

constexpr TargetKind kFile = TargetKind::kFile;
constexpr TargetKind kSqlite = TargetKind::kSqlite;
constexpr Victim kCommand = Victim::kCommand;
constexpr Victim kWorker = Victim::kWorker;

const SeriesNames kOwnCalls = {"own-before", "own-after", "own-cut-to-3", "own-cut-to-half", "own-cut-by-1"};
const SeriesNames kStoreCalls = {"store-before", "store-after"};
// The second kill of a pair meets the state that the first one left. There is one such state before each
// call, and the cut writes add more.
const SeriesNames kPairs = {"own-before+own-before", "own-cut-to-half+own-before",
                            "own-before+own-cut-to-half"};
// In these series nothing is killed: a call fails once, or all later calls on the same file fail, too.
const SeriesNames kFailedCalls = {"own-eio", "own-eio-on", "own-enospc", "own-enospc-on"};
// These series do the same to calls that only look at files, which cannot fail for lack of space. In the last
// series every later call on the file fails.
const SeriesNames kFailedLooks = {"look-eio", "look-eio-on", "look-eio-all"};
// In an undisturbed load, the second attempt finds the queue empty, so it has nothing to commit. The module
// does not call MQINQ.
const SeriesNames kMqiCalls = {
    "life1-MQCONNX-before", "life1-MQCONNX-after", "life1-MQOPEN-before",  "life1-MQOPEN-after",
    "life1-MQGET-before",   "life1-MQGET-after",   "life1-MQCMIT-before",  "life1-MQCMIT-after",
    "life1-MQCLOSE-before", "life1-MQCLOSE-after", "life1-MQDISC-before",  "life1-MQDISC-after",
    "life2-MQCONNX-before", "life2-MQCONNX-after", "life2-MQOPEN-before",  "life2-MQOPEN-after",
    "life2-MQGET-before",   "life2-MQGET-after",   "life2-MQCLOSE-before", "life2-MQCLOSE-after",
    "life2-MQDISC-before",  "life2-MQDISC-after",
};
// A message that is saved but not committed ends the first attempt of the restart as a duplicate. The second
// attempt reads the rest.
const SeriesNames kMqiPairs = {"life1-MQCMIT-before+life1-MQGET-after",
                               "life1-MQCMIT-before+life2-MQCMIT-before",
                               "life1-MQCMIT-after+life1-MQCMIT-before", "life1-MQCMIT-before+own-before",
                               "own-before+life1-MQCMIT-before"};

// A message that cannot be saved is backed out. No other load calls MQBACK.
const SeriesNames kFullDisk = {"own-before",   "own-after",           "own-cut-to-3",      "own-cut-to-half",
                               "own-cut-by-1", "life1-MQBACK-before", "life1-MQBACK-after"};

// With every kill the power fails. The calls on the queue manager's files are the commits among others.
const SeriesNames kPowerCuts = {"own-before", "own-after", "store-before", "store-after"};

CrashClass PowerClass(const char* name, const char* what, TargetKind target, PowerCut cut,
                      bool isPlainest = true) {
    return {name, what, target, false, 40, 5, kCommand, "", 0, kPowerCuts, 3, 0, "", isPlainest, cut};
}

}  // namespace

const std::vector<CrashClass>& CrashClasses() {
    static const std::vector<CrashClass> classes = {
        {"file", "into a file, the command killed at a call on the load's files", kFile, false, 120, 10,
         kCommand, "", 0, kOwnCalls, 8},
        {"file-log", "the same with a log", kFile, true, 120, 10, kCommand, "", 0, kOwnCalls, 6},
        {"file-worker", "the worker process alone killed, the command goes on", kFile, true, 120, 10, kWorker,
         "", 0, kOwnCalls, 4},
        {"file-store", "into a file, killed at a call on the queue manager's files", kFile, false, 120, 10,
         kCommand, "", 0, kStoreCalls, 12},
        {"plainest", "the plainest command into a file, killed at a call on the load's files", kFile, false,
         120, 10, kCommand, "", 0, kOwnCalls, 8, 0, "out.load", true},
        {"sqlite-plainest", "the same into SQLite", kSqlite, false, 120, 10, kCommand, "", 0, kOwnCalls, 8, 0,
         "db.t.load", true},
        {"sqlite", "into SQLite, the command killed at a call on the load's files", kSqlite, false, 120, 10,
         kCommand, "", 0, kOwnCalls, 8},
        {"sqlite-log", "the same with a log", kSqlite, true, 120, 10, kCommand, "", 0, kOwnCalls, 6},
        {"sqlite-worker", "the worker process alone killed, the command goes on", kSqlite, true, 120, 10,
         kWorker, "", 0, kOwnCalls, 4},
        {"sqlite-store", "into SQLite, killed at a call on the queue manager's files", kSqlite, false, 120,
         10, kCommand, "", 0, kStoreCalls, 12},
        {"file-replay", "killed in a restart with checkpoints in the middle of its replay", kFile, true, 60,
         7, kCommand, "life1-MQGET-before-48", 1000, kOwnCalls, 8, 0, "MQAMtmp."},
        {"sqlite-replay", "the same into SQLite", kSqlite, true, 60, 7, kCommand, "life1-MQGET-before-48",
         1000, kOwnCalls, 8, 0, "MQAMtmp."},
        {"file-full", "into a file, killed in a load that fails because a record cannot be saved", kFile,
         false, 60, 1000, kCommand, "", 0, kFullDisk, 4, 16, "ck"},
        {"file-mqi", "into a file, the worker process killed before and after each MQI call", kFile, false,
         120, 10, kCommand, "", 0, kMqiCalls, 4},
        {"sqlite-mqi", "the same into SQLite", kSqlite, false, 120, 10, kCommand, "", 0, kMqiCalls, 4},
        {"file-fails", "into a file with a log, a call on one of the load's files fails", kFile, true, 24, 5,
         kCommand, "", 0, kFailedCalls, 8},
        {"sqlite-fails", "the same into SQLite", kSqlite, true, 24, 5, kCommand, "", 0, kFailedCalls, 8},
        {"replay-fails", "into a file, in a restart with checkpoints in the middle of its replay", kFile,
         true, 24, 5, kCommand, "life1-MQGET-before-18", 1000, kFailedCalls, 4},
        {"sqlite-replay-fails", "the same into SQLite", kSqlite, true, 24, 5, kCommand,
         "life1-MQGET-before-18", 1000, kFailedCalls, 4},
        {"file-reads-fail", "into a file with a log, a call that only looks at one of the load's files fails",
         kFile, true, 24, 5, kCommand, "", 0, kFailedLooks, 4},
        {"sqlite-reads-fail", "the same into SQLite", kSqlite, true, 24, 5, kCommand, "", 0, kFailedLooks, 4},
        {"replay-reads-fail", "into a file, in a restart with checkpoints in the middle of its replay", kFile,
         true, 24, 5, kCommand, "life1-MQGET-before-18", 1000, kFailedLooks, 4},
        {"sqlite-replay-reads-fail", "the same into SQLite", kSqlite, true, 24, 5, kCommand,
         "life1-MQGET-before-18", 1000, kFailedLooks, 4},
        {"file-pairs", "killed twice: again in the restart", kFile, true, 12, 4, kCommand, "", 0, kPairs, 12},
        {"sqlite-pairs",
         "the same into SQLite",
         kSqlite,
         true,
         6,
         2,
         kCommand,
         "",
         0,
         {"own-before+own-before"},
         30},
        {"mqi-pairs", "killed twice, one time or both around an MQI call", kFile, false, 12, 4, kCommand, "",
         0, kMqiPairs, 5},
        {"replay-pairs",
         "killed twice in restarts with checkpoints in the middle of the replay",
         kFile,
         false,
         16,
         4,
         kCommand,
         "life1-MQGET-before-14",
         1000,
         {"own-before+own-before"},
         20,
         0,
         "MQAMtmp."},
        PowerClass("power-data", "the power fails: of each file only what was synced", kFile,
                   PowerCut::kData),
        PowerClass("power-zeros", "the power fails: zeros where bytes were not synced", kFile,
                   PowerCut::kZeros),
        PowerClass("power-short", "the power fails: half of the bytes that were not synced", kFile,
                   PowerCut::kShort),
        PowerClass("power-names", "the power fails: only names that were synced", kFile, PowerCut::kNames),
        PowerClass("power-names-data", "the power fails: only what was synced", kFile, PowerCut::kNamesData),
        PowerClass("power-mixed", "the power fails: any of these for each file", kFile, PowerCut::kMixed),
        PowerClass("power-ckfile", "the same with a checkpoint file next to the target", kFile,
                   PowerCut::kMixed, false),
        PowerClass("power-sqlite-data", "into SQLite, of each file only what was synced", kSqlite,
                   PowerCut::kData),
        PowerClass("power-sqlite-mixed", "into SQLite, any of these for each file", kSqlite,
                   PowerCut::kMixed),
        {"power-replay", "the power fails in a restart with a replay", kFile, false, 40, 5, kCommand,
         "life1-MQGET-before-30", 1000, kPowerCuts, 3, 0, "MQAMtmp.", true, PowerCut::kMixed},
        {"power-pairs",
         "the power fails twice",
         kFile,
         false,
         12,
         4,
         kCommand,
         "",
         0,
         {"own-before+own-before"},
         12,
         0,
         "",
         true,
         PowerCut::kMixed},
    };
    return classes;
}

const CrashClass* FindCrashClass(const std::string& name) {
    for (const CrashClass& one : CrashClasses()) {
        if (name == one.name) return &one;
    }
    return nullptr;
}
