// SPDX-License-Identifier: Apache-2.0

// Claims a message that was found: takes it away from all other readers.
#include "platform/file.h"
#include "spoolmq/store/crash_points.h"
#include "spoolmq/store/store.h"

namespace spoolmq {

namespace {

// The most stamps that are tried for one message. A unit never holds nearly this many copied-in files of one
// name and one clock tick.
constexpr int kMaxClaimNameAttempts = 1000;

UnitStage StageOf(Syncpoint syncpoint) {
    return syncpoint == Syncpoint::kYes ? UnitStage::kGot : UnitStage::kTaking;
}

UnitMember MemberOf(const StoreQueue& queue, const FoundMessage& found, UnitStage stage) {
    return {stage, queue.state->directory, FormatMessageName(found.name)};
}

// Decides what a failed rename into the unit means.
Status MoveError(Unit& unit, const std::string& from, const std::string& to, FileStatus reason) {
    platform::FileInfo info;
    if (reason == FileStatus::kNotFound && platform::StatPath(from, info) == FileStatus::kOk) {
        // The message still exists, so it is the unit's directory that is missing: someone has removed it.
        // The next attempt creates it again.
        unit.createdDirectories.erase(to.substr(0, to.rfind('/')));
        return {StatusCode::kMessageGone, {}};
    }
    if (reason == FileStatus::kNotFound || reason == FileStatus::kBusy) {
        return {StatusCode::kMessageGone, {}};
    }
    return FileError(from);
}

// Moves the message's file into the unit and sets `path` to its new place. `found` gets a stamp that is later
// by some nanoseconds if the unit already holds a message of its name, which happens when two files of the
// same name are copied in within one clock tick.
Status MoveIntoUnit(StoreQueue& queue, FoundMessage& found, UnitStage stage, std::string& path) {
    Unit& unit = queue.connection->unit;
    const std::string from = queue.state->path + '/' + found.fileName;
    FileStatus status = FileStatus::kExists;
    for (int attempt = 0; status == FileStatus::kExists && attempt < kMaxClaimNameAttempts; ++attempt) {
        if (attempt > 0) {
            ++found.name.stampNs;
        }
        if (MakeMemberPath(unit, MemberOf(queue, found, stage), path) != FileStatus::kOk) {
            return FileError(UnitsPath(unit.qmgrPath) + '/' + unit.id);
        }
        status = platform::RenameNoReplace(from, path);
    }
    return status == FileStatus::kOk ? Status() : MoveError(unit, from, path, status);
}

// Marks the file's entry as gone if it is the first in the listing, as it usually is. Any other entry is
// marked later, when its file cannot be opened.
void MarkFirstGone(Listing& listing, const std::string& fileName) {
    if (listing.first < listing.entries.size() && listing.entries[listing.first].fileName == fileName) {
        listing.entries[listing.first].isGone = true;
    }
}

// Returns whether the file that was claimed is the one that was found: a copied-in file may have been
// replaced by another file of the same name in between.
bool IsFileAsFound(const std::string& path, const FoundMessage& found) {
    platform::FileInfo info;
    return platform::StatPath(path, info) == FileStatus::kOk && info.identity == found.identity &&
           info.bytes == found.bytes;
}

}  // namespace

Status ClaimMessage(StoreQueue& queue, FoundMessage& found, Syncpoint syncpoint) {
    Unit& unit = queue.connection->unit;
    std::string path;
    Status status = MoveIntoUnit(queue, found, StageOf(syncpoint), path);
    if (!status.IsOk()) {
        return status;
    }
    ReachCrashPoint("got");
    MarkFirstGone(queue.listing, found.fileName);
    if (syncpoint == Syncpoint::kYes) {
        unit.members.push_back(MemberOf(queue, found, UnitStage::kGot));
    }
    if (!found.isCopiedIn || IsFileAsFound(path, found)) {
        return {};
    }
    UndoClaim(queue, found, syncpoint);
    return {StatusCode::kMessageGone, {}};
}

Status FinishGet(StoreQueue& queue, FoundMessage& found) {
    ReleaseFound(found);
    Unit& unit = queue.connection->unit;
    const UnitMember done = MemberOf(queue, found, UnitStage::kDone);
    std::string from;
    std::string to;
    ReachCrashPoint("taken");
    FileStatus status = MakeMemberPath(unit, MemberOf(queue, found, UnitStage::kTaking), from);
    if (status == FileStatus::kOk) {
        status = MakeMemberPath(unit, done, to);
    }
    if (status == FileStatus::kOk) {
        status = platform::RenameNoReplace(from, to);
    }
    if (status == FileStatus::kOk) {
        status = DeleteMessage(unit.qmgrPath, done, to);
    }
    return status == FileStatus::kOk ? Status() : FileError(to);
}

void UndoClaim(StoreQueue& queue, FoundMessage& found, Syncpoint syncpoint) {
    ReleaseFound(found);
    Unit& unit = queue.connection->unit;
    const UnitMember member = MemberOf(queue, found, StageOf(syncpoint));
    std::string path;
    FileStatus status = MakeMemberPath(unit, member, path);
    if (status == FileStatus::kOk) {
        status = ReturnMessage(unit.qmgrPath, member, path, BackoutCount::kKeep);
    }
    if (status != FileStatus::kOk) {
        // Otherwise a commit would delete a message that its reader has not received.
        if (syncpoint == Syncpoint::kYes) {
            unit.isRollbackOnly = true;
        }
        return;
    }
    if (syncpoint == Syncpoint::kYes) {
        unit.members.pop_back();
    }
    ++queue.connection->ownReturns;
    CountReturn(queue.state->counters);
}

}  // namespace spoolmq
