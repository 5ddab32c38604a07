// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/abandoned_load.h"

#include <cstring>
#include <memory>

#include "mqam/base/progress.h"
#include "mqam/checkpoint/repair.h"
#include "mqam/load/accepted_loss.h"
#include "mqam/load/attempt_journal.h"
#include "mqam/load/record_export.h"
#include "mqam/target/load_places.h"
#include "mqam/target/lock_file.h"
#include "mqam/target/target_kind.h"
#include "platform/durable_file.h"
#include "platform/file.h"

namespace mqam {

namespace {

// The state names the format as the user does.
RecordFormat FormatOf(const RestartState& state) {
    for (const RecordFormatRow& row : kRecordFormats) {
        if (state.format == row.name) return row.format;
    }
    return RecordFormat::kLength;
}

Status MakeTargetOf(const AbandonRequest& request, std::unique_ptr<Target>& target) {
    TargetRequest asked;
    asked.name = request.state.target;
    asked.restartFile = request.restartFile;
    asked.format = FormatOf(request.state);
    return FindTargetKind(asked.name).make(asked, target);
}

// What is to be saved and deleted.
struct AbandonPlan {
    CheckpointScan scan;
    ExportPlan unloaded;
    std::string exportPath;  // empty if there is nothing to save
    bool isComplete = true;
};

Status PlanAbandon(const AbandonRequest& request, const Target& target, AbandonPlan& plan) {
    const std::string& path = request.state.checkpointFile;
    if (!FindTemporaryFiles(path).empty()) {
        return Status::Refused("there is a temporary checkpoint file next to " + path +
                               ", which may contain the only copy of records; " + HowToRepair(path));
    }
    plan.scan = ScanCheckpointFile(path, kLargestRecordBytes);
    if (plan.scan.shape == CheckpointShape::kUnreadable)
        return Status::Transient(path + " cannot be read: " + plan.scan.error);
    plan.unloaded = PlanExport(plan.scan, &request.state);
    plan.isComplete = IsComplete(plan.unloaded) && !HasNoSequence(plan.scan) &&
                      plan.scan.shape != CheckpointShape::kMissing;
    if (CountRecords(plan.unloaded) == 0) return {};
    plan.exportPath = request.exportPath;
    if (plan.exportPath.empty()) {
        std::string besideTarget = target.Places().directory;
        besideTarget.erase(besideTarget.size() - std::strlen(kLoadDirectorySuffix));
        plan.exportPath = FreeName(besideTarget, DatedSuffix(".unloaded"));
    }
    return {};
}

std::string DescribeAbandon(const RestartState& state, const AbandonPlan& plan) {
    std::string text = "giving up the load begun " + state.begun + "\n  stay        " +
                       FormatRecords(state.records) + " in " + state.target + "\n";
    if (plan.exportPath.empty()) {
        text += "  saved       nothing: no record that can be read is missing in the target\n";
    } else {
        text += "  saved       " + FormatRecords(CountRecords(plan.unloaded)) + " that " +
                (CountRecords(plan.unloaded) == 1 ? "is" : "are") + " not in the target, in " +
                plan.exportPath +
                "; the last of them can be on the queue too, if its commit was interrupted\n";
    }
    if (plan.scan.shape == CheckpointShape::kMissing) {
        text += "  lost        what " + state.checkpointFile + " contained: it is missing\n";
    } else if (!plan.isComplete) {
        text += DescribeExport(plan.unloaded) + "  kept        the damaged file, under another name\n";
    }
    return text + "  queue       every other message is still there\n";
}

Status DeleteIfThere(const std::string& path) {
    std::string error;
    if (path.empty() || platform::ProbePath(path) == platform::PathKind::kMissing) return {};
    return platform::DeleteDurably(path, error) ? Status()
                                                : Status::Transient("cannot delete " + path + ": " + error);
}

// Deletes the files; the state goes last, because without it the checkpoint file would be no one's.
Status RemoveFiles(const RestartState& state, const AbandonPlan& plan, Target& target) {
    // Bytes that the state does not count are in the saved records too.
    Status status = target.RollBackTo(state);
    if (status.Code() == StatusCode::kTransient) return status;
    std::string error;
    if (!plan.isComplete && plan.scan.shape != CheckpointShape::kMissing) {
        const std::string kept = FreeName(state.checkpointFile, DatedSuffix(".kept"));
        if (!platform::RenameDurably(state.checkpointFile, kept, error))
            return Status::Transient("cannot rename " + state.checkpointFile + " to " + kept + ": " + error);
    }
    status = DeleteIfThere(state.checkpointFile);
    for (const std::string& path : FilesOfJournal(state.checkpointFile)) {
        if (status.IsOk()) status = DeleteIfThere(path);
    }
    if (status.IsOk()) status = DeleteIfThere(state.logFile);
    return status.IsOk() ? target.ForgetState() : status;
}

// Makes the checkpoint file what an attempt would make of it: after a loss of power only the journal has its records.
Status RestoreCheckpointFile(const RestartState& state) {
    StoredJournal journal;
    const Status read =
        ReadStoredJournal(state.checkpointFile, state.position.has_value(), kLargestRecordBytes, journal);
    return read.IsOk() ? RestoreFromJournal(state.checkpointFile, journal, [](const std::string&) {}) : read;
}

Status AbandonLocked(const AbandonRequest& request, Target& target, std::string& report, bool& isComplete) {
    std::optional<RestartState> now;
    Status status = target.LoadState(now);
    if (!status.IsOk()) return status;
    if (!now || FormatRestartState(*now) != FormatRestartState(request.state))
        return Status::Refused(
            "nothing was changed: the load has gone further in the meantime; run the command again");
    status = RestoreCheckpointFile(request.state);
    if (!status.IsOk()) return status;
    AbandonPlan plan;
    status = PlanAbandon(request, target, plan);
    if (!status.IsOk()) return status;
    isComplete = plan.isComplete;
    ExportCounts counts;
    if (!plan.exportPath.empty()) {
        status = ExportRecords(request.state.checkpointFile, plan.unloaded, plan.exportPath,
                               FormatOf(request.state), counts);
        if (!status.IsOk()) return status;
    }
    report = DescribeAbandon(request.state, plan);
    if (!request.isConfirmed(report)) {
        return Status::Refused("the load is not given up, and the same command resumes it" +
                               (plan.exportPath.empty() ? "" : "; " + plan.exportPath + " can be deleted"));
    }
    return RemoveFiles(request.state, plan, target);
}

}  // namespace

Status AbandonLoad(const AbandonRequest& request, std::string& report, bool& isComplete) {
    if (IsOver(request.state)) return Status::Refused("the load is complete: there is nothing to give up");
    std::unique_ptr<Target> target;
    Status status = MakeTargetOf(request, target);
    if (!status.IsOk()) return status;
    status = target->AcquireLock(TargetLock::kCommand, 0);
    if (!status.IsOk()) return status;
    // A worker can outlive its command for a moment.
    const std::string lock = CheckpointLockPath(request.state.checkpointFile);
    status = target->AcquireLock(TargetLock::kAttempt, 0);
    if (status.IsOk()) status = AcquireLockFile(lock, 0);
    if (status.IsOk()) status = AbandonLocked(request, *target, report, isComplete);
    ReleaseLockFile(lock);
    target->ReleaseLock(TargetLock::kAttempt);
    target->ReleaseLock(TargetLock::kCommand);
    return status;
}

}  // namespace mqam
