// SPDX-License-Identifier: Apache-2.0

// Recovers the units of work of dead processes (invariant 3 in unit.h).
#include <algorithm>

#include "platform/directory.h"
#include "platform/file.h"
#include "platform/lock.h"
#include "platform/shared_file.h"
#include "spoolmq/store/counters.h"
#include "spoolmq/store/crash_points.h"
#include "spoolmq/store/names.h"
#include "spoolmq/store/process_lock.h"
#include "spoolmq/store/unit.h"

namespace spoolmq {

namespace {

constexpr std::string_view kLockEnding = ".lock";

// A unit whose lock this process has acquired.
struct DeadUnit {
    const std::string& qmgrPath;
    std::string path;
    bool isCommitted = false;
};

// Makes the readers of a queue look at its directory again.
void AnnounceReturn(const std::string& queuePath) {
    QueueCounters counters;
    if (MapQueueCounters(queuePath + "/.state", counters) != FileStatus::kOk) {
        return;
    }
    CountReturn(counters);
    platform::UnmapSharedFile(counters.file);
}

FileStatus SettleMessage(const DeadUnit& unit, const UnitMember& message, const std::string& path) {
    switch (message.stage) {
        case UnitStage::kGot:
            if (unit.isCommitted) {
                break;
            }
            return ReturnMessage(unit.qmgrPath, message, path, BackoutCount::kRaise);
        case UnitStage::kTaking: return ReturnMessage(unit.qmgrPath, message, path, BackoutCount::kKeep);
        case UnitStage::kPut:
            if (!unit.isCommitted) {
                break;
            }
            return ReturnMessage(unit.qmgrPath, message, path, BackoutCount::kKeep);
        case UnitStage::kDone: break;
    }
    return DeleteMessage(unit.qmgrPath, message, path);
}

// Settles the messages of one stage and queue. Returns whether none is left.
bool SettleQueue(const DeadUnit& unit, UnitStage stage, const std::string& queueDirectory,
                 const std::string& path) {
    std::vector<platform::DirectoryEntry> messages;
    if (platform::ListDirectory(path, messages) != FileStatus::kOk) {
        return false;
    }
    bool isSettled = true;
    for (const platform::DirectoryEntry& message : messages) {
        const UnitMember member = {stage, queueDirectory, message.name};
        isSettled &= SettleMessage(unit, member, path + '/' + message.name) == FileStatus::kOk;
        ReachCrashPoint("return-step");
    }
    // This is needed even if there was no message: an earlier recovery may have been killed before it got
    // here.
    if (stage != UnitStage::kDone) {
        AnnounceReturn(unit.qmgrPath + '/' + queueDirectory);
    }
    ReachCrashPoint("recovered");
    return isSettled && platform::RemoveEmptyDirectory(path) == FileStatus::kOk;
}

// Settles all messages of one stage. Returns whether none is left.
bool SettleStage(const DeadUnit& unit, UnitStage stage) {
    const std::string stagePath = unit.path + '/' + StageName(stage);
    std::vector<platform::DirectoryEntry> queues;
    // The directory of a stage that the unit never used does not exist.
    if (platform::ListDirectory(stagePath, queues) != FileStatus::kOk) {
        return true;
    }
    bool isSettled = true;
    for (const platform::DirectoryEntry& queue : queues) {
        isSettled &= SettleQueue(unit, stage, queue.name, stagePath + '/' + queue.name);
    }
    return isSettled && platform::RemoveEmptyDirectory(stagePath) == FileStatus::kOk;
}

// Settles a whole unit and removes it. Returns false if a part of it has to stay.
bool SettleUnit(const std::string& qmgrPath, const std::string& unitPath) {
    platform::FileInfo marker;
    const bool isCommitted = platform::StatPath(unitPath + "/commit", marker) == FileStatus::kOk;
    const DeadUnit unit = {qmgrPath, unitPath, isCommitted};
    bool isSettled = true;
    for (const UnitStage stage : {UnitStage::kDone, UnitStage::kTaking, UnitStage::kPut, UnitStage::kGot}) {
        isSettled &= SettleStage(unit, stage);
    }
    if (!isSettled) {
        return false;
    }
    // The marker is removed last: until then it says what has to happen to the remaining messages.
    return platform::RemoveFile(unitPath + "/commit") == FileStatus::kOk &&
           platform::RemoveFile(unitPath + "/open") == FileStatus::kOk &&
           platform::RemoveEmptyDirectory(unitPath) == FileStatus::kOk;
}

// Returns the id of the unit whose directory this entry is, or whose lock file it is when the directory no
// longer exists; an empty string for any other entry.
std::string UnitOfEntry(const platform::DirectoryEntry& entry,
                        const std::vector<platform::DirectoryEntry>& entries) {
    const std::string_view name = entry.name;
    if (entry.isDirectory) {
        return entry.name;
    }
    if (name.size() <= kLockEnding.size() || name.substr(name.size() - kLockEnding.size()) != kLockEnding) {
        return {};
    }
    const std::string_view id = name.substr(0, name.size() - kLockEnding.size());
    const bool hasDirectory = std::any_of(
        entries.begin(), entries.end(),
        [&](const platform::DirectoryEntry& other) { return other.isDirectory && other.name == id; });
    return hasDirectory ? std::string() : std::string(id);
}

}  // namespace

bool RecoverDeadUnits(const std::string& qmgrPath, const std::string& ownId) {
    const std::string units = UnitsPath(qmgrPath);
    std::vector<platform::DirectoryEntry> entries;
    if (platform::ListDirectory(units, entries) != FileStatus::kOk) {
        return false;
    }
    bool hasFound = false;
    for (const platform::DirectoryEntry& entry : entries) {
        const std::string id = UnitOfEntry(entry, entries);
        if (id.empty() || id == ownId) {
            continue;
        }
        const std::string unitPath = units + '/' + id;
        const std::string lockPath = unitPath + std::string(kLockEnding);
        platform::LockHandle processLock = platform::kNoLock;
        if (AcquireProcessLock(lockPath, processLock) != FileStatus::kOk) {
            continue;
        }
        hasFound = true;
        platform::FileInfo info;
        if (platform::StatPath(unitPath, info) != FileStatus::kOk || SettleUnit(qmgrPath, unitPath)) {
            platform::ReleaseLock(lockPath, processLock);
        } else {
            platform::ReleaseLockKeepingFile(processLock);
        }
    }
    return hasFound;
}

}  // namespace spoolmq
