#include "mqam/load/attempt_start.h"

#include "mqam/base/utc_time.h"
#include "mqam/checkpoint/repair.h"
#include "mqam/load/completion.h"
#include "mqam/load/load_lock.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace mqam {

namespace {

constexpr int kLockTimeoutSeconds = 10;

// A life before its Open.
struct Beginning {
    ModuleSession& session;
    const AttemptSettings& settings;
    Target& target;
    const LoadObserver& observer;
    Preparation& preparation;
    AttemptResult& outcome;
};

// Ends the attempt because a call of the target failed before anything was written to it.
bool FailToBegin(Beginning& life, const Status& failed) {
    return failed.Code() == StatusCode::kRefused ? RefuseAttempt(life.outcome, failed.Error())
                                                 : EndByTarget(life.outcome, failed);
}

bool TakeLock(Beginning& life, const std::string& path) {
    std::string reason;
    const LockOutcome outcome = AcquireLoadLock(path, kLockTimeoutSeconds, reason);
    if (outcome == LockOutcome::kAcquired) return true;
    return outcome == LockOutcome::kFailed ? EndByFile(life.outcome, reason)
                                           : RefuseAttempt(life.outcome, reason);
}

bool ReadReport(Beginning& life, RestartState& fresh) {
    StartupReport& report = life.preparation.report;
    if (FetchReport(life.session, false, report) != pmrcOK) return EndByModule(life.outcome, life.session);
    if (life.observer.report) life.observer.report(report);
    if (!report.truncatedParameter.empty()) return RefuseAttempt(life.outcome, DescribeTruncation(report));
    if (report.checkpointFile.empty()) {
        return RefuseAttempt(life.outcome,
                             "a load that can be restarted needs a checkpoint file: give --ckfile FILE");
    }
    if (!report.stopsAtDuplicate) {
        return RefuseAttempt(
            life.outcome,
            "a load that can be restarted needs --tdm yes: without it a message that a crash "
            "puts back on the queue is loaded twice");
    }
    fresh.queueManager = report.queueManager;
    fresh.queue = report.queue;
    fresh.checkpointFile = platform::AbsolutePath(report.checkpointFile);
    fresh.target = life.target.Name();
    fresh.format = life.target.Format();
    if (!report.logFile.empty()) fresh.logFile = platform::AbsolutePath(report.logFile);
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

// Returns what tells two loads apart, or null when they are the same.
const Identity* FindDifference(const RestartState& stored, const RestartState& asked) {
    for (const Identity& identity : kIdentities) {
        if (stored.*identity.part != asked.*identity.part) return &identity;
    }
    return nullptr;
}

bool RefuseOtherLoad(Beginning& life, const Identity& difference, const RestartState& stored,
                     const RestartState& asked) {
    return RefuseAttempt(life.outcome,
                         life.target.StateName() + " belongs to an unfinished load with " + difference.what +
                             " " + stored.*difference.part + ", not " + asked.*difference.part +
                             ": finish that load with its own command first, or keep the restart "
                             "information of this load elsewhere");
}

// The module would overwrite them, or delete them at the end; a lock's file goes when it is given back.
bool AreFilesApart(Beginning& life, const RestartState& fresh) {
    std::vector<LoadFile> files = life.target.Files();
    files.push_back({fresh.checkpointFile, "checkpoint file"});
    files.push_back({CheckpointLockPath(fresh.checkpointFile), "lock of the checkpoint file"});
    if (!fresh.logFile.empty()) files.push_back({fresh.logFile, "log"});
    const Status checked = CheckPathConflicts(files);
    return checked.IsOk() || RefuseAttempt(life.outcome, checked.Error());
}

// The module writes into a log that it finds, and the end of the load deletes it.
bool IsLogFree(Beginning& life, const std::string& log) {
    std::uint64_t bytes = 0;
    if (log.empty() || platform::ProbePath(log, bytes) != platform::PathKind::kFile || bytes == 0)
        return true;
    return RefuseAttempt(life.outcome,
                         log +
                             " exists: the log of another load would be overwritten; move it away, or delete "
                             "it when that load is done with");
}

// Brings the files into the shape that the module can go on from. The order matters: what is decided is told
// before anything is changed, and a new load is stored before anything is touched.
bool PrepareFiles(Beginning& life, const std::optional<RestartState>& stored, RestartState& fresh) {
    const std::string& path = fresh.checkpointFile;
    StartDecision& decision = life.preparation.decision;
    life.preparation.checkpointLock = CheckpointLockPath(path);
    if (!TakeLock(life, life.preparation.checkpointLock)) return false;

    const std::uint64_t maxRecordBytes = life.preparation.report.maxRecordBytes;
    const std::optional<PositionData> position = stored ? stored->position : std::nullopt;
    const std::vector<std::string> temporaries = FindTemporaryFiles(path);
    decision = DecideStart(path, position, ScanForStart(path, temporaries, maxRecordBytes), temporaries);
    if (decision.action == StartAction::kRefuse) {
        return decision.isTransient ? EndByFile(life.outcome, decision.message)
                                    : RefuseAttempt(life.outcome, decision.message);
    }
    if (life.observer.decision) life.observer.decision(decision.message);

    RestartState& state = life.outcome.state;
    const bool isOwnLog = stored && stored->logFile == fresh.logFile;
    if (!isOwnLog && !IsLogFree(life, fresh.logFile)) return false;
    if (stored) {
        state = *stored;
        state.logFile = fresh.logFile;
    } else {
        fresh.begun = UtcNow();
        const Status begun = life.target.Begin(fresh);
        if (!begun.IsOk()) return FailToBegin(life, begun);
        state = fresh;
    }
    for (const Repair& repair : decision.repairs) {
        const std::string what = DescribeRepair(path, repair);
        const Status made = MakeRepair(path, repair);
        if (!made.IsOk()) return EndByFile(life.outcome, "could not " + what + ": " + made.Error());
        if (life.observer.repaired) life.observer.repaired(what);
    }
    const Status rolledBack = life.target.RollBackTo(state);
    return rolledBack.IsOk() || FailToBegin(life, rolledBack);
}

// A load that is over left its state as a receipt: its command may have been killed before it could tell so.
// The same command then neither loads again nor destroys what was loaded; another load begins over it.
bool HandleReceipt(Beginning& life, std::optional<RestartState>& stored, const RestartState& asked) {
    if (FindDifference(*stored, asked) == nullptr && life.target.IsOccupied()) {
        life.outcome.end = AttemptEnd::kNothingToDo;
        return false;
    }
    if (life.settings.unfinishedOnly) {
        return RefuseAttempt(life.outcome, "no load is unfinished (--restart only): the one in " +
                                               life.target.StateName() + " is complete");
    }
    stored.reset();
    return true;
}

bool Prepare(Beginning& life) {
    std::optional<RestartState> stored;
    if (!TakeLock(life, life.target.AttemptLock())) return false;
    const Status loaded = life.target.LoadState(stored);
    if (!loaded.IsOk()) return FailToBegin(life, loaded);
    const bool isOver = IsOver(stored);
    if (isOver) {
        const Status cleaned = CleanUpFinishedLoad(life.target, *stored);
        if (!cleaned.IsOk()) return EndByFile(life.outcome, cleaned.Error());
        life.outcome.state = *stored;
        life.outcome.end = AttemptEnd::kLoadDone;
        if (!life.settings.meetsReceipt) return false;
    }
    std::string initString = life.settings.initString;
    // The queue was found empty for the whole interval a moment ago: to find that again, a second will do.
    if (life.settings.followsEnd && stored && stored->lastEnd == LastEnd::kAfterWait)
        initString += " -RWAIT 1";
    if (life.session.Init(initString) != pmrcOK) {
        EndByModule(life.outcome, life.session);
        life.outcome.end = AttemptEnd::kModuleRefuses;
        return false;
    }
    // First of all, so that no Close or Open of this process can empty the checkpoint file.
    if (life.session.PutAttribute("PRESERVE_RESTART_INFO", "YES") != pmrcOK)
        return EndByModule(life.outcome, life.session);
    RestartState fresh;
    if (!ReadReport(life, fresh) || !AreFilesApart(life, fresh)) return false;
    if (isOver && !HandleReceipt(life, stored, fresh)) return false;
    if (stored) {
        const Identity* difference = FindDifference(*stored, fresh);
        if (difference != nullptr && stored->position) {
            return RefuseOtherLoad(life, *difference, *stored, fresh);
        }
        // No record was read under a state without a position: nothing hangs on it, and what stands in the
        // target by now is somebody else's.
        if (!stored->position) stored.reset();
    }
    if (!PrepareFiles(life, stored, fresh)) return false;
    for (const auto& [name, value] : life.settings.attributes) {
        if (life.session.PutAttribute(name, value) != pmrcOK) return EndByModule(life.outcome, life.session);
    }
    return true;
}

}  // namespace

bool PrepareAttempt(ModuleSession& session, const AttemptSettings& settings, Target& target,
                    const LoadObserver& observer, Preparation& preparation, AttemptResult& outcome) {
    Beginning life{session, settings, target, observer, preparation, outcome};
    return Prepare(life);
}

}  // namespace mqam
