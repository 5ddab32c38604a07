#include "apps/mqam/restart_life.h"

#include <chrono>
#include <cstdlib>
#include <string_view>

#include "apps/mqam/absolute_path.h"
#include "apps/mqam/advice.h"
#include "apps/mqam/disk_changes.h"
#include "apps/mqam/error_text.h"
#include "apps/mqam/load_lock.h"
#include "apps/mqam/module_requests.h"
#include "apps/mqam/platform.h"
#include "apps/mqam/restart_decision.h"
#include "apps/mqam/utc_time.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kLockPatienceSeconds = 10;

// Everything that one life carries along.
struct Life {
    ModuleSession session;
    const RestartLifeSettings& settings;
    RestartableTarget& target;
    const LifeObserver& observer;
    ProgressCounters& counters;
    RestartLifeOutcome outcome = {};
    StartupReport report = {};
    StartDecision decision = {};
    std::string checkpointLock = {};
    bool inputIsOpen = false;
    std::vector<char> buffer = {};
    std::uint32_t lastLength = 0;  // of the record in the buffer
    std::uint64_t records = 0;     // of the whole load, those not yet stored included
    std::uint64_t bytes = 0;
    std::uint64_t sinceCheckpoint = 0;
    Clock::time_point lastCheckpoint = {};
    LastEnd endBefore = LastEnd::kNone;  // of the life before this one
    std::uint64_t endBeforeRecords = 0;
};

bool Refuse(Life& life, const std::string& words) {
    life.outcome.end = RestartLifeEnd::kRefused;
    life.outcome.refusal = words;
    return false;
}

bool FailModule(Life& life) {
    life.outcome.moduleFailure = life.session.LastOutcome();
    ErrorText text;
    const bool staysSo = ParseErrorText(life.outcome.moduleFailure.text, text) && StaysSo(text);
    life.outcome.end = staysSo ? RestartLifeEnd::kModuleRefuses : RestartLifeEnd::kModuleFailed;
    return false;
}

bool FailFile(Life& life, const std::string& words) {
    life.outcome.end = RestartLifeEnd::kTargetFailed;
    life.outcome.targetFailure = words;
    return false;
}

bool FailTarget(Life& life) {
    return FailFile(life, life.target.Failure());
}

// Of a target that was not yet written to, with which the life cannot begin.
bool FailToBegin(Life& life) {
    return life.target.Refuses() ? Refuse(life, life.target.Failure()) : FailTarget(life);
}

bool TakeLock(Life& life, const std::string& path) {
    std::string reason;
    const LockOutcome outcome = TakeLoadLock(path, kLockPatienceSeconds, reason);
    if (outcome == LockOutcome::kTaken) return true;
    return outcome == LockOutcome::kFailed ? FailFile(life, reason) : Refuse(life, reason);
}

std::string CheckpointLockPath(const std::string& checkpointFile) {
    return checkpointFile + ".lock";
}

void Tell(const Life& life, const std::string& text) {
    if (!text.empty() && life.observer.notice) life.observer.notice(text);
}

// ---- before Open

bool ReadReport(Life& life, RestartState& fresh) {
    constexpr std::string_view kFileBased = "File-based to pathname ";
    if (FetchReport(life.session, false, life.report) != pmrcOK) return FailModule(life);
    if (life.observer.report) life.observer.report(life.report);
    const std::string checkpoint = FindParameter(life.report, "Checkpoint");
    if (!checkpoint.starts_with(kFileBased)) {
        return Refuse(life, "a load that can be restarted needs a checkpoint file: give --ckfile FILE");
    }
    if (FindParameter(life.report, "Terminate on duplicate message") != "yes") {
        return Refuse(life,
                      "a load that can be restarted needs --tdm yes: without it a message that a crash "
                      "puts back on the queue is loaded twice");
    }
    fresh.queueManager = FindParameter(life.report, "Queue Manager Name");
    fresh.queue = FindParameter(life.report, "Queue Name");
    fresh.checkpointFile = AbsolutePath(checkpoint.substr(kFileBased.size()));
    fresh.target = life.target.Name();
    fresh.format = life.target.Format();
    const std::string log = FindParameter(life.report, "Logging pathname");
    if (!log.empty()) fresh.logFile = AbsolutePath(log);
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

bool RefuseOtherLoad(Life& life, const Identity& difference, const RestartState& stored,
                     const RestartState& asked) {
    return Refuse(life, life.target.StateName() + " belongs to an unfinished load with " + difference.what +
                            " " + stored.*difference.part + ", not " + asked.*difference.part +
                            ": finish that load with its own command first, or keep the restart "
                            "information of this load elsewhere");
}

// The module would overwrite them, or delete them at the end; a lock's file goes when it is given back.
bool AreFilesApart(Life& life, const RestartState& fresh) {
    std::vector<NamedFile> files = life.target.Files();
    files.push_back({fresh.checkpointFile, "checkpoint file"});
    files.push_back({CheckpointLockPath(fresh.checkpointFile), "lock of the checkpoint file"});
    if (!fresh.logFile.empty()) files.push_back({fresh.logFile, "log"});
    const std::string complaint = FindDoubleUse(files);
    return complaint.empty() || Refuse(life, complaint);
}

// The module writes into a log that it finds, and the end of the load deletes it.
bool IsLogFree(Life& life, const std::string& log) {
    std::uint64_t bytes = 0;
    if (log.empty() || ProbePath(log, bytes) != PathKind::kFile || bytes == 0) return true;
    return Refuse(life, log +
                            " exists: the log of another load would be overwritten; move it away, or delete "
                            "it when that load is done with");
}

// Brings the files into the shape that the module can go on from. The order matters: what is decided is told
// before anything is changed, and a new load is stored before anything is touched.
bool PrepareFiles(Life& life, const std::optional<RestartState>& stored, RestartState& fresh) {
    RestartState& state = life.outcome.state;
    const std::string& path = fresh.checkpointFile;
    std::string reason;
    life.checkpointLock = CheckpointLockPath(path);
    if (!TakeLock(life, life.checkpointLock)) return false;

    const auto maxRecordBytes =
        static_cast<std::uint64_t>(std::atoll(FindParameter(life.report, "BlockSize").c_str()));
    const std::optional<PositionData> position = stored ? stored->position : std::nullopt;
    const std::vector<std::string> temporaries = FindTemporaryFiles(path);
    life.decision =
        DecideStart(path, position, InspectForStart(path, temporaries, maxRecordBytes), temporaries);
    if (life.decision.action == StartAction::kRefuse) {
        return life.decision.mayPass ? FailFile(life, life.decision.reason)
                                     : Refuse(life, life.decision.reason);
    }
    if (life.observer.decision) life.observer.decision(life.decision.reason);

    const bool isOwnLog = stored && stored->logFile == fresh.logFile;
    if (!isOwnLog && !IsLogFree(life, fresh.logFile)) return false;
    if (stored) {
        state = *stored;
        state.logFile = fresh.logFile;
    } else {
        fresh.begun = UtcNow();
        if (!life.target.Begin(fresh)) return FailToBegin(life);
        state = fresh;
    }
    for (const Repair& repair : life.decision.repairs) {
        const std::string what = DescribeRepair(path, repair);
        if (!MakeRepair(path, repair, reason)) return FailFile(life, "could not " + what + ": " + reason);
        if (life.observer.repaired) life.observer.repaired(what);
    }
    if (!life.target.CutBack(state)) return FailToBegin(life);
    life.records = state.records;
    life.bytes = state.bytes;
    life.counters.recordsBefore = state.records;
    life.counters.bytesBefore = state.bytes;
    life.endBefore = state.lastEnd;
    life.endBeforeRecords = state.lastEndRecords;
    return true;
}

// A load that is over left its state as a receipt: its command may have been killed before it could tell so.
// The same command then neither loads again nor destroys what was loaded; another load begins over it.
bool HandleReceipt(Life& life, std::optional<RestartState>& stored, const RestartState& asked) {
    if (FindDifference(*stored, asked) == nullptr && life.target.IsOccupied()) {
        life.outcome.end = RestartLifeEnd::kNothingToDo;
        return false;
    }
    if (life.settings.unfinishedOnly) {
        return Refuse(life, "no load is unfinished (--restart only): the one in " + life.target.StateName() +
                                " is complete");
    }
    stored.reset();
    return true;
}

bool Prepare(Life& life) {
    std::optional<RestartState> stored;
    if (!TakeLock(life, life.target.LifeLock())) return false;
    if (!life.target.LoadState(stored)) return FailToBegin(life);
    const bool isOver = IsOver(stored);
    if (isOver) {
        std::string reason;
        if (!CleanUpFinishedLoad(life.target, *stored, reason)) return FailFile(life, reason);
        life.outcome.state = *stored;
        life.outcome.end = RestartLifeEnd::kLoadDone;
        if (!life.settings.meetsReceipt) return false;
    }
    std::string initString = life.settings.initString;
    // The queue was found empty for the whole interval a moment ago: to find that again, a second will do.
    if (life.settings.followsEnd && stored && stored->lastEnd == LastEnd::kAfterWait)
        initString += " -RWAIT 1";
    if (life.session.AskInit(initString) != pmrcOK) {
        static_cast<void>(FailModule(life));
        life.outcome.end = RestartLifeEnd::kModuleRefuses;
        return false;
    }
    // First of all, so that no Close or Open of this process can empty the checkpoint file.
    if (life.session.AskPutAttribute("PRESERVE_RESTART_INFO", "YES") != pmrcOK) return FailModule(life);
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
        if (life.session.AskPutAttribute(name, value) != pmrcOK) return FailModule(life);
    }
    return true;
}

// ---- with the input open

bool TakeCheckpoint(Life& life) {
    PositionData position{};
    if (life.session.AskGetPos(position) != pmrcOK) return FailModule(life);
    RestartState state = life.outcome.state;
    state.position = position;
    state.records = life.records;
    state.bytes = life.bytes;
    state.targetLength = life.target.Length();
    if (life.lastLength > 0) {
        state.lastRecordLength = life.lastLength;
        state.lastRecordDigest = DigestOf(life.buffer.data(), life.lastLength);
    }
    state.lastEnd = LastEnd::kNone;
    state.lastEndRecords = 0;
    if (life.lastCheckpoint == Clock::time_point()) ++state.lives;
    if (!life.target.Store(state)) return FailTarget(life);
    life.outcome.state = state;
    life.sinceCheckpoint = 0;
    life.lastCheckpoint = Clock::now();
    if (life.observer.checkpoint) life.observer.checkpoint(position);
    return true;
}

bool PutRecord(Life& life, std::uint32_t length) {
    if (!life.target.Put(life.buffer.data(), length)) return FailTarget(life);
    ++life.records;
    life.bytes += length;
    ++life.sinceCheckpoint;
    life.counters.records.fetch_add(1, std::memory_order_relaxed);
    life.counters.bytes.fetch_add(length, std::memory_order_relaxed);
    return true;
}

bool IsLastRecordLoaded(const Life& life, std::uint32_t length) {
    const RestartState& state = life.outcome.state;
    return length == state.lastRecordLength && DigestOf(life.buffer.data(), length) == state.lastRecordDigest;
}

// The record that ties the checkpoint file to the target. With it a checkpoint of this life is taken at once:
// what comes after it is in the file or on the queue from then on, whatever happens.
bool TakeFirstRecord(Life& life, std::uint32_t length) {
    life.lastLength = length;
    if (!life.decision.firstRecordIsRepeat) {
        if (!PutRecord(life, length)) return false;
    } else if (!IsLastRecordLoaded(life, length)) {
        return Refuse(
            life,
            "the first record of the checkpoint file is not the last one loaded: the checkpoint file "
            "or " +
                life.target.StateName() +
                " is another load's or a backup; nothing was loaded. Give the right file back and run "
                "the same command again");
    }
    return TakeCheckpoint(life);
}

bool OpenInput(Life& life) {
    std::uint32_t maxRecordBytes = 0;
    if (life.session.AskOpen(kOpenForReading, maxRecordBytes) != pmrcOK) return FailModule(life);
    life.inputIsOpen = true;
    Tell(life, life.session.TakeNewText());
    life.buffer.resize(maxRecordBytes);
    if (life.decision.action == StartAction::kReplay) {
        return life.session.AskSetPos(life.decision.position) == pmrcOK || FailModule(life);
    }
    return TakeCheckpoint(life);
}

bool IsCheckpointDue(const Life& life) {
    const RestartLifeSettings& settings = life.settings;
    if (life.sinceCheckpoint == 0) return false;
    if (settings.checkpointEveryRecords != 0 && life.sinceCheckpoint >= settings.checkpointEveryRecords) {
        return true;
    }
    return settings.checkpointEverySeconds != 0 &&
           Clock::now() - life.lastCheckpoint >= std::chrono::seconds(settings.checkpointEverySeconds);
}

LastEnd ClassifyEnd(const Life& life, Clock::duration waited) {
    const std::string interval = FindParameter(life.report, "MQ read wait interval");
    const bool waitedOut =
        interval != "indefinite" && waited >= std::chrono::seconds(std::atol(interval.c_str()));
    return waitedOut ? LastEnd::kAfterWait : LastEnd::kEarly;
}

// Returns true when the input ended or the load is to stop; `end` tells how.
bool ReadInput(Life& life, LastEnd& end) {
    bool firstIsAwaited = life.decision.action == StartAction::kReplay;
    for (;;) {
        if (!firstIsAwaited && life.observer.stopWanted && life.observer.stopWanted()) {
            life.outcome.end = RestartLifeEnd::kOnRequest;
            return life.sinceCheckpoint == 0 || TakeCheckpoint(life);
        }
        const Clock::time_point start = Clock::now();
        std::uint32_t length = 0;
        const ReturnCode code = life.session.AskRead(life.buffer.data(), length);
        if (code == pmrcEOF) {
            end = ClassifyEnd(life, Clock::now() - start);
            life.outcome.end = RestartLifeEnd::kInputEnded;
            return true;
        }
        if (code == pmrcTimeout) {
            life.outcome.end = RestartLifeEnd::kTimeout;
            return true;
        }
        if (code != pmrcOK) return FailModule(life);
        Tell(life, life.session.TakeNewText());
        // A record of no bytes is none that a queue delivers: a replay checkpoint can put it into the file.
        if (length == 0) continue;
        if (firstIsAwaited) {
            if (!TakeFirstRecord(life, length)) return false;
            firstIsAwaited = false;
            continue;
        }
        life.lastLength = length;
        if (!PutRecord(life, length)) return false;
        if (IsCheckpointDue(life) && !TakeCheckpoint(life)) return false;
    }
}

// ---- the end

// After a Close without error. Nothing is lost when the process dies in here: a next life does it again.
void FinishLife(Life& life, LastEnd end) {
    RestartState& state = life.outcome.state;
    const bool nothingNew = life.endBefore != LastEnd::kNone && life.endBeforeRecords == life.records;
    if (end != LastEnd::kAfterWait || !nothingNew) {
        RestartState ended = state;
        ended.lastEnd = end;
        ended.lastEndRecords = life.records;
        if (!life.target.StoreEnd(ended)) {
            static_cast<void>(FailTarget(life));
            return;
        }
        state = ended;
        if (end == LastEnd::kEarly && nothingNew) life.outcome.end = RestartLifeEnd::kNothingNew;
        return;
    }
    RestartState finished = state;
    finished.phase = LoadPhase::kFinished;
    finished.records = life.records;
    finished.bytes = life.bytes;
    finished.targetLength = life.target.Length();
    if (!life.target.Store(finished)) {
        static_cast<void>(FailTarget(life));
        return;
    }
    state = finished;
    std::string reason;
    if (!CleanUpFinishedLoad(life.target, state, reason)) {
        static_cast<void>(FailFile(life, reason));
        return;
    }
    life.outcome.end = RestartLifeEnd::kLoadDone;
}

// The lock file of a life that died before it could remove it; a lock that is held stays.
void SweepCheckpointLock(const RestartState& state) {
    const std::string path = CheckpointLockPath(state.checkpointFile);
    std::string words;
    if (ProbePath(path) == PathKind::kFile && TakeLoadLock(path, 0, words) == LockOutcome::kTaken) {
        GiveBackLoadLock(path);
    }
}

}  // namespace

bool CleanUpFinishedLoad(RestartableTarget& target, RestartState& state, std::string& reason) {
    SweepCheckpointLock(state);
    if (state.phase == LoadPhase::kComplete) return true;
    if (!target.StoreEnd(state)) {
        reason = target.Failure();
        return false;
    }
    for (const std::string& path : {state.checkpointFile, state.logFile}) {
        std::string words;
        const PathKind kind = path.empty() ? PathKind::kMissing : ProbePath(path);
        if (kind == PathKind::kMissing || kind == PathKind::kOther || DeleteDurably(path, words)) continue;
        reason = "every record is in the target, but " + path +
                 " of the finished load cannot be deleted: " + words +
                 "; make that possible and run the same command again";
        return false;
    }
    RestartState complete = state;
    complete.phase = LoadPhase::kComplete;
    if (!target.StoreEnd(complete)) {
        reason = target.Failure();
        return false;
    }
    state = complete;
    return true;
}

RestartLifeOutcome RunRestartLife(PIDMMainFunction entryPoint, const RestartLifeSettings& settings,
                                  RestartableTarget& target, const LifeObserver& observer,
                                  ProgressCounters& counters) {
    Life life{ModuleSession(entryPoint), settings, target, observer, counters};
    LastEnd end = LastEnd::kNone;
    if (Prepare(life) && OpenInput(life) && ReadInput(life, end)) {
        // PRESERVE_RESTART_INFO is YES: the files stay, and MQ takes a repeated or an empty message that
        // ended the input off the queue.
        if (life.session.AskClose() != pmrcOK) {
            static_cast<void>(FailModule(life));
        } else {
            life.inputIsOpen = false;
            if (life.outcome.end == RestartLifeEnd::kInputEnded) FinishLife(life, end);
        }
    }
    // With the input still open MQ takes its time to end this life: the locks last as long as the process.
    if (!life.inputIsOpen && life.outcome.end != RestartLifeEnd::kModuleFailed) {
        GiveBackLoadLock(life.checkpointLock);
        GiveBackLoadLock(target.LifeLock());
    }
    return life.outcome;
}
