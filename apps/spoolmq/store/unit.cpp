#include "spoolmq/store/unit.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "spoolmq/store/crash_points.h"
#include "spoolmq/store/names.h"

namespace spoolmq {

namespace {

constexpr std::array<UnitStage, 4> kStages = {UnitStage::kGot, UnitStage::kTaking, UnitStage::kPut,
                                              UnitStage::kDone};

std::string UnitPath(const Unit& unit) {
    return UnitsPath(unit.qmgrPath) + '/' + unit.id;
}
std::string LockPath(const Unit& unit) {
    return UnitPath(unit) + ".lock";
}
std::string OpenMarkerPath(const Unit& unit) {
    return UnitPath(unit) + "/open";
}
std::string CommitMarkerPath(const Unit& unit) {
    return UnitPath(unit) + "/commit";
}
std::string MemberDirectory(const Unit& unit, const UnitMember& member) {
    return UnitPath(unit) + '/' + StageName(member.stage) + '/' + member.queueDirectory;
}
std::string MemberPath(const Unit& unit, const UnitMember& member) {
    return MemberDirectory(unit, member) + '/' + member.fileName;
}

// Leaves the directory, with whatever is in it, to recovery, and starts a new one.
void AbandonUnit(Unit& unit) {
    // The lock file stays, because it belongs to the directory that stays.
    CloseFile(unit.processLock);
    Unit fresh;
    fresh.sync = unit.sync;
    // If this fails, the id stays empty, and the next call that needs a directory fails.
    static_cast<void>(OpenUnit(unit.qmgrPath, fresh));
    unit = std::move(fresh);
}

OsStatus PublishMember(const Unit& unit, const UnitMember& member) {
    const std::string queuePath = unit.qmgrPath + '/' + member.queueDirectory;
    OsStatus status = RenameNew(MemberPath(unit, member), queuePath + '/' + member.fileName);
    if (status == OsStatus::Ok && unit.sync) {
        status = SyncFolder(queuePath);
    }
    return status;
}

// Commits a unit of a single get, which the rename to done decides.
OsStatus CommitSingleGet(Unit& unit, const UnitMember& member) {
    UnitMember done = member;
    done.stage = UnitStage::kDone;
    std::string donePath;
    OsStatus status = MakeMemberPath(unit, done, donePath);
    if (status == OsStatus::Ok) {
        status = RenameNew(MemberPath(unit, member), donePath);
    }
    // NotFound is fine: someone deleted the file, which is what this commit was about to do.
    if (status != OsStatus::Ok && status != OsStatus::NotFound) {
        return status;
    }
    ReachCrashPoint("done-moved");
    const bool isSynced = !unit.sync || SyncFolder(MemberDirectory(unit, done)) == OsStatus::Ok;
    if (!isSynced || DeleteMessage(unit.qmgrPath, done, donePath) != OsStatus::Ok) {
        AbandonUnit(unit);
    }
    unit.members.clear();
    return OsStatus::Ok;
}

// Carries out a decided commit as far as possible. Returns whether everything is done.
bool FinishCommit(const Unit& unit, std::vector<UnitMember>& published) {
    bool isFinished = true;
    for (const UnitMember& member : unit.members) {
        if (member.stage == UnitStage::kGot) {
            isFinished &= DeleteMessage(unit.qmgrPath, member, MemberPath(unit, member)) == OsStatus::Ok;
        } else if (PublishMember(unit, member) == OsStatus::Ok) {
            published.push_back(member);
        } else {
            isFinished = false;
        }
        ReachCrashPoint("commit-step");
    }
    return isFinished;
}

OsStatus CommitSeveral(Unit& unit, std::vector<UnitMember>& published) {
    // The marker is renamed, not created for each commit, because creating a file is slow in a directory from
    // which many were just deleted.
    OsStatus status = RenameNew(OpenMarkerPath(unit), CommitMarkerPath(unit));
    if (status == OsStatus::Ok && unit.sync) {
        status = SyncFolder(UnitPath(unit));
    }
    if (status != OsStatus::Ok) {
        return status;
    }
    ReachCrashPoint("marked");
    const bool isFinished = FinishCommit(unit, published);
    // The marker is renamed last: until then, whatever is in the directory counts as committed.
    if (!isFinished || RenameNew(CommitMarkerPath(unit), OpenMarkerPath(unit)) != OsStatus::Ok) {
        AbandonUnit(unit);
    }
    unit.members.clear();
    return OsStatus::Ok;
}

}  // namespace

std::string UnitsPath(const std::string& qmgrPath) {
    return qmgrPath + "/.units";
}

const char* StageName(UnitStage stage) {
    switch (stage) {
        case UnitStage::kGot: return "got";
        case UnitStage::kTaking: return "taking";
        case UnitStage::kPut: return "put";
        case UnitStage::kDone: break;
    }
    return "done";
}

OsStatus OpenUnit(const std::string& qmgrPath, Unit& unit) {
    unit.qmgrPath = qmgrPath;
    OsStatus status = MakeFolder(UnitsPath(qmgrPath));
    while (status == OsStatus::Ok) {
        std::array<char, 64> id{};
        std::snprintf(id.data(), id.size(), "%lld-%08llx", static_cast<long long>(ProcessId()),
                      static_cast<unsigned long long>(RandomNumber() & 0xFFFFFFFF));
        unit.id = id.data();
        // The lock comes before the directory, because a directory whose lock is free may be removed by any
        // process at any time.
        status = AcquirePresence(LockPath(unit), &unit.processLock);
        if (status == OsStatus::Busy) {
            status = OsStatus::Ok;
            continue;
        }
        if (status != OsStatus::Ok) {
            break;
        }
        status = MakeFolder(UnitPath(unit));
        if (status == OsStatus::Ok) {
            status = WriteNewFile(OpenMarkerPath(unit), "", 0, false);
        }
        if (status == OsStatus::Ok) {
            return status;
        }
        static_cast<void>(RemoveEmptyFolder(UnitPath(unit)));
        ReleasePresence(LockPath(unit), unit.processLock);
        unit.processLock = kNoFile;
    }
    unit.id.clear();
    return status;
}

void CloseUnit(Unit& unit) {
    if (unit.id.empty()) {
        return;
    }
    const std::string path = UnitPath(unit);
    bool isEmpty = true;
    for (const std::string& directory : unit.createdDirectories) {
        isEmpty &= RemoveEmptyFolder(directory) == OsStatus::Ok;
    }
    for (const UnitStage stage : kStages) {
        isEmpty &= RemoveEmptyFolder(path + '/' + StageName(stage)) == OsStatus::Ok;
    }
    isEmpty = isEmpty && RemoveFile(OpenMarkerPath(unit)) == OsStatus::Ok;
    isEmpty = isEmpty && RemoveEmptyFolder(path) == OsStatus::Ok;
    if (isEmpty) {
        ReleasePresence(LockPath(unit), unit.processLock);
    } else {
        CloseFile(unit.processLock);
    }
    unit = Unit();
}

OsStatus MakeMemberPath(Unit& unit, const UnitMember& member, std::string& path) {
    if (unit.id.empty()) {
        const OsStatus status = OpenUnit(std::string(unit.qmgrPath), unit);
        if (status != OsStatus::Ok) {
            return status;
        }
    }
    const std::string directory = MemberDirectory(unit, member);
    path = directory + '/' + member.fileName;
    if (unit.createdDirectories.contains(directory)) {
        return OsStatus::Ok;
    }
    OsStatus status = MakeFolder(UnitPath(unit) + '/' + StageName(member.stage));
    if (status == OsStatus::Ok) {
        status = MakeFolder(directory);
    }
    if (status == OsStatus::Ok) {
        unit.createdDirectories.insert(directory);
    }
    return status;
}

OsStatus CommitUnit(Unit& unit, std::vector<UnitMember>& published) {
    if (unit.members.empty()) {
        return OsStatus::Ok;
    }
    if (unit.members.size() > 1) {
        return CommitSeveral(unit, published);
    }
    const UnitMember member = unit.members.front();
    if (member.stage == UnitStage::kGot) {
        return CommitSingleGet(unit, member);
    }
    const OsStatus status = PublishMember(unit, member);
    if (status != OsStatus::Ok) {
        return status;
    }
    published.push_back(member);
    unit.members.clear();
    return OsStatus::Ok;
}

OsStatus BackOutUnit(Unit& unit, std::vector<UnitMember>& returned) {
    bool isFinished = true;
    for (const UnitMember& member : unit.members) {
        const std::string path = MemberPath(unit, member);
        if (member.stage == UnitStage::kPut) {
            isFinished &= DeleteMessage(unit.qmgrPath, member, path) == OsStatus::Ok;
        } else if (ReturnMessage(unit.qmgrPath, member, path, BackoutCount::kRaise) == OsStatus::Ok) {
            returned.push_back(member);
            ReachCrashPoint("return-step");
        } else {
            isFinished = false;
        }
    }
    unit.isRollbackOnly = false;
    if (isFinished) {
        unit.members.clear();
    } else {
        AbandonUnit(unit);
    }
    return isFinished ? OsStatus::Ok : OsStatus::Failed;
}

OsStatus DeleteMessage(const std::string& qmgrPath, const UnitMember& message, const std::string& path) {
    MessageName name;
    OsStatus status = OsStatus::Ok;
    if (ParseMessageName(message.fileName, name)) {
        status = RemoveFile(qmgrPath + '/' + message.queueDirectory + "/.desc/" + DescriptorName(name));
    }
    if (status != OsStatus::Ok) {
        return status;
    }
    return RemoveFile(path);
}

OsStatus ReturnMessage(const std::string& qmgrPath, const UnitMember& message, const std::string& path,
                       BackoutCount count) {
    MessageName name;
    if (!ParseMessageName(message.fileName, name)) {
        return OsStatus::Failed;
    }
    if (count == BackoutCount::kRaise) {
        name.backoutCount = std::min(name.backoutCount + 1, kMaxBackoutCount);
    }
    const std::string queuePath = qmgrPath + '/' + message.queueDirectory;
    OsStatus status = OsStatus::Exists;
    // In the meantime someone may have copied in a file of exactly this name. Neither may be lost, so this
    // message gets the next free nanosecond as its stamp.
    for (int attempt = 0; status == OsStatus::Exists && attempt < 1000; ++attempt, ++name.stampNs) {
        status = RenameNew(path, queuePath + '/' + FormatMessageName(name));
    }
    return status;
}

}  // namespace spoolmq
