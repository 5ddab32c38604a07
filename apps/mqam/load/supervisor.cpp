#include "mqam/load/supervisor.h"

#include <chrono>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/load/attempt.h"
#include "mqam/load/retries.h"
#include "mqam/load/worker.h"
#include "mqam/load/worker_process.h"
#include "platform/interrupts.h"

namespace mqam {

namespace {

using Clock = std::chrono::steady_clock;

// For a command that is just ending.
constexpr int kLockTimeoutSeconds = 2;
// Each empty message costs a life; a queue whose MQGETs fail at once would cost them without end.
constexpr int kAttemptsWithoutProgressMax = 20;

int Refuse(const std::string& words) {
    PrintMessage("mqam load: " + words + "\n");
    return kExitNotStarted;
}

// ---- what is told at the end

std::string DescribeWhatIsSafe(const Retries& retries) {
    if (!retries.lastRead.IsOk()) {
        return "what is loaded stays so; how much it is cannot be told while the restart information cannot "
               "be read";
    }
    if (IsUnfinished(retries.seen)) {
        return FormatRecordsThatAre(retries.seen->records) + " in " + retries.seen->target +
               "; what was read behind them is in " + retries.seen->checkpointFile + " or back on the queue";
    }
    if (IsOver(retries.seen) && !IsEarlierCompletionMarker(retries)) {
        return "every record is in " + retries.seen->target;
    }
    return "nothing was loaded: every message is on the queue";
}

constexpr const char* kRunAgain = "run the same command again";
constexpr const char* kPutRightAndRunAgain = "put that right, then run the same command again";

// `next` says what to do first, when there is something.
void PrintWhatIsSafe(const Retries& retries, const std::string& next = kRunAgain) {
    PrintMessage("  safe      " + DescribeWhatIsSafe(retries) + "\n  next      " + next +
                 (IsUnfinished(retries.seen) ? ": it goes on there\n" : "\n"));
}

int GiveUpOnEarlyEnds(const Retries& retries) {
    PrintMessage(
        "mqam load: the input ended " + std::to_string(kAttemptsWithoutProgressMax) +
        " times in a row before the read wait interval had passed, with nothing new: either empty messages "
        "(each one ends a life and is taken off the queue), or MQGETs that fail at once, as on a queue "
        "that inhibits get\n");
    PrintWhatIsSafe(retries, "look at the queue, then run the same command again");
    return kExitEndedEarly;
}

int EndOnRequest(const Retries& retries) {
    PrintMessage("mqam load: ended on request\n");
    PrintWhatIsSafe(retries);
    return kExitInterrupted;
}

// Ended by something else than itself: also with a code that no worker ends with, as some systems tell it.
bool WasKilled(const WorkerEnd& end) {
    if (!end.started) return false;
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
        case kWorkerNoProgress:
        case kWorkerRefused: return end.killed;
        default: return true;
    }
}

bool IsFailedAttempt(const WorkerEnd& end) {
    return !end.started || WasKilled(end) || end.code == kExitRestart || end.code == kExitTargetFailed;
}

bool HasInputEnded(const WorkerEnd& end) {
    return end.started && !WasKilled(end) && (end.code == kWorkerInputEnded || end.code == kWorkerNoProgress);
}

// A life that has told how it ended and after which nothing is tried again.
int EndWith(const WorkerEnd& end, const Retries& retries) {
    switch (end.code) {
        case kWorkerRefused: return kExitNotStarted;
        case kExitModuleFailed: PrintWhatIsSafe(retries, kPutRightAndRunAgain); break;
        case kExitInterrupted:
        case kExitTimeout:
        case kExitStoppedAtOnce: PrintWhatIsSafe(retries); break;
        default: break;
    }
    return end.code;
}

// Of the target or another file of the load; which and why has been told.
int EndTargetFailed(const Retries& retries) {
    PrintWhatIsSafe(retries, kPutRightAndRunAgain);
    return kExitTargetFailed;
}

int EndFailed(const WorkerEnd& end, const Retries& retries) {
    if (end.started && !WasKilled(end) && end.code == kExitTargetFailed) return EndTargetFailed(retries);
    PrintWhatIsSafe(retries);
    return kExitRestart;
}

// ---- the lives

// Tells of a file that failed before the first life and waits for the next attempt. Returns kExitDone for
// that, or the exit code when there is none.
int TryAgainBefore(const std::string& failure, const SupervisorSettings& settings, Retries& retries) {
    PrintMessage("mqam load: " + failure + "\n");
    if (WaitForNextAttempt(settings.retryForSeconds, retries)) return kExitDone;
    return platform::InterruptForwarded() ? EndOnRequest(retries) : EndTargetFailed(retries);
}

// Again and again when the system fails and the user asked for it. Returns an exit code, or kExitDone when it
// was taken.
int AcquireCommandLock(const SupervisorSettings& settings, Target& target, Retries& retries) {
    for (;;) {
        const Status locked = target.AcquireLock(TargetLock::kCommand, kLockTimeoutSeconds);
        if (locked.IsOk()) return kExitDone;
        if (locked.Code() == StatusCode::kRefused) return Refuse(locked.Error());
        // The state is read only for the "safe" line, which says so if it cannot be read.
        static_cast<void>(ReadFirstState(target, retries));
        const int exitCode = TryAgainBefore(locked.Error(), settings, retries);
        if (exitCode != kExitDone) return exitCode;
    }
}

// Reads what is stored, in the same way.
int FetchState(const SupervisorSettings& settings, Target& target, Retries& retries) {
    for (;;) {
        const Status read = ReadFirstState(target, retries);
        if (read.IsOk()) return kExitDone;
        if (read.Code() == StatusCode::kRefused) return Refuse(read.Error());
        const int exitCode = TryAgainBefore(read.Error(), settings, retries);
        if (exitCode != kExitDone) return exitCode;
    }
}

// Returns what speaks against a first life, or an empty string.
std::string FindObstacle(const SupervisorSettings& settings, const Target& target,
                         const std::optional<RestartState>& state) {
    if (settings.restart == RestartPolicy::kOnly && !IsUnfinished(state) && !IsOver(state)) {
        return "no load is unfinished (--restart only): " + target.StateName() + " holds none";
    }
    if (!IsUnfinished(state)) return "";
    if (settings.restart == RestartPolicy::kNever) {
        return "a load begun " + state->begun +
               " is unfinished (--restart never): " + FormatRecordsThatAre(state->records) +
               " loaded; run the command without --restart never to go on";
    }
    if (!settings.quiet) {
        PrintMessage("mqam load: going on with the load begun " + state->begun + ": " +
                     FormatRecordsThatAre(state->records) + " in " + state->target + "\n");
    }
    return "";
}

// Runs one worker. One that was started and ended by itself has told how; the rest is told here.
WorkerEnd RunOneAttempt(Target& target, const std::vector<std::string>& arguments, Retries& retries) {
    const Clock::time_point start = Clock::now();
    WorkerEnd end = RunWorker(arguments);
    NoteProgress(target, retries, Clock::now() - start);
    const bool saysDone = end.started && !end.killed && end.code == kExitDone;
    if (saysDone && !retries.lastRead.IsOk()) {
        PrintMessage("mqam load: whether the load is done cannot be told: " + retries.lastRead.Error() +
                     "\n");
        end.code = kExitTargetFailed;
        return end;
    }
    // Somebody else's exit in the worker, a library's: a worker is done when the load is.
    if (saysDone && !IsOver(retries.seen)) end.killed = true;
    if (!end.started) {
        PrintMessage("mqam load: a worker process cannot be started: " + end.reason + "\n");
    } else if (WasKilled(end) && !platform::InterruptForwarded()) {
        PrintMessage("mqam load: the worker process was killed (" + std::to_string(end.code) + ")\n");
    }
    return end;
}

int RunAttempts(const SupervisorSettings& settings, Target& target, Retries& retries) {
    const auto begin = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    int attemptsWithoutProgress = 0;
    bool followsEnd = false;
    for (;;) {
        if (platform::InterruptForwarded()) return EndOnRequest(retries);
        std::vector<std::string> arguments = {kWorkerOption, std::to_string(begin.count())};
        if (IsEarlierCompletionMarker(retries)) arguments.push_back(kReceiptOption);
        if (followsEnd) arguments.push_back(kFollowsEndOption);
        const WorkerEnd end = RunOneAttempt(target, arguments, retries);
        // A life that follows an end waits only a moment: behind it the whole interval counts again.
        followsEnd = !followsEnd && HasInputEnded(end);
        if (HasInputEnded(end)) {
            attemptsWithoutProgress = end.code == kWorkerNoProgress ? attemptsWithoutProgress + 1 : 0;
            if (attemptsWithoutProgress == kAttemptsWithoutProgressMax) return GiveUpOnEarlyEnds(retries);
            continue;
        }
        if (!IsFailedAttempt(end)) return EndWith(end, retries);
        if (WasKilled(end) && platform::InterruptForwarded()) continue;
        if (WaitForNextAttempt(settings.retryForSeconds, retries)) continue;
        if (!platform::InterruptForwarded()) return EndFailed(end, retries);
    }
}

int SuperviseLocked(const SupervisorSettings& settings, Target& target, Retries& retries) {
    const int fetched = FetchState(settings, target, retries);
    if (fetched != kExitDone) return fetched;
    const std::string obstacle = FindObstacle(settings, target, retries.seen);
    if (!obstacle.empty()) return Refuse(obstacle);
    return RunAttempts(settings, target, retries);
}

}  // namespace

int SuperviseLoad(const SupervisorSettings& settings, Target& target) {
    Retries retries;
    platform::ForwardInterrupts();
    // Also between two lives, in a pause above all, no other command is to take the load over.
    const int locked = AcquireCommandLock(settings, target, retries);
    if (locked != kExitDone) return locked;
    const int exitCode = SuperviseLocked(settings, target, retries);
    target.ReleaseLock(TargetLock::kCommand);
    return exitCode;
}

}  // namespace mqam
