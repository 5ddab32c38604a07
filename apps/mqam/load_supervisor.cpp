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

// ---- before the first life

// A load in which nothing was stored yet has read nothing: it is not yet begun.
bool IsUnfinished(const std::optional<RestartState>& state) {
    return state && state->phase == LoadPhase::kLoading && state->position;
}

bool IsOver(const std::optional<RestartState>& state) {
    return state && state->phase != LoadPhase::kLoading;
}

// Returns what speaks against a first life, or an empty string.
std::string FindObstacle(const LoadOptions& options, RestartableTarget& target) {
    std::optional<RestartState> state;
    if (!target.LoadState(state)) return target.Failure();
    if (options.restart == RestartPolicy::kOnly && !IsUnfinished(state) && !IsOver(state)) {
        return "no load is unfinished (--restart only): " + target.StateName() + " holds none";
    }
    if (!IsUnfinished(state)) return "";
    if (options.restart == RestartPolicy::kNever) {
        return "a load begun " + state->begun +
               " is unfinished (--restart never): " + FormatRecordsThatAre(state->records) +
               " loaded; run the command without --restart never to go on";
    }
    if (!options.quiet) {
        TellUser("mqam load: going on with the load begun " + state->begun + ": " +
                 FormatRecordsThatAre(state->records) + " in " + state->target + "\n");
    }
    return "";
}

// ---- between two lives

struct Retries {
    std::optional<RestartState> seen;
    Clock::time_point failingSince;  // the first failure behind the last progress
    seconds pause = kFirstPause;
    int attempts = 0;  // since then
};

// `lifeLasted`: how long the life took that has just ended. One that connected and then waited for records
// for long has got on, too, though none came.
void NoteProgress(RestartableTarget& target, Retries& retries, Clock::duration lifeLasted) {
    std::optional<RestartState> state;
    if (!target.LoadState(state) || !state) return;
    const bool progress = !retries.seen || state->records != retries.seen->records ||
                          state->phase != retries.seen->phase ||
                          (state->lives != retries.seen->lives && lifeLasted > kLongestPause);
    retries.seen = state;
    if (!progress) return;
    retries.pause = kFirstPause;
    retries.attempts = 0;
}

// `next` says what to do first, when there is something.
void TellWhatIsSafe(const Retries& retries, const char* next = "run the same command again") {
    if (!IsUnfinished(retries.seen)) {
        TellUser(std::string("  safe      nothing was loaded: every message is on the queue\n  next      ") +
                 next + "\n");
        return;
    }
    TellUser("  safe      " + FormatRecordsThatAre(retries.seen->records) + " in " + retries.seen->target +
             "; what was read behind them is in " + retries.seen->checkpointFile +
             " or back on the queue\n  next      " + next + ": it goes on there\n");
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
    if (retries.attempts == 0) retries.failingSince = Clock::now();
    if (Clock::now() + retries.pause > retries.failingSince + seconds(options.retryForSeconds) &&
        retries.attempts > 0) {
        TellUser("mqam load: no new checkpoint for " + std::to_string(options.retryForSeconds) +
                 " s (--retry-for): giving up\n");
        return false;
    }
    ++retries.attempts;
    TellUser("mqam load: attempt " + std::to_string(retries.attempts) + " in " +
             std::to_string(retries.pause.count()) + " s; " +
             FormatRecordsThatAre(retries.seen ? retries.seen->records : 0) + " loaded\n");
    if (!Pause(retries.pause)) return false;
    retries.pause = std::min(retries.pause * 2, kLongestPause);
    return true;
}

int GiveUpOnEarlyEnds(const Retries& retries) {
    TellUser(
        "mqam load: the input ended " + std::to_string(kLivesWithNothingNewMax) +
        " times in a row before the read wait interval had passed, with nothing new: either empty messages "
        "(each one ends a life and is taken off the queue), or MQGETs that fail at once, as on a queue "
        "that inhibits get\n");
    TellWhatIsSafe(retries, "look at the queue, then run the same command again");
    return kExitEndedEarly;
}

int EndOnRequest(const Retries& retries) {
    TellUser("mqam load: ended on request\n");
    TellWhatIsSafe(retries);
    return kExitInterrupted;
}

// Ended by something else than itself: also with a code that no worker ends with, as some systems tell it.
bool WasKilled(const WorkerEnd& end) {
    switch (end.code) {
        case kExitDone:
        case kExitModuleFailed:
        case kExitTargetFailed:
        case kExitModuleMissing:
        case kExitInterrupted:
        case kExitTimeout:
        case kExitStoppedAtOnce:
        case kExitRestart:
        case kWorkerInputEnded:
        case kWorkerNothingNew:
        case kWorkerRefused: return end.killed;
        default: return true;
    }
}

bool IsFailedLife(const WorkerEnd& end) {
    return WasKilled(end) || end.code == kExitRestart || end.code == kExitTargetFailed;
}

bool HasInputEnded(const WorkerEnd& end) {
    return !WasKilled(end) && (end.code == kWorkerInputEnded || end.code == kWorkerNothingNew);
}

// A life that has told how it ended and after which nothing is tried again.
int EndWith(const WorkerEnd& end, const Retries& retries) {
    switch (end.code) {
        case kWorkerRefused: return kExitNotStarted;
        case kExitModuleFailed:
            TellWhatIsSafe(retries, "put that right, then run the same command again");
            break;
        case kExitInterrupted:
        case kExitTimeout:
        case kExitStoppedAtOnce: TellWhatIsSafe(retries); break;
        default: break;
    }
    return end.code;
}

int EndFailed(const WorkerEnd& end, const Retries& retries) {
    TellWhatIsSafe(retries);
    return !WasKilled(end) && end.code == kExitTargetFailed ? kExitTargetFailed : kExitRestart;
}

int LiveUntilDone(const LoadOptions& options, RestartableTarget& target) {
    const auto begin = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    Retries retries;
    NoteProgress(target, retries, Clock::duration::zero());
    const std::optional<RestartState> atBegin = retries.seen;
    int livesWithNothingNew = 0;
    for (;;) {
        if (InterruptCame()) return EndOnRequest(retries);
        const Clock::time_point start = Clock::now();
        std::vector<std::string> arguments = {kWorkerOption, std::to_string(begin.count())};
        if (IsOver(atBegin) && retries.seen->begun == atBegin->begun) arguments.push_back(kReceiptOption);
        const WorkerEnd end = RunWorker(arguments);
        if (!end.started) return Refuse("a worker process cannot be started: " + end.reason);
        NoteProgress(target, retries, Clock::now() - start);
        if (HasInputEnded(end)) {
            livesWithNothingNew = end.code == kWorkerNothingNew ? livesWithNothingNew + 1 : 0;
            if (livesWithNothingNew == kLivesWithNothingNewMax) return GiveUpOnEarlyEnds(retries);
            continue;
        }
        if (!IsFailedLife(end)) return EndWith(end, retries);
        if (WasKilled(end) && InterruptCame()) continue;
        if (WasKilled(end)) {
            TellUser("mqam load: the worker process was killed (" + std::to_string(end.code) + ")\n");
        }
        if (WaitForNextAttempt(options, retries)) continue;
        if (!InterruptCame()) return EndFailed(end, retries);
    }
}

}  // namespace

int SuperviseLoad(const LoadOptions& options, RestartableTarget& target) {
    const std::string obstacle = FindObstacle(options, target);
    if (!obstacle.empty()) return Refuse(obstacle);
    LeaveInterruptsToWorker();
    return LiveUntilDone(options, target);
}
