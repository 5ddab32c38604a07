// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/attempt.h"

#include <chrono>

#include "mqam/load/attempt_journal.h"
#include "mqam/load/completion.h"
#include "mqam/load/read_wait.h"
#include "mqam/module/error_text.h"
#include "mqam/module/module_session.h"
#include "mqam/target/lock_file.h"

namespace mqam {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kFileSystemError = 2208;  // MQRC_FILE_SYSTEM_ERROR

// An attempt once it is prepared.
struct Attempt {
    AttemptContext context;
    ProgressCounters& counters;
    AttemptWatch& watch;
    bool inputMayBeOpen = false;  // from the call of Open to a Close without error
    std::vector<char> buffer = {};
    std::uint32_t lastLength = 0;  // of the record in the buffer
    std::uint64_t records = 0;     // of the whole load, including those not yet stored
    std::uint64_t bytes = 0;       // likewise
    std::uint64_t sinceCheckpoint = 0;
    std::uint64_t replayLeft = 0;  // records that the checkpoint file has still to return
    bool firstIsAwaited = false;   // no record of the replay has been compared or put yet
    bool hasCheckpoint = false;    // whether this attempt has stored one
    Clock::time_point lastCheckpoint = {};
    LastEnd previousEnd = LastEnd::kNone;  // how the previous attempt's input ended
    std::uint64_t previousEndRecords = 0;
};

ModuleSession& SessionOf(Attempt& attempt) {
    return attempt.context.session;
}

AttemptResult& ResultOf(Attempt& attempt) {
    return attempt.context.result;
}

// The module reports only MQRC_FILE_SYSTEM_ERROR when the journal library could not write the journal.
bool FailByModule(Attempt& attempt) {
    const AttemptSettings& settings = attempt.context.settings;
    ErrorText error;
    if (settings.durability == Durability::kPower &&
        ParseErrorText(SessionOf(attempt).LastFailure().text, error) && error.mqReason == kFileSystemError) {
        return EndByFile(ResultOf(attempt),
                         "the journal of the checkpoint file cannot be written: " +
                             LastJournalError(settings.journalLibrary) +
                             "; no record is lost. Make that possible and run the same command "
                             "again");
    }
    return EndByModule(ResultOf(attempt), SessionOf(attempt));
}

void ReportNotice(Attempt& attempt) {
    const std::string text = SessionOf(attempt).TakeNewText();
    if (!text.empty() && attempt.context.observer.notice) attempt.context.observer.notice(text);
}

// Prepares the attempt and resumes from the stored state.
bool Begin(Attempt& attempt) {
    if (!PrepareAttempt(attempt.context)) return false;
    const RestartState& state = ResultOf(attempt).state;
    attempt.records = state.records;
    attempt.bytes = state.bytes;
    attempt.previousEnd = state.lastEnd;
    attempt.previousEndRecords = state.lastEndRecords;
    attempt.counters.recordsBefore = state.records;
    attempt.counters.bytesBefore = state.bytes;
    const AttemptContext& context = attempt.context;
    attempt.watch.LimitReads(ReadLimit(context.report.readWait, context.settings.timeout));
    return true;
}

// The digest is that of the last record read: a Read that returns nothing leaves the buffer and lastLength alone.
bool TakeCheckpoint(Attempt& attempt) {
    PositionData position{};
    if (SessionOf(attempt).GetPos(position) != pmrcOK) return FailByModule(attempt);
    RestartState state = ResultOf(attempt).state;
    state.position = position;
    state.records = attempt.records;
    state.bytes = attempt.bytes;
    state.targetLength = attempt.context.target.Length();
    if (attempt.lastLength > 0) {
        state.lastRecordLength = attempt.lastLength;
        state.lastRecordDigest = DigestOf(attempt.buffer.data(), attempt.lastLength);
    }
    state.lastEnd = LastEnd::kNone;
    state.lastEndRecords = 0;
    if (!attempt.hasCheckpoint) ++state.attempts;
    const bool begins = attempt.context.isNew && !attempt.hasCheckpoint;
    const Status stored = begins ? attempt.context.target.Begin(state) : attempt.context.target.Store(state);
    if (begins && stored.Code() == StatusCode::kRefused)
        return RefuseAttempt(ResultOf(attempt), stored.Error());
    if (!stored.IsOk()) return EndByTarget(ResultOf(attempt), stored);
    ResultOf(attempt).state = state;
    attempt.hasCheckpoint = true;
    attempt.sinceCheckpoint = 0;
    attempt.lastCheckpoint = Clock::now();
    if (attempt.context.observer.checkpoint) attempt.context.observer.checkpoint(position);
    return true;
}

bool PutRecord(Attempt& attempt, std::uint32_t length) {
    const Status put = attempt.context.target.Put(attempt.buffer.data(), length);
    if (!put.IsOk()) return EndByTarget(ResultOf(attempt), put);
    ++attempt.records;
    attempt.bytes += length;
    ++attempt.sinceCheckpoint;
    attempt.counters.records.fetch_add(1, std::memory_order_relaxed);
    attempt.counters.bytes.fetch_add(length, std::memory_order_relaxed);
    return true;
}

bool IsLastRecordLoaded(Attempt& attempt, std::uint32_t length) {
    const RestartState& state = ResultOf(attempt).state;
    return length == state.lastRecordLength &&
           DigestOf(attempt.buffer.data(), length) == state.lastRecordDigest;
}

// The first replayed record proves that checkpoint file and target belong together.
bool TakeFirstRecord(Attempt& attempt, std::uint32_t length) {
    attempt.lastLength = length;
    if (!attempt.context.decision.firstRecordIsRepeat) {
        if (!PutRecord(attempt, length)) return false;
    } else if (!IsLastRecordLoaded(attempt, length)) {
        return RefuseAttempt(
            ResultOf(attempt),
            "the first record of the checkpoint file is not the last one loaded: the checkpoint "
            "file or " +
                attempt.context.target.StateName() +
                " is another load's or a backup; nothing was loaded. Restore the right file and "
                "run the same command again");
    }
    return true;
}

bool OpenInput(Attempt& attempt) {
    std::uint32_t maxRecordBytes = 0;
    attempt.inputMayBeOpen = true;
    if (SessionOf(attempt).Open(MQAMOD_OPEN_FOR_READING, maxRecordBytes) != pmrcOK) {
        return FailByModule(attempt);
    }
    ReportNotice(attempt);
    attempt.buffer.resize(maxRecordBytes);
    // A load whose queue cannot be opened leaves no journal.
    const Status prepared =
        PrepareJournal(ResultOf(attempt).state.checkpointFile, attempt.context.journal,
                       attempt.context.decision.action, attempt.context.settings.durability);
    if (!prepared.IsOk()) return EndByFile(ResultOf(attempt), prepared.Error());
    if (attempt.context.decision.action == StartAction::kReplay) {
        attempt.replayLeft = attempt.context.decision.replayedRecords;
        attempt.firstIsAwaited = true;
        return SessionOf(attempt).SetPos(attempt.context.decision.position) == pmrcOK ||
               FailByModule(attempt);
    }
    return TakeCheckpoint(attempt);
}

bool IsCheckpointDue(const Attempt& attempt) {
    const AttemptSettings& settings = attempt.context.settings;
    if (attempt.sinceCheckpoint == 0) return false;
    if (settings.checkpointEveryRecords != 0 && attempt.sinceCheckpoint >= settings.checkpointEveryRecords) {
        return true;
    }
    return settings.checkpointEverySeconds != 0 &&
           Clock::now() - attempt.lastCheckpoint >= std::chrono::seconds(settings.checkpointEverySeconds);
}

LastEnd ClassifyEnd(const Attempt& attempt, Clock::duration waited) {
    const std::optional<std::chrono::seconds>& readWait = attempt.context.report.readWait;
    return readWait && waited >= *readWait ? LastEnd::kAfterWait : LastEnd::kEarly;
}

// Compares or puts one record that the module returned.
bool LoadRecord(Attempt& attempt, std::uint32_t length) {
    // Queues never deliver empty records; a checkpoint taken during a replay can leave one in the file (H15).
    if (length == 0) return true;
    if (attempt.firstIsAwaited) {
        attempt.firstIsAwaited = false;
        return TakeFirstRecord(attempt, length);
    }
    attempt.lastLength = length;
    return PutRecord(attempt, length);
}

// Takes one record that the module returned. A replay is followed by exactly one checkpoint, before the queue is read.
// Its rewrite replaces a file whose records are all durable in the target, so it cannot lose any; and its position is
// an offset in the file that the journal contains (H5).
bool TakeRecord(Attempt& attempt, std::uint32_t length) {
    ReportNotice(attempt);
    if (!LoadRecord(attempt, length)) return false;
    if (attempt.replayLeft == 0) return !IsCheckpointDue(attempt) || TakeCheckpoint(attempt);
    --attempt.replayLeft;
    return attempt.replayLeft > 0 || TakeCheckpoint(attempt);
}

// The scan counted more records than the module returned before it read the queue.
bool FailReplay(Attempt& attempt) {
    return EndByFile(ResultOf(attempt),
                     ResultOf(attempt).state.checkpointFile +
                         " was changed while it was replayed: " + std::to_string(attempt.replayLeft) +
                         " records are missing; run the same command again");
}

// Reads to the end of the input, or until the load is to stop. Returns false after a failure. `inputEnd` says how the
// input ended, if it did.
bool ReadInput(Attempt& attempt, LastEnd& inputEnd) {
    const LoadObserver& observer = attempt.context.observer;
    for (;;) {
        if (!attempt.firstIsAwaited && observer.stopWanted && observer.stopWanted()) {
            ResultOf(attempt).end = AttemptEnd::kInterrupted;
            return attempt.sinceCheckpoint == 0 || TakeCheckpoint(attempt);
        }
        const Clock::time_point start = Clock::now();
        std::uint32_t length = 0;
        attempt.watch.EnterRead(start);
        const ReturnCode code = SessionOf(attempt).Read(attempt.buffer.data(), length);
        attempt.watch.LeaveRead();
        switch (code) {
            case pmrcOK:
                if (!TakeRecord(attempt, length)) return false;
                continue;
            case pmrcEOF:
                if (attempt.replayLeft > 0) return FailReplay(attempt);
                inputEnd = ClassifyEnd(attempt, Clock::now() - start);
                ResultOf(attempt).end = AttemptEnd::kInputEnded;
                return true;
            case pmrcTimeout: ResultOf(attempt).end = AttemptEnd::kTimeout; return true;
            default: return FailByModule(attempt);
        }
    }
}

// Stores that the input has ended, so that the next attempt can see whether anything has arrived since.
void StoreInputEnd(Attempt& attempt, LastEnd inputEnd, bool nothingCame) {
    RestartState ended = ResultOf(attempt).state;
    ended.lastEnd = inputEnd;
    ended.lastEndRecords = attempt.records;
    const Status stored = attempt.context.target.StoreEnd(ended);
    if (!stored.IsOk()) {
        EndByTarget(ResultOf(attempt), stored);
        return;
    }
    ResultOf(attempt).state = ended;
    if (inputEnd == LastEnd::kEarly && nothingCame) ResultOf(attempt).end = AttemptEnd::kNoProgress;
}

// This is called after a Close without error. If the process dies here, nothing is lost: the next attempt
// does it again.
void FinishAttempt(Attempt& attempt, LastEnd inputEnd) {
    const bool nothingCame =
        attempt.previousEnd != LastEnd::kNone && attempt.previousEndRecords == attempt.records;
    if (inputEnd != LastEnd::kAfterWait || !nothingCame) {
        StoreInputEnd(attempt, inputEnd, nothingCame);
        return;
    }
    RestartState finished = ResultOf(attempt).state;
    finished.phase = LoadPhase::kFinished;
    finished.records = attempt.records;
    finished.bytes = attempt.bytes;
    finished.targetLength = attempt.context.target.Length();
    const Status stored = attempt.context.target.Store(finished);
    if (!stored.IsOk()) {
        EndByTarget(ResultOf(attempt), stored);
        return;
    }
    const Status cleaned = CleanUpFinishedLoad(attempt.context.target, finished);
    ResultOf(attempt).state = finished;
    if (!cleaned.IsOk()) {
        EndByFile(ResultOf(attempt), cleaned.Error());
        return;
    }
    ResultOf(attempt).end = AttemptEnd::kLoadDone;
}

}  // namespace

AttemptResult RunAttempt(PIDMMainFunction entryPoint, const AttemptSettings& settings, Target& target,
                         const LoadObserver& observer, ProgressCounters& counters, AttemptWatch& watch) {
    Attempt attempt{{ModuleSession(entryPoint), settings, target, observer}, counters, watch};
    LastEnd inputEnd = LastEnd::kNone;
    if (Begin(attempt) && OpenInput(attempt) && ReadInput(attempt, inputEnd)) {
        // PRESERVE_RESTART_INFO is YES, so the files stay; and the disconnect commits the duplicate or empty message
        // that ended the input, removing it from the queue (H6).
        if (SessionOf(attempt).Close() != pmrcOK) {
            FailByModule(attempt);
        } else {
            attempt.inputMayBeOpen = false;
            if (ResultOf(attempt).end == AttemptEnd::kInputEnded) FinishAttempt(attempt, inputEnd);
        }
    }
    // While the input is open, MQ may not notice the end of this attempt immediately, so the locks are kept until the
    // process is gone (H21).
    if (!attempt.inputMayBeOpen) {
        ReleaseLockFile(attempt.context.checkpointLock);
        target.ReleaseLock(TargetLock::kAttempt);
    }
    return ResultOf(attempt);
}

}  // namespace mqam
