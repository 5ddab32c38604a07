// Recovery of the units of work of dead processes (invariant 3 in unit.h).
#include <algorithm>

#include "spoolmq/store/counters.h"
#include "spoolmq/store/crash_points.h"
#include "spoolmq/store/names.h"
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
    if (MapQueueCounters(queuePath + "/.state", counters) != OsStatus::Ok) {
        return;
    }
    CountReturn(counters);
    UnmapSharedFile(&counters.file);
}

OsStatus SettleMessage(const DeadUnit& unit, const UnitMember& message, const std::string& path) {
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
    std::vector<FolderEntry> messages;
    if (ListFolder(path, &messages) != OsStatus::Ok) {
        return false;
    }
    bool isSettled = true;
    for (const FolderEntry& message : messages) {
        const UnitMember member = {stage, queueDirectory, message.name};
        isSettled &= SettleMessage(unit, member, path + '/' + message.name) == OsStatus::Ok;
        ReachCrashPoint("return-step");
    }
    // This is needed even if there was no message: an earlier recovery may have been killed before it got here.
    if (stage != UnitStage::kDone) {
        AnnounceReturn(unit.qmgrPath + '/' + queueDirectory);
    }
    ReachCrashPoint("recovered");
    return isSettled && RemoveEmptyFolder(path) == OsStatus::Ok;
}

// Settles all messages of one stage. Returns whether none is left.
bool SettleStage(const DeadUnit& unit, UnitStage stage) {
    const std::string stagePath = unit.path + '/' + StageName(stage);
    std::vector<FolderEntry> queues;
    // The directory of a stage that the unit never used does not exist.
    if (ListFolder(stagePath, &queues) != OsStatus::Ok) {
        return true;
    }
    bool isSettled = true;
    for (const FolderEntry& queue : queues) {
        isSettled &= SettleQueue(unit, stage, queue.name, stagePath + '/' + queue.name);
    }
    return isSettled && RemoveEmptyFolder(stagePath) == OsStatus::Ok;
}

// Settles a whole unit. Returns false when something of it has to stay.
bool SettleUnit(const std::string& qmgrPath, const std::string& unitPath) {
    FileInfo marker;
    const bool isCommitted = StatPath(unitPath + "/commit", &marker) == OsStatus::Ok;
    const DeadUnit unit = {qmgrPath, unitPath, isCommitted};
    bool isSettled = true;
    for (const UnitStage stage : {UnitStage::kDone, UnitStage::kTaking, UnitStage::kPut, UnitStage::kGot}) {
        isSettled &= SettleStage(unit, stage);
    }
    if (!isSettled) {
        return false;
    }
    // The marker is removed last: until then it says what has to happen to the remaining messages.
    return RemoveFile(unitPath + "/commit") == OsStatus::Ok &&
           RemoveFile(unitPath + "/open") == OsStatus::Ok && RemoveEmptyFolder(unitPath) == OsStatus::Ok;
}

// Returns the id of the unit whose directory this entry is, or whose lock file it is when the directory no
// longer exists; empty for anything else.
std::string UnitOfEntry(const FolderEntry& entry, const std::vector<FolderEntry>& entries) {
    const std::string_view name = entry.name;
    if (entry.isFolder) {
        return entry.name;
    }
    if (name.size() <= kLockEnding.size() || name.substr(name.size() - kLockEnding.size()) != kLockEnding) {
        return {};
    }
    const std::string_view id = name.substr(0, name.size() - kLockEnding.size());
    const bool hasDirectory = std::any_of(entries.begin(), entries.end(), [&](const FolderEntry& other) {
        return other.isFolder && other.name == id;
    });
    return hasDirectory ? std::string() : std::string(id);
}

}  // namespace

bool RecoverDeadUnits(const std::string& qmgrPath, const std::string& ownId) {
    const std::string units = UnitsPath(qmgrPath);
    std::vector<FolderEntry> entries;
    if (ListFolder(units, &entries) != OsStatus::Ok) {
        return false;
    }
    bool hasFound = false;
    for (const FolderEntry& entry : entries) {
        const std::string id = UnitOfEntry(entry, entries);
        if (id.empty() || id == ownId) {
            continue;
        }
        const std::string unitPath = units + '/' + id;
        const std::string lockPath = unitPath + std::string(kLockEnding);
        OsFile processLock = kNoFile;
        if (AcquirePresence(lockPath, &processLock) != OsStatus::Ok) {
            continue;
        }
        hasFound = true;
        FileInfo info;
        if (StatPath(unitPath, &info) != OsStatus::Ok || SettleUnit(qmgrPath, unitPath)) {
            ReleasePresence(lockPath, processLock);
        } else {
            CloseFile(processLock);
        }
    }
    return hasFound;
}

}  // namespace spoolmq
