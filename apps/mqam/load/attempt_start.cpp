// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/attempt_start.h"

#include "mqam/base/progress.h"
#include "mqam/base/utc_time.h"
#include "mqam/checkpoint/repair.h"
#include "mqam/load/accepted_loss.h"
#include "mqam/load/completion.h"
#include "mqam/load/read_wait.h"
#include "mqam/target/lock_file.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace mqam {

namespace {

constexpr int kAttemptLockTimeoutSeconds = 10;

// Ends the attempt because a call of the target failed before anything was written to it.
bool FailToBegin(AttemptContext& attempt, const Status& failed) {
    return failed.Code() == StatusCode::kRefused ? RefuseAttempt(attempt.result, failed.Error())
                                                 : EndByTarget(attempt.result, failed);
}

// Ends the attempt if a lock was not acquired.
bool CheckLocked(AttemptContext& attempt, const Status& locked) {
    if (locked.IsOk()) return true;
    return locked.Code() == StatusCode::kRefused ? RefuseAttempt(attempt.result, locked.Error())
                                                 : EndByFile(attempt.result, locked.Error());
}

// Reads the module's report and describes the load that the user asked for in `requested`.
bool ReadReport(AttemptContext& attempt, RestartState& requested) {
    StartupReport& report = attempt.report;
    if (FetchReport(attempt.session, false, report) != pmrcOK) {
        return EndByModule(attempt.result, attempt.session);
    }
    if (attempt.observer.report) attempt.observer.report(report);
    if (!report.truncatedParameter.empty()) return RefuseAttempt(attempt.result, DescribeTruncation(report));
    if (report.checkpointFile.empty()) {
        return RefuseAttempt(attempt.result,
                             "a load that can be restarted needs a checkpoint file: give --ckfile FILE");
    }
    if (!report.stopsAtDuplicate) {
        return RefuseAttempt(
            attempt.result,
            "a load that can be restarted needs --tdm yes: without it, a message that a crash "
            "puts back on the queue is loaded twice");
    }
    if (!report.opensExclusively) {
        return RefuseAttempt(
            attempt.result,
            "the module does not open the queue exclusively, as a load that can be restarted "
            "needs it: check that each keyword in --init or --parmfile has its value");
    }
    requested.queueManager = report.queueManager;
    requested.queue = report.queue;
    requested.checkpointFile = RealPath(report.checkpointFile);
    if (requested.checkpointFile != platform::AbsolutePath(report.checkpointFile)) {
        return RefuseAttempt(attempt.result, report.checkpointFile + " is a link to " +
                                                 requested.checkpointFile +
                                                 ": the module would replace the link; name that file");
    }
    requested.target = attempt.target.Name();
    requested.format = attempt.target.Format();
    requested.directory = attempt.settings.directory;
    requested.command = attempt.settings.command;
    if (!report.logFile.empty()) requested.logFile = platform::AbsolutePath(report.logFile);
    return true;
}

struct Identity {
    const char* what;
    std::string RestartState::*part;
};

constexpr Identity kIdentities[] = {
    {"queue manager", &RestartState::queueManager},
    {"queue", &RestartState::queue},
    {"checkpoint file", &RestartState::checkpointFile},
    {"target", &RestartState::target},
    {"format", &RestartState::format},
};

// Returns the first part in which the two loads differ, or null if they are the same.
const Identity* FindDifference(const RestartState& stored, const RestartState& requested) {
    for (const Identity& identity : kIdentities) {
        const std::string& part = stored.*identity.part;
        // A link may have taken the place of a file that was moved.
        if (part != requested.*identity.part && platform::FollowLinks(part) != requested.*identity.part)
            return &identity;
    }
    return nullptr;
}

bool RefuseOtherLoad(AttemptContext& attempt, const Identity& difference, const RestartState& stored,
                     const RestartState& requested) {
    return RefuseAttempt(attempt.result,
                         attempt.target.StateName() + " belongs to an unfinished load with " +
                             difference.what + " " + stored.*difference.part + ", not " +
                             requested.*difference.part +
                             ": finish that load with its own command first, or keep the restart "
                             "information of this load elsewhere");
}

// Two uses of one file would overwrite it, or delete it when the load ends or a lock is released.
bool HasNoPathConflict(AttemptContext& attempt, const RestartState& requested) {
    std::vector<LoadFile> files = attempt.target.Files();
    files.push_back({requested.checkpointFile, "checkpoint file"});
    for (const std::string& path : FilesOfJournal(requested.checkpointFile))
        files.push_back({path, "journal of the checkpoint file"});
    files.push_back({CheckpointLockPath(requested.checkpointFile), "lock of the checkpoint file"});
    if (!requested.logFile.empty()) files.push_back({requested.logFile, "log"});
    const Status checked = CheckPathConflicts(files);
    return checked.IsOk() || RefuseAttempt(attempt.result, checked.Error());
}

// The module overwrites a log that it finds, and the end of the load deletes it.
bool IsLogFree(AttemptContext& attempt, const std::string& log) {
    std::uint64_t bytes = 0;
    if (log.empty() || platform::ProbePath(log, bytes) != platform::PathKind::kFile || bytes == 0)
        return true;
    return RefuseAttempt(attempt.result,
                         log +
                             " exists: the log of another load would be overwritten; move it away, or delete "
                             "it once that load is finished");
}

// Asks whether to continue without what is lost, and does so. Returns false if the attempt is over.
bool ContinueWithoutLoss(AttemptContext& attempt, const CheckpointScan& scan,
                         const std::vector<std::string>& temporaries, const RestartState& stored) {
    AcceptedLoss loss;
    const Status planned = PlanAcceptedLoss(scan, temporaries, stored,
                                            attempt.settings.checkpointEveryRecords, attempt.target, loss);
    const std::string& reason = attempt.decision.message;
    if (!planned.IsOk()) {
        return planned.Code() == StatusCode::kRefused
                   ? RefuseAttempt(attempt.result, reason + "; " + planned.Error())
                   : EndByTarget(attempt.result, planned);
    }
    if (!attempt.observer.acceptLoss(reason + "\n" + loss.question))
        return RefuseAttempt(attempt.result, "the loss was not accepted: nothing was changed");
    const Status accepted = AcceptLoss(loss);
    if (accepted.IsOk() && attempt.observer.repaired) {
        attempt.observer.repaired(loss.checkpointFile + " contains what can be read and is not loaded yet: " +
                                  FormatRecords(CountRecords(loss.unloaded)));
    }
    return accepted.IsOk() ||
           EndByFile(attempt.result, "could not continue without what is lost: " + accepted.Error() + "; " +
                                         loss.checkpointFile + " is unchanged");
}

// Ends the attempt because of a file next to the checkpoint file.
bool FailByStatus(AttemptContext& attempt, const Status& failed) {
    return failed.Code() == StatusCode::kRefused ? RefuseAttempt(attempt.result, failed.Error())
                                                 : EndByFile(attempt.result, failed.Error());
}

bool HasJournalLibrary(AttemptContext& attempt) {
    const AttemptSettings& settings = attempt.settings;
    if (settings.durability == Durability::kProcess ||
        platform::ProbePath(settings.journalLibrary) != platform::PathKind::kMissing) {
        return true;
    }
    return RefuseAttempt(
        attempt.result,
        "the journal library " + settings.journalLibrary +
            " is missing: install it again, or give --durability process, with which records can "
            "be lost if the power fails");
}

// Decides how to start from the checkpoint file. If that is refused, the user may accept the loss of records.
bool DecideByFile(AttemptContext& attempt, const std::string& path,
                  const std::optional<RestartState>& stored) {
    const std::optional<PositionData> position = stored ? stored->position : std::nullopt;
    const std::vector<std::string> temporaries = FindTemporaryFiles(path);
    const auto scanFiles = [&] { return ScanForStart(path, temporaries, attempt.report.maxRecordBytes); };
    CheckpointScan scan = scanFiles();
    attempt.decision = DecideStart(path, position, scan, temporaries);
    if (attempt.decision.action != StartAction::kRefuse || attempt.decision.isTransient || !position ||
        !attempt.observer.acceptLoss) {
        return true;
    }
    if (!ContinueWithoutLoss(attempt, scan, temporaries, *stored)) return false;
    scan = scanFiles();
    attempt.decision = DecideStart(path, position, scan, temporaries);
    return true;
}

// Decides how to start, from the journal if there is one, otherwise from the checkpoint file.
bool Decide(AttemptContext& attempt, const std::string& path, const std::optional<RestartState>& stored) {
    StoredJournal& journal = attempt.journal;
    const std::optional<PositionData> position = stored ? stored->position : std::nullopt;
    const Status read = ReadStoredJournal(path, position.has_value(), attempt.report.maxRecordBytes, journal);
    if (!read.IsOk()) return FailByStatus(attempt, read);
    if (journal.content) {
        attempt.decision = DecideStart(path, position, *journal.content, {});
    } else if (!DecideByFile(attempt, path, stored)) {
        return false;
    }
    if (attempt.decision.action == StartAction::kBegin && journal.journal.contentBytes > 0) {
        return FailByStatus(attempt, RefuseStrayContent(path));
    }
    if (attempt.decision.action != StartAction::kRefuse) return true;
    return attempt.decision.isTransient ? EndByFile(attempt.result, attempt.decision.message)
                                        : RefuseAttempt(attempt.result, attempt.decision.message);
}

// Makes the repairs of the decision.
bool RepairFiles(AttemptContext& attempt, const std::string& path) {
    const StartDecision& decision = attempt.decision;
    const Status restored = RestoreFromJournal(path, attempt.journal, attempt.observer.repaired);
    if (!restored.IsOk()) return FailByStatus(attempt, restored);
    for (const Repair& repair : decision.repairs) {
        const std::string what = DescribeRepair(path, repair);
        const Status made = MakeRepair(path, repair);
        if (!made.IsOk()) return EndByFile(attempt.result, "could not " + what + ": " + made.Error());
        if (attempt.observer.repaired) attempt.observer.repaired(what);
    }
    if (attempt.settings.durability == Durability::kPower)
        UseJournalLibrary(attempt.settings.journalLibrary, path);
    return true;
}

// Decides how to start, reports the decision, and makes the repairs. Nothing is changed before the decision is
// reported; the target of a new load is left alone.
bool PrepareFiles(AttemptContext& attempt, const std::optional<RestartState>& stored,
                  RestartState& requested) {
    const std::string& path = requested.checkpointFile;
    attempt.checkpointLock = CheckpointLockPath(path);
    if (!CheckLocked(attempt, AcquireLockFile(attempt.checkpointLock, kAttemptLockTimeoutSeconds)))
        return false;

    if (!Decide(attempt, path, stored)) return false;
    if (attempt.observer.decision) attempt.observer.decision(attempt.decision.message);

    RestartState& state = attempt.result.state;
    const bool isOwnLog = stored && stored->logFile == requested.logFile;
    if (!isOwnLog && !IsLogFree(attempt, requested.logFile)) return false;
    if (stored) {
        state = *stored;
        state.checkpointFile = path;
        state.target = requested.target;
        state.logFile = requested.logFile;
        state.directory = requested.directory;
        state.command = requested.command;
    } else {
        // Nothing is stored or changed before the queue is open and there is a position: an old target stays if there is
        // no such queue.
        const Status checked = attempt.target.CheckNew();
        if (!checked.IsOk()) return FailToBegin(attempt, checked);
        requested.begun = UtcNow();
        state = requested;
        attempt.isNew = true;
    }
    if (!RepairFiles(attempt, path)) return false;
    if (attempt.isNew) return true;
    const Status rolledBack = attempt.target.RollBackTo(state);
    return rolledBack.IsOk() || FailToBegin(attempt, rolledBack);
}

// A load that is over left its state as a completion marker, because its command may have been killed before it could
// report the end. The same command then neither loads again nor destroys what was loaded; another load replaces the
// marker.
bool HandleCompletionMarker(AttemptContext& attempt, std::optional<RestartState>& stored,
                            const RestartState& requested) {
    if (FindDifference(*stored, requested) == nullptr && attempt.target.IsOccupied()) {
        attempt.result.end = AttemptEnd::kNothingToDo;
        return false;
    }
    if (attempt.settings.unfinishedOnly) {
        return RefuseAttempt(attempt.result, "no load is unfinished (--restart only): the one in " +
                                                 attempt.target.StateName() + " is complete");
    }
    stored.reset();
    return true;
}

// Finishes what a load that is over still has to do on disk. Returns false if the attempt ends with that.
bool CompleteStoredLoad(AttemptContext& attempt, RestartState& stored) {
    const Status cleaned = CleanUpFinishedLoad(attempt.target, stored);
    if (!cleaned.IsOk()) return EndByFile(attempt.result, cleaned.Error());
    attempt.result.state = stored;
    attempt.result.end = AttemptEnd::kLoadDone;
    return attempt.settings.completedBefore;
}

bool InitModule(AttemptContext& attempt, const std::optional<RestartState>& stored) {
    std::string initString = attempt.settings.initString;
    // A moment ago the queue was found empty for the whole interval; one second is enough to confirm it.
    if (attempt.settings.followsEnd && stored && stored->lastEnd == LastEnd::kAfterWait) {
        initString += " -RWAIT 1";
    }
    if (attempt.session.Init(initString) != pmrcOK) return EndByModule(attempt.result, attempt.session);
    // This comes first, so that no Close or Open of this process can empty the checkpoint file.
    return attempt.session.PutAttribute("PRESERVE_RESTART_INFO", "YES") == pmrcOK ||
           EndByModule(attempt.result, attempt.session);
}

// Refuses another load's state, and drops a state that is not needed any more.
bool CheckStoredLoad(AttemptContext& attempt, std::optional<RestartState>& stored,
                     const RestartState& requested) {
    if (!stored) return true;
    const Identity* difference = FindDifference(*stored, requested);
    if (difference != nullptr && stored->position) {
        return RefuseOtherLoad(attempt, *difference, *stored, requested);
    }
    // Without a position no record was ever read, so the state can be discarded; anything now in the target was put
    // there by someone else (H24).
    if (!stored->position) stored.reset();
    return true;
}

// Puts the attributes: those of the load first, so that one that the user gave replaces them.
bool PutAttributes(AttemptContext& attempt) {
    std::vector<std::pair<std::string, std::string>> attributes;
    if (const auto timeout = TimeoutForSlices(attempt.report.readWait))
        attributes.emplace_back("TIMEOUT_SECONDS", std::to_string(*timeout));
    attributes.insert(attributes.end(), attempt.settings.attributes.begin(),
                      attempt.settings.attributes.end());
    for (const auto& [name, value] : attributes) {
        if (attempt.session.PutAttribute(name, value) != pmrcOK)
            return EndByModule(attempt.result, attempt.session);
    }
    return true;
}

}  // namespace

bool PrepareAttempt(AttemptContext& attempt) {
    std::optional<RestartState> stored;
    const Status locked = attempt.target.AcquireLock(TargetLock::kAttempt, kAttemptLockTimeoutSeconds);
    if (!CheckLocked(attempt, locked)) return false;
    const Status loaded = attempt.target.LoadState(stored);
    if (!loaded.IsOk()) return FailToBegin(attempt, loaded);
    const bool isOver = IsOver(stored);
    if (isOver && !CompleteStoredLoad(attempt, *stored)) return false;
    RestartState requested;
    if (!InitModule(attempt, stored) || !ReadReport(attempt, requested) ||
        !HasNoPathConflict(attempt, requested) || !HasJournalLibrary(attempt)) {
        return false;
    }
    if (isOver && !HandleCompletionMarker(attempt, stored, requested)) return false;
    return CheckStoredLoad(attempt, stored, requested) && PrepareFiles(attempt, stored, requested) &&
           PutAttributes(attempt);
}

}  // namespace mqam
