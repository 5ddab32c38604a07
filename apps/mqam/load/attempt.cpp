#include "mqam/load/attempt.h"

#include <chrono>
#include <cstdlib>

#include "mqam/load/completion.h"
#include "mqam/load/load_lock.h"
#include "mqam/module/module_session.h"

namespace mqam {

namespace {

using Clock = std::chrono::steady_clock;

// Everything that one life carries along.
struct Life {
    ModuleSession session;
    const AttemptSettings& settings;
    Target& target;
    const LoadObserver& observer;
    ProgressCounters& counters;
    AttemptResult outcome = {};
    Preparation preparation = {};
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

void Tell(const Life& life, const std::string& text) {
    if (!text.empty() && life.observer.notice) life.observer.notice(text);
}

// The life goes on from the stored state.
bool Begin(Life& life) {
    if (!PrepareAttempt(life.session, life.settings, life.target, life.observer, life.preparation,
                        life.outcome)) {
        return false;
    }
    const RestartState& state = life.outcome.state;
    life.records = state.records;
    life.bytes = state.bytes;
    life.endBefore = state.lastEnd;
    life.endBeforeRecords = state.lastEndRecords;
    life.counters.recordsBefore = state.records;
    life.counters.bytesBefore = state.bytes;
    return true;
}

bool TakeCheckpoint(Life& life) {
    PositionData position{};
    if (life.session.GetPos(position) != pmrcOK) return EndByModule(life.outcome, life.session);
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
    if (life.lastCheckpoint == Clock::time_point()) ++state.attempts;
    const Status stored = life.target.Store(state);
    if (!stored.IsOk()) return EndByTarget(life.outcome, stored);
    life.outcome.state = state;
    life.sinceCheckpoint = 0;
    life.lastCheckpoint = Clock::now();
    if (life.observer.checkpoint) life.observer.checkpoint(position);
    return true;
}

bool PutRecord(Life& life, std::uint32_t length) {
    const Status put = life.target.Put(life.buffer.data(), length);
    if (!put.IsOk()) return EndByTarget(life.outcome, put);
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
    if (!life.preparation.decision.firstRecordIsRepeat) {
        if (!PutRecord(life, length)) return false;
    } else if (!IsLastRecordLoaded(life, length)) {
        return RefuseAttempt(
            life.outcome,
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
    if (life.session.Open(MQAMOD_OPEN_FOR_READING, maxRecordBytes) != pmrcOK)
        return EndByModule(life.outcome, life.session);
    life.inputIsOpen = true;
    Tell(life, life.session.TakeNewText());
    life.buffer.resize(maxRecordBytes);
    if (life.preparation.decision.action == StartAction::kReplay) {
        return life.session.SetPos(life.preparation.decision.position) == pmrcOK ||
               EndByModule(life.outcome, life.session);
    }
    return TakeCheckpoint(life);
}

bool IsCheckpointDue(const Life& life) {
    const AttemptSettings& settings = life.settings;
    if (life.sinceCheckpoint == 0) return false;
    if (settings.checkpointEveryRecords != 0 && life.sinceCheckpoint >= settings.checkpointEveryRecords) {
        return true;
    }
    return settings.checkpointEverySeconds != 0 &&
           Clock::now() - life.lastCheckpoint >= std::chrono::seconds(settings.checkpointEverySeconds);
}

LastEnd ClassifyEnd(const Life& life, Clock::duration waited) {
    const std::optional<std::chrono::seconds>& readWait = life.preparation.report.readWait;
    const bool waitedOut = readWait && waited >= *readWait;
    return waitedOut ? LastEnd::kAfterWait : LastEnd::kEarly;
}

// Returns true when the input ended or the load is to stop; `end` tells how.
bool ReadInput(Life& life, LastEnd& end) {
    bool firstIsAwaited = life.preparation.decision.action == StartAction::kReplay;
    for (;;) {
        if (!firstIsAwaited && life.observer.stopWanted && life.observer.stopWanted()) {
            life.outcome.end = AttemptEnd::kInterrupted;
            return life.sinceCheckpoint == 0 || TakeCheckpoint(life);
        }
        const Clock::time_point start = Clock::now();
        std::uint32_t length = 0;
        const ReturnCode code = life.session.Read(life.buffer.data(), length);
        if (code == pmrcEOF) {
            end = ClassifyEnd(life, Clock::now() - start);
            life.outcome.end = AttemptEnd::kInputEnded;
            return true;
        }
        if (code == pmrcTimeout) {
            life.outcome.end = AttemptEnd::kTimeout;
            return true;
        }
        if (code != pmrcOK) return EndByModule(life.outcome, life.session);
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

// After a Close without error. Nothing is lost when the process dies in here: a next life does it again.
void FinishLife(Life& life, LastEnd end) {
    RestartState& state = life.outcome.state;
    const bool nothingNew = life.endBefore != LastEnd::kNone && life.endBeforeRecords == life.records;
    if (end != LastEnd::kAfterWait || !nothingNew) {
        RestartState ended = state;
        ended.lastEnd = end;
        ended.lastEndRecords = life.records;
        const Status stored = life.target.StoreEnd(ended);
        if (!stored.IsOk()) {
            EndByTarget(life.outcome, stored);
            return;
        }
        state = ended;
        if (end == LastEnd::kEarly && nothingNew) life.outcome.end = AttemptEnd::kNoProgress;
        return;
    }
    RestartState finished = state;
    finished.phase = LoadPhase::kFinished;
    finished.records = life.records;
    finished.bytes = life.bytes;
    finished.targetLength = life.target.Length();
    const Status stored = life.target.Store(finished);
    if (!stored.IsOk()) {
        EndByTarget(life.outcome, stored);
        return;
    }
    state = finished;
    const Status cleaned = CleanUpFinishedLoad(life.target, state);
    if (!cleaned.IsOk()) {
        EndByFile(life.outcome, cleaned.Error());
        return;
    }
    life.outcome.end = AttemptEnd::kLoadDone;
}

}  // namespace

AttemptResult RunAttempt(PIDMMainFunction entryPoint, const AttemptSettings& settings, Target& target,
                         const LoadObserver& observer, ProgressCounters& counters) {
    Life life{ModuleSession(entryPoint), settings, target, observer, counters};
    LastEnd end = LastEnd::kNone;
    if (Begin(life) && OpenInput(life) && ReadInput(life, end)) {
        // PRESERVE_RESTART_INFO is YES: the files stay, and MQ takes a repeated or an empty message that
        // ended the input off the queue.
        if (life.session.Close() != pmrcOK) {
            EndByModule(life.outcome, life.session);
        } else {
            life.inputIsOpen = false;
            if (life.outcome.end == AttemptEnd::kInputEnded) FinishLife(life, end);
        }
    }
    // With the input still open MQ takes its time to end this life: the locks last as long as the process.
    if (!life.inputIsOpen && life.outcome.end != AttemptEnd::kModuleFailed) {
        ReleaseLoadLock(life.preparation.checkpointLock);
        ReleaseLoadLock(target.AttemptLock());
    }
    return life.outcome;
}

}  // namespace mqam
