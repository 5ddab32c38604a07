#include "spoolmq/store/unit.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "spoolmq/store/crash_points.h"
#include "spoolmq/store/names.h"

namespace spoolmq {

namespace {

constexpr std::array<UnitStage, 4> kStages = {UnitStage::Got, UnitStage::Taking, UnitStage::Put,
                                              UnitStage::Done};

std::string UnitPath(const Unit& unit) {
    return UnitsPath(unit.qmgrPath) + '/' + unit.id;
}
std::string OpenMarkerPath(const Unit& unit) {
    return UnitPath(unit) + "/open";
}
std::string CommitMarkerPath(const Unit& unit) {
    return UnitPath(unit) + "/commit";
}

std::string MemberPath(const Unit& unit, UnitStage stage, const UnitMember& member) {
    return UnitPath(unit) + '/' + StageName(stage) + '/' + member.queueFolder + '/' + member.fileName;
}

/// Lets go of the folder with whatever is in it and starts a fresh one.
void AbandonUnit(Unit* unit) {
    CloseFile(unit->presence);  // not ReleasePresence: the lock file belongs to the folder that stays
    Unit fresh;
    fresh.sync = unit->sync;
    // Without a fresh folder id stays empty, and the next call that needs one fails.
    static_cast<void>(OpenUnit(unit->qmgrPath, &fresh));
    *unit = std::move(fresh);
}

OsStatus SyncMember(const Unit& unit, UnitStage stage, const UnitMember& member) {
    if (!unit.sync) return OsStatus::Ok;
    return SyncFolder(UnitPath(unit) + '/' + StageName(stage) + '/' + member.queueFolder);
}

OsStatus PublishMember(const Unit& unit, const UnitMember& member) {
    const std::string queuePath = unit.qmgrPath + '/' + member.queueFolder;
    OsStatus status = RenameNew(MemberPath(unit, UnitStage::Put, member), queuePath + '/' + member.fileName);
    if (status == OsStatus::Ok && unit.sync) status = SyncFolder(queuePath);
    return status;
}

/// A unit of a single get: the rename to done decides.
OsStatus CommitSingleGet(Unit* unit, const UnitMember& member) {
    std::string donePath;
    OsStatus status = StagePath(unit, UnitStage::Done, member.queueFolder, member.fileName, &donePath);
    if (status == OsStatus::Ok) status = RenameNew(MemberPath(*unit, UnitStage::Got, member), donePath);
    // Not found: somebody has deleted the file by hand, and gone it was to be.
    if (status != OsStatus::Ok && status != OsStatus::NotFound) return status;
    PassStorePoint("done-moved");
    if (SyncMember(*unit, UnitStage::Done, member) != OsStatus::Ok ||
        DeleteMessage(unit->qmgrPath, member.queueFolder, member.fileName, donePath) != OsStatus::Ok)
        AbandonUnit(unit);
    unit->members.clear();
    return OsStatus::Ok;
}

OsStatus CommitSeveral(Unit* unit, std::vector<UnitMember>* published) {
    // A rename and not a fresh file each time: making files is slow where many were deleted just before.
    OsStatus status = RenameNew(OpenMarkerPath(*unit), CommitMarkerPath(*unit));
    if (status == OsStatus::Ok && unit->sync) status = SyncFolder(UnitPath(*unit));
    if (status != OsStatus::Ok) return status;
    PassStorePoint("marked");
    bool isFinished = true;
    for (const UnitMember& member : unit->members) {
        if (member.stage == UnitStage::Put) {
            if (PublishMember(*unit, member) == OsStatus::Ok)
                published->push_back(member);
            else
                isFinished = false;
        } else if (DeleteMessage(unit->qmgrPath, member.queueFolder, member.fileName,
                                 MemberPath(*unit, UnitStage::Got, member)) != OsStatus::Ok) {
            isFinished = false;
        }
        PassStorePoint("commit-step");
    }
    // The marker goes last: while it stands, what is left in the folder is committed.
    if (!isFinished || RenameNew(CommitMarkerPath(*unit), OpenMarkerPath(*unit)) != OsStatus::Ok)
        AbandonUnit(unit);
    unit->members.clear();
    return OsStatus::Ok;
}

}  // namespace

std::string UnitsPath(const std::string& qmgrPath) {
    return qmgrPath + "/.units";
}

const char* StageName(UnitStage stage) {
    switch (stage) {
        case UnitStage::Got: return "got";
        case UnitStage::Taking: return "taking";
        case UnitStage::Put: return "put";
        case UnitStage::Done: break;
    }
    return "done";
}

OsStatus OpenUnit(const std::string& qmgrPath, Unit* unit) {
    unit->qmgrPath = qmgrPath;
    const std::string units = UnitsPath(qmgrPath);
    OsStatus status = MakeFolder(units);
    while (status == OsStatus::Ok) {
        std::array<char, 64> id{};
        std::snprintf(id.data(), id.size(), "%lld-%08llx", static_cast<long long>(ProcessId()),
                      static_cast<unsigned long long>(RandomNumber() & 0xFFFFFFFF));
        // Lock first, folder second: a folder without a held lock may be cleared away by anybody at any time.
        const std::string path = units + '/' + id.data();
        status = AcquirePresence(path + ".lock", &unit->presence);
        if (status == OsStatus::Busy) {
            status = OsStatus::Ok;
            continue;
        }
        if (status != OsStatus::Ok) break;
        unit->id = id.data();
        status = MakeFolder(path);
        if (status == OsStatus::Ok) status = WriteNewFile(OpenMarkerPath(*unit), "", 0, false);
        if (status == OsStatus::Ok) return status;
        unit->id.clear();
        static_cast<void>(RemoveEmptyFolder(path));
        ReleasePresence(path + ".lock", unit->presence);
        unit->presence = kNoFile;
    }
    return status;
}

void CloseUnit(Unit* unit) {
    if (unit->id.empty()) return;
    const std::string path = UnitPath(*unit);
    bool isEmpty = true;
    for (const std::string& folder : unit->madeFolders)
        isEmpty &= RemoveEmptyFolder(folder) == OsStatus::Ok;
    for (const UnitStage stage : kStages)
        isEmpty &= RemoveEmptyFolder(path + '/' + StageName(stage)) == OsStatus::Ok;
    isEmpty = isEmpty && RemoveFile(OpenMarkerPath(*unit)) == OsStatus::Ok;
    isEmpty = isEmpty && RemoveEmptyFolder(path) == OsStatus::Ok;
    if (isEmpty)
        ReleasePresence(path + ".lock", unit->presence);
    else
        CloseFile(unit->presence);
    *unit = Unit();
}

OsStatus StagePath(Unit* unit, UnitStage stage, const std::string& queueFolder, const std::string& fileName,
                   std::string* path) {
    if (unit->id.empty()) {
        const OsStatus status = OpenUnit(std::string(unit->qmgrPath), unit);
        if (status != OsStatus::Ok) return status;
    }
    const std::string stagePath = UnitPath(*unit) + '/' + StageName(stage);
    const std::string folder = stagePath + '/' + queueFolder;
    *path = folder + '/' + fileName;
    if (unit->madeFolders.contains(folder)) return OsStatus::Ok;
    OsStatus status = MakeFolder(stagePath);
    if (status == OsStatus::Ok) status = MakeFolder(folder);
    if (status == OsStatus::Ok) unit->madeFolders.insert(folder);
    return status;
}

OsStatus CommitUnit(Unit* unit, std::vector<UnitMember>* published) {
    if (unit->members.empty()) return OsStatus::Ok;
    if (unit->members.size() > 1) return CommitSeveral(unit, published);
    const UnitMember member = unit->members.front();
    if (member.stage == UnitStage::Got) return CommitSingleGet(unit, member);
    const OsStatus status = PublishMember(*unit, member);
    if (status != OsStatus::Ok) return status;
    published->push_back(member);
    unit->members.clear();
    return OsStatus::Ok;
}

OsStatus BackOutUnit(Unit* unit, std::vector<UnitMember>* returned) {
    bool isFinished = true;
    for (const UnitMember& member : unit->members) {
        const std::string path = MemberPath(*unit, member.stage, member);
        if (member.stage == UnitStage::Put) {
            isFinished &=
                DeleteMessage(unit->qmgrPath, member.queueFolder, member.fileName, path) == OsStatus::Ok;
        } else if (ReturnMessage(unit->qmgrPath, member.queueFolder, member.fileName, path, 1) ==
                   OsStatus::Ok) {
            returned->push_back(member);
            PassStorePoint("return-step");
        } else {
            isFinished = false;
        }
    }
    if (isFinished)
        unit->members.clear();
    else
        AbandonUnit(unit);
    return isFinished ? OsStatus::Ok : OsStatus::Failed;
}

OsStatus DeleteMessage(const std::string& qmgrPath, const std::string& queueFolder,
                       const std::string& fileName, const std::string& path) {
    MessageName name;
    OsStatus status = OsStatus::Ok;
    if (ParseMessageName(fileName, &name))
        status = RemoveFile(qmgrPath + '/' + queueFolder + "/.desc/" + DescriptorName(name));
    if (status != OsStatus::Ok) return status;
    return RemoveFile(path);
}

OsStatus ReturnMessage(const std::string& qmgrPath, const std::string& queueFolder,
                       const std::string& fileName, const std::string& path, int raise) {
    MessageName name;
    if (!ParseMessageName(fileName, &name)) return OsStatus::Failed;
    name.backoutCount = std::min(name.backoutCount + raise, kMostBackouts);
    OsStatus status = OsStatus::Exists;
    // Somebody may have copied in a file of that very name meanwhile; neither may be lost, so this one moves
    // on by a nanosecond.
    for (int attempt = 0; status == OsStatus::Exists && attempt < 1000; ++attempt, ++name.stampNs)
        status = RenameNew(path, qmgrPath + '/' + queueFolder + '/' + FormatMessageName(name));
    return status;
}

}  // namespace spoolmq
