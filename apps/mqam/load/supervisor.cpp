// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/supervisor.h"

#include <chrono>
#include <utility>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/load/attempt.h"
#include "mqam/load/exit_table.h"
#include "mqam/load/probe_process.h"
#include "mqam/load/retries.h"
#include "mqam/load/worker.h"
#include "mqam/load/worker_process.h"
#include "platform/interrupts.h"

namespace mqam {

namespace {

using Clock = std::chrono::steady_clock;

// This is long enough for another command that is just ending.
constexpr int kCommandLockTimeoutSeconds = 2;
// Each empty message costs an attempt. Without this limit, a queue whose MQGETs fail immediately would cost
// attempts forever.
constexpr int kAttemptsWithoutProgressMax = 20;

int Refuse(const std::string& error) {
    PrintMessage("mqam load: " + error + "\n");
    return FindAttemptEnd(AttemptEnd::kRefused).exitCode;
}

// ---- what is printed at the end

std::string DescribeWhatIsSafe(const Retries& retries) {
    if (!retries.lastRead.IsOk()) {
        return "what is loaded stays loaded; how much that is cannot be known while the restart information cannot "
               "be read";
    }
    if (IsUnfinished(retries.seen)) {
        return FormatRecordsThatAre(retries.seen->records) + " in " + retries.seen->target +
               "; what was read after them is in " + retries.seen->checkpointFile + " or back on the queue";
    }
    if (IsOver(retries.seen) && !IsEarlierCompletionMarker(retries)) {
        return "every record is in " + retries.seen->target;
    }
    return "nothing was loaded: every message is on the queue";
}

constexpr const char* kRunAgainText = "run the same command again";
constexpr const char* kFixAndRunAgainText = "fix that, then run the same command again";

// `next` says what to do first.
void PrintWhatIsSafe(const Retries& retries, const std::string& next = kRunAgainText) {
    PrintMessage("  safe      " + DescribeWhatIsSafe(retries) + "\n  next      " + next +
                 (IsUnfinished(retries.seen) ? ": it resumes there\n" : "\n"));
}

int GiveUpOnEarlyEnds(const Retries& retries) {
    PrintMessage(
        "mqam load: the input ended " + std::to_string(kAttemptsWithoutProgressMax) +
        " times in a row before the read wait interval had passed, and no record came: either there are "
        "empty messages (each one ends an attempt and is removed from the queue), or MQGETs fail at once, "
        "as on a queue that inhibits get\n");
    RunProbeProcess(ProbeKind::kEarlyEnd);
    PrintWhatIsSafe(retries, "look at the queue, then run the same command again");
    return FindAttemptEnd(AttemptEnd::kNoProgress).exitCode;
}

int EndOnRequest(const Retries& retries) {
    PrintMessage("mqam load: ended on request\n");
    PrintWhatIsSafe(retries);
    return FindAttemptEnd(AttemptEnd::kInterrupted).exitCode;
}

// Ends the command after an attempt whose end has been reported.
int EndWith(AttemptEnd end, const Retries& retries) {
    const AttemptEndRow& row = FindAttemptEnd(end);
    if (row.hint == NextHint::kRunAgain) PrintWhatIsSafe(retries);
    if (row.hint == NextHint::kFixAndRunAgain) PrintWhatIsSafe(retries, kFixAndRunAgainText);
    return row.exitCode;
}

// ---- the attempts

// Reports a file error that occurred before the first attempt, then waits. Returns kExitDone if it should be tried
// again, otherwise the exit code to end with.
int WaitAfterError(const std::string& error, const SupervisorSettings& settings, Retries& retries) {
    PrintMessage("mqam load: " + error + "\n");
    if (WaitForNextAttempt(settings.retryForSeconds, retries)) return kExitDone;
    return platform::InterruptForwarded() ? EndOnRequest(retries)
                                          : EndWith(AttemptEnd::kTargetFailed, retries);
}

// Acquires the lock; retries if the system fails and the user asked for retries. Returns kExitDone if the lock is
// acquired, otherwise the exit code to end with.
int AcquireCommandLock(const SupervisorSettings& settings, Target& target, Retries& retries) {
    for (;;) {
        const Status locked = target.AcquireLock(TargetLock::kCommand, kCommandLockTimeoutSeconds);
        if (locked.IsOk()) return kExitDone;
        if (locked.Code() == StatusCode::kRefused) return Refuse(locked.Error());
        // The state is read only for the "safe" line, which has its own wording if the state cannot be read.
        static_cast<void>(ReadFirstState(target, retries));
        const int exitCode = WaitAfterError(locked.Error(), settings, retries);
        if (exitCode != kExitDone) return exitCode;
    }
}

// Reads the stored state, with retries and a return value like those of AcquireCommandLock.
int FetchState(const SupervisorSettings& settings, Target& target, Retries& retries) {
    for (;;) {
        const Status read = ReadFirstState(target, retries);
        if (read.IsOk()) return kExitDone;
        if (read.Code() == StatusCode::kRefused) return Refuse(read.Error());
        const int exitCode = WaitAfterError(read.Error(), settings, retries);
        if (exitCode != kExitDone) return exitCode;
    }
}

// Refuses a first attempt that the user does not want, and announces one that resumes a load.
Status CheckPolicy(const SupervisorSettings& settings, const Target& target,
                   const std::optional<RestartState>& state) {
    if (settings.restart == RestartPolicy::kOnly && !IsUnfinished(state) && !IsOver(state)) {
        return Status::Refused("no load is unfinished (--restart only): there is none in " +
                               target.StateName());
    }
    if (!IsUnfinished(state)) return {};
    if (settings.restart == RestartPolicy::kNever) {
        return Status::Refused("a load begun " + state->begun +
                               " is unfinished (--restart never): " + FormatRecordsThatAre(state->records) +
                               " loaded; run the command without --restart never to resume it");
    }
    if (!settings.quiet) {
        PrintMessage("mqam load: resuming the load begun " + state->begun + ": " +
                     FormatRecordsThatAre(state->records) + " in " + state->target + "\n");
    }
    return {};
}

// Runs one worker. A worker that was started and ended by itself has reported how; everything else is reported here.
AttemptEnd RunOneAttempt(Target& target, const std::vector<std::string>& arguments, Retries& retries) {
    const Clock::time_point start = Clock::now();
    const WorkerEnd worker = RunWorker(arguments);
    AttemptEnd end = AttemptEndOf(worker);
    NoteProgress(target, retries, Clock::now() - start);
    if (end == AttemptEnd::kLoadDone && !retries.lastRead.IsOk()) {
        PrintMessage("mqam load: it cannot be known whether the load is done: " + retries.lastRead.Error() +
                     "\n");
        return AttemptEnd::kTargetFailed;
    }
    // Exit code 0 without a finished load means that a library called exit(). This counts as a crash.
    if (end == AttemptEnd::kLoadDone && !IsOver(retries.seen)) end = AttemptEnd::kWorkerKilled;
    if (end == AttemptEnd::kWorkerNotStarted) {
        PrintMessage("mqam load: a worker process cannot be started: " + worker.reason + "\n");
    } else if (end == AttemptEnd::kWorkerKilled && !platform::InterruptForwarded()) {
        PrintMessage("mqam load: the worker process was killed (" + std::to_string(worker.code) + ")\n");
    }
    return end;
}

int RunAttempts(const SupervisorSettings& settings, Target& target, Retries& retries) {
    const auto begin = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    int attemptsWithoutProgress = 0;
    bool followsEnd = false;
    bool acceptsLoss = settings.acceptsLoss;
    for (;;) {
        if (platform::InterruptForwarded()) return EndOnRequest(retries);
        std::vector<std::string> arguments = {kWorkerOption, std::to_string(begin.count())};
        if (IsEarlierCompletionMarker(retries)) arguments.push_back(kCompletedBeforeOption);
        if (followsEnd) arguments.push_back(kFollowsEndOption);
        // What a later attempt loses is not what the user was asked about.
        if (std::exchange(acceptsLoss, false)) arguments.push_back(kAcceptsLossOption);
        const AttemptEnd end = RunOneAttempt(target, arguments, retries);
        const AfterAttempt after = FindAttemptEnd(end).after;
        // An attempt that follows an end of the input waits only a moment; after it the whole interval counts again.
        followsEnd = !followsEnd && after == AfterAttempt::kContinue;
        switch (after) {
            case AfterAttempt::kEndCommand: return EndWith(end, retries);
            case AfterAttempt::kContinue:
                attemptsWithoutProgress = end == AttemptEnd::kNoProgress ? attemptsWithoutProgress + 1 : 0;
                if (attemptsWithoutProgress == kAttemptsWithoutProgressMax) return GiveUpOnEarlyEnds(retries);
                break;
            case AfterAttempt::kRetry:
                if (end == AttemptEnd::kWorkerKilled && platform::InterruptForwarded()) break;
                if (WaitForNextAttempt(settings.retryForSeconds, retries)) break;
                if (!platform::InterruptForwarded()) return EndWith(end, retries);
                break;
        }
    }
}

int SuperviseLocked(const SupervisorSettings& settings, Target& target, Retries& retries) {
    const int fetched = FetchState(settings, target, retries);
    if (fetched != kExitDone) return fetched;
    const Status checked = CheckPolicy(settings, target, retries.seen);
    return checked.IsOk() ? RunAttempts(settings, target, retries) : Refuse(checked.Error());
}

}  // namespace

int SuperviseLoad(const SupervisorSettings& settings, Target& target) {
    Retries retries;
    platform::ForwardInterrupts();
    // The lock is held between two attempts as well, above all during a pause, so that no other command takes over.
    const int locked = AcquireCommandLock(settings, target, retries);
    if (locked != kExitDone) return locked;
    const int exitCode = SuperviseLocked(settings, target, retries);
    target.ReleaseLock(TargetLock::kCommand);
    return exitCode;
}

}  // namespace mqam
