// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/store/unit.h"
#include "spoolmq/store/process_lock.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "platform/directory.h"
#include "platform/file.h"
#include "platform/lock.h"
#include "platform/process.h"
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
    platform::ReleaseLockKeepingFile(unit.processLock);
    Unit fresh;
    fresh.sync = unit.sync;
    // If this fails, the id stays empty, and the next call that needs a directory fails.
    static_cast<void>(OpenUnit(unit.qmgrPath, fresh));
    unit = std::move(fresh);
}

FileStatus PublishMember(const Unit& unit, const UnitMember& member) {
    const std::string queuePath = unit.qmgrPath + '/' + member.queueDirectory;
    FileStatus status =
        platform::RenameNoReplace(MemberPath(unit, member), queuePath + '/' + member.fileName);
    if (status == FileStatus::kOk && unit.sync) {
        status = platform::SyncDirectory(queuePath);
    }
    return status;
}

// Commits a unit that consists of a single get. The rename to the stage "done" decides the commit.
FileStatus CommitSingleGet(Unit& unit, const UnitMember& member) {
    UnitMember done = member;
    done.stage = UnitStage::kDone;
    std::string donePath;
    FileStatus status = MakeMemberPath(unit, done, donePath);
    if (status == FileStatus::kOk) {
        status = platform::RenameNoReplace(MemberPath(unit, member), donePath);
    }
    // kNotFound is no failure: someone deleted the file, which is what this commit was about to do.
    if (status != FileStatus::kOk && status != FileStatus::kNotFound) {
        return status;
    }
    ReachCrashPoint("done-moved");
    const bool isSynced =
        !unit.sync || platform::SyncDirectory(MemberDirectory(unit, done)) == FileStatus::kOk;
    if (!isSynced || DeleteMessage(unit.qmgrPath, done, donePath) != FileStatus::kOk) {
        AbandonUnit(unit);
    }
    unit.members.clear();
    return FileStatus::kOk;
}

// Carries out a decided commit as far as possible. Returns whether everything is done.
bool FinishCommit(const Unit& unit, std::vector<UnitMember>& published) {
    bool isFinished = true;
    for (const UnitMember& member : unit.members) {
        if (member.stage == UnitStage::kGot) {
            isFinished &= DeleteMessage(unit.qmgrPath, member, MemberPath(unit, member)) == FileStatus::kOk;
        } else if (PublishMember(unit, member) == FileStatus::kOk) {
            published.push_back(member);
        } else {
            isFinished = false;
        }
        ReachCrashPoint("commit-step");
    }
    return isFinished;
}

FileStatus CommitSeveral(Unit& unit, std::vector<UnitMember>& published) {
    // The marker is renamed, not created for each commit, because creating a file is slow in a directory from
    // which many were just deleted.
    FileStatus status = platform::RenameNoReplace(OpenMarkerPath(unit), CommitMarkerPath(unit));
    if (status == FileStatus::kOk && unit.sync) {
        status = platform::SyncDirectory(UnitPath(unit));
    }
    if (status != FileStatus::kOk) {
        return status;
    }
    ReachCrashPoint("marked");
    const bool isFinished = FinishCommit(unit, published);
    // The marker is renamed last: until then, whatever is in the directory counts as committed.
    if (!isFinished ||
        platform::RenameNoReplace(CommitMarkerPath(unit), OpenMarkerPath(unit)) != FileStatus::kOk) {
        AbandonUnit(unit);
    }
    unit.members.clear();
    return FileStatus::kOk;
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

FileStatus OpenUnit(const std::string& qmgrPath, Unit& unit) {
    unit.qmgrPath = qmgrPath;
    FileStatus status = platform::MakeDirectory(UnitsPath(qmgrPath));
    while (status == FileStatus::kOk) {
        std::array<char, 64> id{};
        std::snprintf(id.data(), id.size(), "%lld-%08llx",
                      static_cast<long long>(platform::CurrentProcessId()),
                      static_cast<unsigned long long>(platform::RandomNumber() & 0xFFFFFFFF));
        unit.id = id.data();
        // The lock comes before the directory, because a directory whose lock is free may be removed by any
        // process at any time.
        status = AcquireProcessLock(LockPath(unit), unit.processLock);
        if (status == FileStatus::kBusy) {
            status = FileStatus::kOk;
            continue;
        }
        if (status != FileStatus::kOk) {
            break;
        }
        status = platform::MakeDirectory(UnitPath(unit));
        if (status == FileStatus::kOk) {
            status = platform::WriteNewFile(OpenMarkerPath(unit), "", 0, false);
        }
        if (status == FileStatus::kOk) {
            return status;
        }
        static_cast<void>(platform::RemoveEmptyDirectory(UnitPath(unit)));
        platform::ReleaseLock(LockPath(unit), unit.processLock);
        unit.processLock = platform::kNoLock;
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
        isEmpty &= platform::RemoveEmptyDirectory(directory) == FileStatus::kOk;
    }
    for (const UnitStage stage : kStages) {
        isEmpty &= platform::RemoveEmptyDirectory(path + '/' + StageName(stage)) == FileStatus::kOk;
    }
    isEmpty = isEmpty && platform::RemoveFile(OpenMarkerPath(unit)) == FileStatus::kOk;
    isEmpty = isEmpty && platform::RemoveEmptyDirectory(path) == FileStatus::kOk;
    if (isEmpty) {
        platform::ReleaseLock(LockPath(unit), unit.processLock);
    } else {
        platform::ReleaseLockKeepingFile(unit.processLock);
    }
    unit = Unit();
}

FileStatus MakeMemberPath(Unit& unit, const UnitMember& member, std::string& path) {
    if (unit.id.empty()) {
        const FileStatus status = OpenUnit(std::string(unit.qmgrPath), unit);
        if (status != FileStatus::kOk) {
            return status;
        }
    }
    const std::string directory = MemberDirectory(unit, member);
    path = directory + '/' + member.fileName;
    if (unit.createdDirectories.contains(directory)) {
        return FileStatus::kOk;
    }
    FileStatus status = platform::MakeDirectory(UnitPath(unit) + '/' + StageName(member.stage));
    if (status == FileStatus::kOk) {
        status = platform::MakeDirectory(directory);
    }
    if (status == FileStatus::kOk) {
        unit.createdDirectories.insert(directory);
    }
    return status;
}

FileStatus CommitUnit(Unit& unit, std::vector<UnitMember>& published) {
    if (unit.members.empty()) {
        return FileStatus::kOk;
    }
    if (unit.members.size() > 1) {
        return CommitSeveral(unit, published);
    }
    const UnitMember member = unit.members.front();
    if (member.stage == UnitStage::kGot) {
        return CommitSingleGet(unit, member);
    }
    const FileStatus status = PublishMember(unit, member);
    if (status != FileStatus::kOk) {
        return status;
    }
    published.push_back(member);
    unit.members.clear();
    return FileStatus::kOk;
}

FileStatus BackOutUnit(Unit& unit, std::vector<UnitMember>& returned) {
    bool isFinished = true;
    for (const UnitMember& member : unit.members) {
        const std::string path = MemberPath(unit, member);
        if (member.stage == UnitStage::kPut) {
            isFinished &= DeleteMessage(unit.qmgrPath, member, path) == FileStatus::kOk;
        } else if (ReturnMessage(unit.qmgrPath, member, path, BackoutCount::kRaise) == FileStatus::kOk) {
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
    return isFinished ? FileStatus::kOk : FileStatus::kFailed;
}

FileStatus DeleteMessage(const std::string& qmgrPath, const UnitMember& message, const std::string& path) {
    MessageName name;
    FileStatus status = FileStatus::kOk;
    if (ParseMessageName(message.fileName, name)) {
        status =
            platform::RemoveFile(qmgrPath + '/' + message.queueDirectory + "/.desc/" + DescriptorName(name));
    }
    if (status != FileStatus::kOk) {
        return status;
    }
    return platform::RemoveFile(path);
}

FileStatus ReturnMessage(const std::string& qmgrPath, const UnitMember& message, const std::string& path,
                         BackoutCount count) {
    MessageName name;
    if (!ParseMessageName(message.fileName, name)) {
        return FileStatus::kFailed;
    }
    if (count == BackoutCount::kRaise) {
        name.backoutCount = std::min(name.backoutCount + 1, kMaxBackoutCount);
    }
    const std::string queuePath = qmgrPath + '/' + message.queueDirectory;
    FileStatus status = FileStatus::kExists;
    // In the meantime someone may have copied in a file of exactly this name. Neither may be lost, so this
    // message gets the next free nanosecond as its stamp.
    for (int attempt = 0; status == FileStatus::kExists && attempt < 1000; ++attempt, ++name.stampNs) {
        status = platform::RenameNoReplace(path, queuePath + '/' + FormatMessageName(name));
    }
    return status;
}

}  // namespace spoolmq
