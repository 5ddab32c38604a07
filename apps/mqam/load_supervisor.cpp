#include "apps/mqam/load_supervisor.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "apps/mqam/exit_codes.h"
#include "apps/mqam/load_worker.h"
#include "apps/mqam/progress.h"
#include "apps/mqam/restart_life.h"
#include "apps/mqam/worker_process.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

constexpr seconds kFirstPause{1};
constexpr seconds kLongestPause{60};
// Each empty message costs a life; a queue whose MQGETs fail at once would cost them without end.
constexpr int kLivesWithNothingNewMax = 20;

int Refuse(const std::string& words) {
    TellUser("mqam load: " + words + "\n");
    return kExitNotStarted;
}

std::string CountLoaded(const RestartState& state) {
    return FormatCount(state.records) + (state.records == 1 ? " record" : " records");
}

// ---- before the first life

enum class Beginning { kLoad, kNothingToDo, kRefused };

// A load that is over left its state as a receipt, for the case that its command was killed before it could
// tell so: then the same command must neither load again nor destroy what was loaded.
Beginning HandleReceipt(const LoadOptions& options, RestartableTarget& target, RestartState& state) {
    std::string reason;
    if (!target.Lock()) {
        static_cast<void>(Refuse(target.Failure()));
        return Beginning::kRefused;
    }
    if (!CleanUpFinishedLoad(target, state, reason)) {
        static_cast<void>(Refuse(reason));
        return Beginning::kRefused;
    }
    if (state.target == target.Name() && target.IsOccupied()) {
        target.Unlock();
        TellUser(
            "mqam load: this load is complete, nothing was loaded now: " + CountLoaded(state) + " in " +
            state.target + " since the load begun " + state.begun +
            "\n  next: to load more into it give --append; to begin anew move it away, or forget the load "
            "that is over (" +
            target.StateName() + ")\n");
        return Beginning::kNothingToDo;
    }
    if (options.restart == RestartPolicy::kOnly) {
        target.Unlock();
        static_cast<void>(Refuse("no load is unfinished (--restart only)"));
        return Beginning::kRefused;
    }
    const bool forgotten = target.Forget();
    target.Unlock();
    if (forgotten) return Beginning::kLoad;
    static_cast<void>(Refuse(target.Failure()));
    return Beginning::kRefused;
}

Beginning LookBeforeFirstLife(const LoadOptions& options, RestartableTarget& target) {
    std::optional<RestartState> state;
    std::string complaint;
    if (!target.LoadState(state)) {
        complaint = target.Failure();
    } else if (state && state->phase != LoadPhase::kLoading) {
        return HandleReceipt(options, target, *state);
    } else if (!state && options.restart == RestartPolicy::kOnly) {
        complaint = "no load is unfinished (--restart only): " + target.StateName() + " holds none";
    } else if (state && options.restart == RestartPolicy::kNever) {
        complaint = "a load begun " + state->begun +
                    " is unfinished (--restart never): " + CountLoaded(*state) +
                    " loaded; run the command without --restart never to go on";
    } else if (state && !options.quiet) {
        TellUser("mqam load: going on with the load begun " + state->begun + ": " + CountLoaded(*state) +
                 " in " + state->target + " so far\n");
    }
    if (complaint.empty()) return Beginning::kLoad;
    static_cast<void>(Refuse(complaint));
    return Beginning::kRefused;
}

// ---- between two lives

struct Retries {
    std::optional<RestartState> seen;
    Clock::time_point lastProgress;
    seconds pause = kFirstPause;
    int attempts = 0;
};

void NoteProgress(RestartableTarget& target, Retries& retries) {
    std::optional<RestartState> state;
    if (!target.LoadState(state)) return;
    const bool progress = state && (!retries.seen || state->records != retries.seen->records ||
                                    state->phase != retries.seen->phase);
    if (!progress) return;
    retries.seen = state;
    retries.lastProgress = Clock::now();
    retries.pause = kFirstPause;
    retries.attempts = 0;
}

void TellWhatIsSafe(const Retries& retries) {
    if (!retries.seen) {
        TellUser(
            "  safe      nothing was loaded: every message is on the queue\n"
            "  next      run the same command again\n");
        return;
    }
    TellUser("  safe      " + CountLoaded(*retries.seen) + " in " + retries.seen->target +
             "; what was read behind them is in " + retries.seen->checkpointFile +
             " or back on the queue\n"
             "  next      run the same command again: it goes on there\n");
}

// Waits, but not for a user who wants an end. Returns false for that.
bool Pause(seconds duration) {
    const auto end = Clock::now() + duration;
    while (Clock::now() < end && !InterruptCame())
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return !InterruptCame();
}

// A life failed in a way that time may heal. Returns true to start another one.
bool WaitForNextAttempt(const LoadOptions& options, Retries& retries) {
    if (options.retryForSeconds == 0 || InterruptCame()) return false;
    const auto limit = retries.lastProgress + seconds(options.retryForSeconds);
    if (Clock::now() + retries.pause > limit && retries.attempts > 0) {
        TellUser("mqam load: no new checkpoint for " + std::to_string(options.retryForSeconds) +
                 " s (--retry-for): giving up\n");
        return false;
    }
    ++retries.attempts;
    TellUser("mqam load: attempt " + std::to_string(retries.attempts) + " in " +
             std::to_string(retries.pause.count()) + " s" +
             (retries.seen ? "; " + CountLoaded(*retries.seen) + " loaded" : "") + "\n");
    if (!Pause(retries.pause)) return false;
    retries.pause = std::min(retries.pause * 2, kLongestPause);
    return true;
}

int GiveUpOnEarlyEnds() {
    TellUser(
        "mqam load: the input ended " + std::to_string(kLivesWithNothingNewMax) +
        " times in a row before the read wait interval had passed, with nothing new: either empty messages "
        "(each one ends a life and is taken off the queue), or MQGETs that fail at once, as on a queue "
        "that inhibits get\n"
        "  next      look at the queue, then run the same command again\n");
    return kExitEndedEarly;
}

bool IsFailedLife(const WorkerEnd& end) {
    return end.killed || end.code == kExitRestart || end.code == kExitTargetFailed;
}

bool IsLifeOver(const WorkerEnd& end) {
    return !end.killed && (end.code == kWorkerInputEnded || end.code == kWorkerNothingNew);
}

bool StaysUnfinished(int exitCode) {
    return exitCode == kExitInterrupted || exitCode == kExitTimeout || exitCode == kExitModuleFailed ||
           exitCode == kExitStoppedAtOnce;
}

int LiveUntilDone(const LoadOptions& options, RestartableTarget& target) {
    const auto begin = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    Retries retries;
    retries.lastProgress = Clock::now();
    NoteProgress(target, retries);
    int livesWithNothingNew = 0;
    for (;;) {
        const WorkerEnd end = RunWorker({kWorkerOption, std::to_string(begin.count())});
        if (!end.started) return Refuse("a worker process cannot be started: " + end.reason);
        NoteProgress(target, retries);
        if (IsLifeOver(end)) {
            livesWithNothingNew = end.code == kWorkerNothingNew ? livesWithNothingNew + 1 : 0;
            if (livesWithNothingNew == kLivesWithNothingNewMax) return GiveUpOnEarlyEnds();
            if (!InterruptCame()) continue;
            TellWhatIsSafe(retries);
            return kExitInterrupted;
        }
        if (end.killed) {
            TellUser("mqam load: the worker process was killed (" + std::to_string(end.code) + ")\n");
        }
        if (!IsFailedLife(end)) {
            if (StaysUnfinished(end.code)) TellWhatIsSafe(retries);
            return end.code;
        }
        if (WaitForNextAttempt(options, retries)) continue;
        TellWhatIsSafe(retries);
        return !end.killed && end.code == kExitTargetFailed ? kExitTargetFailed : kExitRestart;
    }
}

}  // namespace

int SuperviseLoad(const LoadOptions& options, RestartableTarget& target) {
    switch (LookBeforeFirstLife(options, target)) {
        case Beginning::kRefused: return kExitNotStarted;
        case Beginning::kNothingToDo: return kExitDone;
        case Beginning::kLoad: break;
    }
    LeaveInterruptsToWorker();
    return LiveUntilDone(options, target);
}
