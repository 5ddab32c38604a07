#include "mqam/checkpoint/repair.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "mqam/checkpoint/integrity.h"
#include "platform/disk_changes.h"
#include "platform/platform.h"

namespace mqam {

namespace {

// A name beside the file that nothing has yet: FILE.kept, FILE.kept2 ...
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

RepairStep Make(Repair::Kind kind, const std::string& path, std::uint64_t bytes = 0) {
    return {RepairStep::Kind::kMake, {kind, path, bytes}, ""};
}

// The temporary files, sorted by what they can be.
struct Temporaries {
    std::vector<CheckpointScan> spare;  // without records, or copies: nothing is lost with them
    std::vector<CheckpointScan> whole;  // with records of their own, and complete
    std::vector<CheckpointScan>
        foreign;  // with records of their own, but incomplete or of another checkpoint
};

std::string Names(const std::vector<CheckpointScan>& files) {
    std::string names;
    for (const CheckpointScan& file : files)
        names += (names.empty() ? "" : ", ") + file.path;
    return names;
}

bool IsUnreadable(const CheckpointScan& facts) {
    return facts.shape == CheckpointShape::kUnreadable;
}

// Whether the file could be what an interrupted rewrite was about to put in place.
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

// No record is in the checkpoint file's place: the one whole temporary file takes it.
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

// Of several whole files of one checkpoint the one that holds the records of all others; they are spare then.
// Temporary files of rewrites before it can be copies of its records, too.
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

bool Fail(std::string& reason) {
    reason = std::strerror(errno);
    return false;
}

bool CopyStream(std::FILE* from, int to, std::string& reason) {
    char piece[65536];
    while (const std::size_t got = std::fread(piece, 1, sizeof piece, from)) {
        for (std::size_t done = 0; done < got;) {
            const long written = platform::WriteBytes(to, piece + done, got - done);
            if (written <= 0) return Fail(reason);
            done += static_cast<std::size_t>(written);
        }
    }
    return (std::ferror(from) == 0 && platform::SyncFile(to) == 0) || Fail(reason);
}

bool CopyTail(const std::string& path, std::uint64_t offset, const std::string& copyPath,
              std::string& reason) {
    std::FILE* from = std::fopen(path.c_str(), "rb");
    if (from == nullptr) return Fail(reason);
    const int to = platform::OpenForWriting(copyPath, platform::OpenMode::kCreate);
    bool copied = (to >= 0 && platform::MoveStreamTo(from, offset)) || Fail(reason);
    copied = copied && CopyStream(from, to, reason);
    if (to >= 0 && platform::CloseDescriptor(to) != 0 && copied) copied = Fail(reason);
    (void)std::fclose(from);
    if (to >= 0 && !copied) (void)std::remove(copyPath.c_str());
    return copied && platform::SyncParentDirectory(copyPath, reason);
}

std::string ExplainForeign(const std::string& checkpointPath, const Temporaries& sorted,
                           const std::optional<PositionData>& stored) {
    return Names(sorted.foreign) + (sorted.foreign.size() == 1 ? " holds" : " hold") + " records that " +
           checkpointPath + " does not hold, and cannot take its place (incomplete" +
           (stored ? ", or of another checkpoint than the position" : "") +
           "); left as they are: when no other load uses this folder, move them to a place of safety by hand";
}

RepairPlan Obstructed(const std::string& obstacle) {
    RepairPlan plan;
    plan.obstacle = obstacle;
    return plan;
}

}  // namespace

RepairPlan PlanRepair(const std::string& checkpointPath, const std::optional<PositionData>& stored,
                      std::uint64_t maxRecordBytes) {
    const CheckpointScan file = ScanCheckpointFile(checkpointPath, maxRecordBytes);
    if (IsUnreadable(file)) return Obstructed(checkpointPath + " cannot be read: " + file.reason);
    std::vector<CheckpointScan> found;
    for (const std::string& path : FindTemporaryFiles(checkpointPath)) {
        found.push_back(ScanCheckpointFile(path, maxRecordBytes));
        if (IsUnreadable(found.back())) return Obstructed(path + " cannot be read: " + found.back().reason);
    }
    if (CheckIntegrity(file) == Integrity::kDamaged) {
        return Obstructed(checkpointPath + " is damaged and nothing is changed; `mqam checkpoint verify " +
                          checkpointPath + "` tells what is intact; give back an undamaged copy of it");
    }
    Temporaries sorted = SortTemporaries(found, file, stored);
    ChooseReplacement(sorted);
    if (sorted.whole.size() > 1) {
        return Obstructed(
            "each of " + Names(sorted.whole) + " could take the place of " + checkpointPath +
            "; give the position of the load (--position), or move those of other loads to a place of "
            "safety by hand");
    }
    if (file.shape == CheckpointShape::kMissing && sorted.whole.empty()) {
        return Obstructed(
            checkpointPath + " is missing and there is no " + (found.empty() ? "" : "complete ") +
            "temporary checkpoint file to take its place; give the file back" +
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
            return "rename " + checkpointPath + " to " + step.keptPath + " (no whole record is in it)";
        case RepairStep::Kind::kKeepTail:
            return "copy " + checkpointPath + " from offset " + std::to_string(step.repair.bytes) +
                   " on to " + step.keptPath;
    }
    return "";
}

bool TakeStep(const std::string& checkpointPath, const RepairStep& step, std::string& reason) {
    switch (step.kind) {
        case RepairStep::Kind::kMake: return MakeRepair(checkpointPath, step.repair, reason);
        case RepairStep::Kind::kSetAside:
            return platform::RenameDurably(checkpointPath, step.keptPath, reason);
        case RepairStep::Kind::kKeepTail:
            return CopyTail(checkpointPath, step.repair.bytes, step.keptPath, reason);
    }
    return false;
}

}  // namespace mqam
