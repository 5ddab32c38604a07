// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/repair.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "mqam/checkpoint/integrity.h"
#include "platform/durable_file.h"
#include "platform/file.h"

namespace mqam {

std::string FreeName(const std::string& path, const std::string& suffix) {
    std::string name = path + suffix;
    const auto isTaken = [&name] {
        const platform::PathKind kind = platform::ProbePath(name);
        return kind == platform::PathKind::kFile || kind == platform::PathKind::kOther;
    };
    for (int number = 2; isTaken(); ++number)
        name = path + suffix + std::to_string(number);
    return name;
}

namespace {

RepairStep Make(Repair::Kind kind, const std::string& path, std::uint64_t bytes = 0) {
    return {RepairStep::Kind::kMake, {kind, path, bytes}, ""};
}

// Sorts the temporary files by what can be done with them.
struct Temporaries {
    std::vector<CheckpointScan> spare;  // files without records, or copies: nothing is lost with them
    std::vector<CheckpointScan> whole;  // complete files with records of their own
    // These contain records of their own, but are incomplete or belong to another checkpoint.
    std::vector<CheckpointScan> foreign;
};

std::string Names(const std::vector<CheckpointScan>& files) {
    std::string names;
    for (const CheckpointScan& file : files)
        names += (names.empty() ? "" : ", ") + file.path;
    return names;
}

bool IsUnreadable(const CheckpointScan& scan) {
    return scan.shape == CheckpointShape::kUnreadable;
}

// Returns whether the file could be the one that an interrupted rewrite was about to put in place.
bool CanTakePlace(const CheckpointScan& temporary, const std::optional<PositionData>& stored) {
    return CheckIntegrity(temporary) == Integrity::kIntact &&
           (!stored || stored->CkPtSeq == temporary.sequence);
}

Temporaries SortTemporaries(const std::vector<CheckpointScan>& found, const CheckpointScan& file,
                            const std::optional<PositionData>& stored) {
    Temporaries sorted;
    for (const CheckpointScan& temporary : found) {
        std::string reason;
        const bool damaged = CheckIntegrity(temporary) == Integrity::kDamaged;
        if (!damaged && IsCopyOfRecords(temporary, file, reason)) {
            sorted.spare.push_back(temporary);
        } else if (file.records.empty() && CanTakePlace(temporary, stored)) {
            sorted.whole.push_back(temporary);
        } else {
            sorted.foreign.push_back(temporary);
        }
    }
    return sorted;
}

// If the checkpoint file has no record or is missing, the one complete temporary file takes its place.
void PlanReplacement(const std::string& checkpointPath, const CheckpointScan& file,
                     const CheckpointScan& temporary, RepairPlan& plan) {
    if (file.shape != CheckpointShape::kMissing) {
        RepairStep setAside;
        setAside.kind = RepairStep::Kind::kSetAside;
        setAside.keptPath = FreeName(checkpointPath, ".kept");
        plan.steps.push_back(setAside);
    }
    plan.steps.push_back(Make(Repair::Kind::kRenameTemporary, temporary.path));
}

void PlanCut(const std::string& checkpointPath, const CheckpointScan& file, RepairPlan& plan) {
    if (CheckIntegrity(file) != Integrity::kIncomplete || file.intactBytes == 0) return;
    const Repair cut = {Repair::Kind::kCutTornTail, checkpointPath, file.intactBytes};
    plan.steps.push_back({RepairStep::Kind::kKeepTail, cut, FreeName(checkpointPath, ".torn")});
    plan.steps.push_back({RepairStep::Kind::kMake, cut, ""});
}

// Chooses, of several complete files of one checkpoint, the one that contains the records of all others; the
// others are then spare. Temporary files of earlier rewrites can also be copies of its records.
void ChooseReplacement(Temporaries& sorted) {
    for (const CheckpointScan& candidate : sorted.whole) {
        std::string reason;
        const bool holdsAll = std::all_of(
            sorted.whole.begin(), sorted.whole.end(), [&candidate, &reason](const CheckpointScan& other) {
                return other.sequence == candidate.sequence && IsCopyOfRecords(other, candidate, reason);
            });
        if (!holdsAll) continue;
        const CheckpointScan chosen = candidate;
        Temporaries chosenOne = {sorted.spare, {chosen}, {}};
        for (const CheckpointScan& other : sorted.whole) {
            if (other.path != chosen.path) chosenOne.spare.push_back(other);
        }
        for (const CheckpointScan& other : sorted.foreign) {
            const bool copy =
                CheckIntegrity(other) != Integrity::kDamaged && IsCopyOfRecords(other, chosen, reason);
            (copy ? chosenOne.spare : chosenOne.foreign).push_back(other);
        }
        sorted = chosenOne;
        return;
    }
}

Status FailBySystem() {
    return Status::Transient(std::strerror(errno));
}

Status CopyStream(std::FILE* from, int to) {
    char piece[65536];
    while (const std::size_t got = std::fread(piece, 1, sizeof piece, from)) {
        if (!platform::WriteWhole(to, piece, got)) return FailBySystem();
    }
    if (std::ferror(from) != 0 || platform::SyncFile(to) != 0) return FailBySystem();
    return {};
}

// Copies the file from `offset` to its end into the new file `to`, and closes that.
Status CopyTailTo(std::FILE* from, std::uint64_t offset, int to) {
    Status copied = platform::MoveStreamTo(from, offset) ? CopyStream(from, to) : FailBySystem();
    if (platform::CloseDescriptor(to) != 0 && copied.IsOk()) copied = FailBySystem();
    return copied;
}

Status CopyTail(const std::string& path, std::uint64_t offset, const std::string& copyPath) {
    std::FILE* from = std::fopen(path.c_str(), "rb");
    if (from == nullptr) return FailBySystem();
    const int to = platform::OpenForWriting(copyPath, platform::OpenMode::kCreate);
    Status copied = to < 0 ? FailBySystem() : CopyTailTo(from, offset, to);
    (void)std::fclose(from);
    if (to >= 0 && !copied.IsOk()) (void)std::remove(copyPath.c_str());
    std::string error;
    if (!copied.IsOk() || platform::SyncParentDirectory(copyPath, error)) return copied;
    return Status::Transient(error);
}

std::string ExplainForeign(const std::string& checkpointPath, const Temporaries& sorted,
                           const std::optional<PositionData>& stored) {
    return Names(sorted.foreign) + (sorted.foreign.size() == 1 ? " contains" : " contain") +
           " records that " + checkpointPath + " does not contain, and cannot take its place (incomplete" +
           (stored ? ", or of another checkpoint than the position" : "") +
           "); nothing was done with them: if no other load uses this directory, move them to a safe place by hand";
}

RepairPlan Obstructed(const std::string& obstacle) {
    RepairPlan plan;
    plan.obstacle = obstacle;
    return plan;
}

}  // namespace

Status MakeRepair(const std::string& checkpointPath, const Repair& repair) {
    std::string error;
    if (repair.kind == Repair::Kind::kRenameTemporary) {
        if (platform::RenameDurably(repair.path, checkpointPath, error)) return {};
        return Status::Transient(error);
    }
    const CheckpointScan file = ScanCheckpointFile(checkpointPath, kLargestRecordBytes);
    if (repair.kind == Repair::Kind::kCutTornTail) {
        if (file.intactBytes != repair.bytes || IsDamaged(file)) {
            return Status::Refused(checkpointPath + " has changed in the meantime and is not truncated");
        }
        if (platform::TruncateDurably(checkpointPath, repair.bytes, error)) return {};
        return Status::Transient(error);
    }
    const CheckpointScan temporary = ScanCheckpointFile(repair.path, kLargestRecordBytes);
    if (temporary.shape == CheckpointShape::kMissing) return {};
    if (!IsCopyOfRecords(temporary, file, error)) {
        if (!error.empty()) return Status::Transient(error);
        return Status::Refused(repair.path + " contains records that " + checkpointPath +
                               " does not contain, and is not deleted; " + HowToRepair(checkpointPath));
    }
    return platform::DeleteDurably(repair.path, error) ? Status() : Status::Transient(error);
}

std::string DescribeRepair(const std::string& checkpointPath, const Repair& repair) {
    switch (repair.kind) {
        case Repair::Kind::kRenameTemporary:
            return "rename " + repair.path + " to " + checkpointPath +
                   " (a rewrite was interrupted after it deleted the checkpoint file)";
        case Repair::Kind::kDeleteTemporary:
            return "delete " + repair.path +
                   " (a rewrite was interrupted; its records are in the checkpoint file)";
        case Repair::Kind::kCutTornTail:
            return "truncate " + checkpointPath + " to " + std::to_string(repair.bytes) +
                   " bytes (an incomplete record was never committed: it is still on the queue)";
    }
    return "";
}

RepairPlan PlanRepair(const std::string& checkpointPath, const std::optional<PositionData>& stored,
                      std::uint64_t maxRecordBytes) {
    const CheckpointScan file = ScanCheckpointFile(checkpointPath, maxRecordBytes);
    if (IsUnreadable(file)) return Obstructed(checkpointPath + " cannot be read: " + file.error);
    std::vector<CheckpointScan> found;
    for (const std::string& path : FindTemporaryFiles(checkpointPath)) {
        found.push_back(ScanCheckpointFile(path, maxRecordBytes));
        if (IsUnreadable(found.back())) return Obstructed(path + " cannot be read: " + found.back().error);
    }
    if (CheckIntegrity(file) == Integrity::kDamaged) {
        return Obstructed(checkpointPath + " is damaged, so nothing is changed; `mqam checkpoint verify " +
                          checkpointPath + "` shows what is intact; restore an undamaged copy of it");
    }
    Temporaries sorted = SortTemporaries(found, file, stored);
    ChooseReplacement(sorted);
    if (sorted.whole.size() > 1) {
        return Obstructed(
            "each of " + Names(sorted.whole) + " could take the place of " + checkpointPath +
            "; give the position of the load (--position), or move the files of other loads to a safe "
            "place by hand");
    }
    if (file.shape == CheckpointShape::kMissing && sorted.whole.empty()) {
        return Obstructed(
            checkpointPath + " is missing and there is no " + (found.empty() ? "" : "complete ") +
            "temporary checkpoint file to take its place; restore the file" +
            (sorted.foreign.empty() ? "" : ". " + ExplainForeign(checkpointPath, sorted, stored)));
    }
    RepairPlan plan;
    if (!sorted.whole.empty()) {
        PlanReplacement(checkpointPath, file, sorted.whole.front(), plan);
    } else {
        PlanCut(checkpointPath, file, plan);
    }
    for (const CheckpointScan& temporary : sorted.spare)
        plan.steps.push_back(Make(Repair::Kind::kDeleteTemporary, temporary.path));
    if (!sorted.foreign.empty()) plan.obstacle = ExplainForeign(checkpointPath, sorted, stored);
    return plan;
}

std::string DescribeStep(const std::string& checkpointPath, const RepairStep& step) {
    switch (step.kind) {
        case RepairStep::Kind::kMake: return DescribeRepair(checkpointPath, step.repair);
        case RepairStep::Kind::kSetAside:
            return "rename " + checkpointPath + " to " + step.keptPath + " (it has no complete record)";
        case RepairStep::Kind::kKeepTail:
            return "copy " + checkpointPath + ", from offset " + std::to_string(step.repair.bytes) +
                   " to its end, to " + step.keptPath;
    }
    return "";
}

Status TakeStep(const std::string& checkpointPath, const RepairStep& step) {
    std::string error;
    switch (step.kind) {
        case RepairStep::Kind::kMake: return MakeRepair(checkpointPath, step.repair);
        case RepairStep::Kind::kSetAside:
            if (platform::RenameDurably(checkpointPath, step.keptPath, error)) return {};
            break;
        case RepairStep::Kind::kKeepTail: return CopyTail(checkpointPath, step.repair.bytes, step.keptPath);
    }
    return Status::Transient(error);
}

}  // namespace mqam
