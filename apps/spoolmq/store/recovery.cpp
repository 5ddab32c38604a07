// Putting the units of work of dead programs in order: unit.h, invariant 3.
#include <algorithm>

#include "spoolmq/store/counters.h"
#include "spoolmq/store/crash_points.h"
#include "spoolmq/store/names.h"
#include "spoolmq/store/unit.h"

namespace spoolmq {

namespace {

constexpr std::string_view kLockEnding = ".lock";

/// Tells the readers of a queue that messages came back.
void AnnounceReturn(const std::string& queuePath) {
    QueueCounters counters;
    if (MapQueueCounters(queuePath + "/.state", &counters) != OsStatus::Ok) return;
    NoteReturn(counters);
    UnmapSharedFile(&counters.file);
}

OsStatus SettleMessage(const std::string& qmgrPath, UnitStage stage, bool isCommitted,
                       const std::string& queueFolder, const std::string& fileName, const std::string& path) {
    switch (stage) {
        case UnitStage::Got:
            if (isCommitted) break;
            return ReturnMessage(qmgrPath, queueFolder, fileName, path, 1);
        case UnitStage::Taking: return ReturnMessage(qmgrPath, queueFolder, fileName, path, 0);
        case UnitStage::Put:
            if (isCommitted) return ReturnMessage(qmgrPath, queueFolder, fileName, path, 0);
            break;
        case UnitStage::Done: break;
    }
    return DeleteMessage(qmgrPath, queueFolder, fileName, path);
}

/// All messages of one stage of a dead unit. False when one could not be settled.
bool SettleStage(const std::string& qmgrPath, const std::string& unitPath, UnitStage stage,
                 bool isCommitted) {
    const std::string stagePath = unitPath + '/' + StageName(stage);
    std::vector<FolderEntry> queues;
    std::vector<FolderEntry> messages;
    if (ListFolder(stagePath, &queues) != OsStatus::Ok) return true;  // the stage was never used
    bool isSettled = true;
    for (const FolderEntry& queue : queues) {
        const std::string folder = stagePath + '/' + queue.name;
        if (ListFolder(folder, &messages) != OsStatus::Ok) return false;
        for (const FolderEntry& message : messages) {
            isSettled &= SettleMessage(qmgrPath, stage, isCommitted, queue.name, message.name,
                                       folder + '/' + message.name) == OsStatus::Ok;
            PassStorePoint("return-step");
        }
        // Also when the messages were settled by someone who died before he could tell.
        if (stage != UnitStage::Done) AnnounceReturn(qmgrPath + '/' + queue.name);
        PassStorePoint("recovered");
        isSettled = isSettled && RemoveEmptyFolder(folder) == OsStatus::Ok;
    }
    return isSettled && RemoveEmptyFolder(stagePath) == OsStatus::Ok;
}

/// False when something of the unit has to stay.
bool SettleUnit(const std::string& qmgrPath, const std::string& unitPath) {
    FileInfo marker;
    const bool isCommitted = StatPath(unitPath + "/commit", &marker) == OsStatus::Ok;
    bool isSettled = true;
    for (const UnitStage stage : {UnitStage::Done, UnitStage::Taking, UnitStage::Put, UnitStage::Got})
        isSettled &= SettleStage(qmgrPath, unitPath, stage, isCommitted);
    if (!isSettled) return false;
    // The marker goes last: until then it says what is to become of the rest.
    return RemoveFile(unitPath + "/commit") == OsStatus::Ok &&
           RemoveFile(unitPath + "/open") == OsStatus::Ok && RemoveEmptyFolder(unitPath) == OsStatus::Ok;
}

/// The unit that a folder, or a lock file that is left without one, belongs to; empty for anything else.
std::string UnitOfEntry(const FolderEntry& entry, const std::vector<FolderEntry>& entries) {
    const std::string_view name = entry.name;
    if (entry.isFolder) return entry.name;
    if (name.size() <= kLockEnding.size() || name.substr(name.size() - kLockEnding.size()) != kLockEnding)
        return {};
    const std::string_view id = name.substr(0, name.size() - kLockEnding.size());
    const bool hasFolder = std::any_of(entries.begin(), entries.end(), [&](const FolderEntry& other) {
        return other.isFolder && other.name == id;
    });
    return hasFolder ? std::string() : std::string(id);
}

}  // namespace

bool RecoverDeadUnits(const std::string& qmgrPath, const std::string& ownId) {
    const std::string units = UnitsPath(qmgrPath);
    std::vector<FolderEntry> entries;
    if (ListFolder(units, &entries) != OsStatus::Ok) return false;
    bool wasThereOne = false;
    for (const FolderEntry& entry : entries) {
        const std::string id = UnitOfEntry(entry, entries);
        if (id.empty() || id == ownId) continue;
        const std::string lockPath = units + '/' + id + std::string(kLockEnding);
        OsFile presence = kNoFile;
        if (AcquirePresence(lockPath, &presence) != OsStatus::Ok) continue;
        wasThereOne = true;
        FileInfo info;
        if (StatPath(units + '/' + id, &info) != OsStatus::Ok || SettleUnit(qmgrPath, units + '/' + id))
            ReleasePresence(lockPath, presence);
        else
            CloseFile(presence);
    }
    return wasThereOne;
}

}  // namespace spoolmq
