#include "mqam/load/worker.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>

#include "mqam/explain/failure_report.h"
#include "mqam/load/exit_table.h"
#include "mqam/load/interrupts.h"
#include "mqam/load/worker_process.h"
#include "mqam/module/module_session.h"
#include "platform/process.h"
#include "platform/standard_streams.h"

namespace mqam {

namespace {

[[noreturn]] void EndWorker(AttemptEnd end, const std::string& message) {
    if (!message.empty()) PrintMessage("mqam load: " + message);
    platform::ExitImmediately(platform::MarkExitCode(FindAttemptEnd(end).workerCode));
}

double SecondsSince(std::int64_t epochMilliseconds) {
    const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    return now > epochMilliseconds ? static_cast<double>(now - epochMilliseconds) / 1000 : 0;
}

std::string DescribeDone(const WorkerSettings& settings, const AttemptResult& outcome, const Target& target) {
    if (settings.quiet) return "";
    const RestartState& state = outcome.state;
    return "end of the queue: the load is done\n  records   " + FormatCount(state.records) +
           "\n  bytes     " + FormatCount(state.bytes) + "\n  begun     " + state.begun + "\n  lives     " +
           FormatCount(state.attempts) + "\n  elapsed   " +
           FormatElapsed(SecondsSince(settings.commandStartedMs)) + "\n  target    " + target.Name() + "\n";
}

std::string DescribeReceipt(const RestartState& state, const Target& target) {
    return "this load is complete, nothing was loaded now: begun " + state.begun + ", it has put " +
           FormatRecords(state.records) + " into " + state.target +
           "\n  next      to load more into it give --append; to load anew move it away, or delete what is "
           "kept of the load (" +
           target.StateName() + ")\n";
}

// Returns the lines that the user sees, each with its line end; empty when the command has nothing to say.
std::string DescribeEnd(const WorkerSettings& settings, const AttemptResult& outcome, const Target& target) {
    switch (outcome.end) {
        case AttemptEnd::kLoadDone: return DescribeDone(settings, outcome, target);
        case AttemptEnd::kNothingToDo: return DescribeReceipt(outcome.state, target);
        case AttemptEnd::kInterrupted: return "ended on request\n";
        case AttemptEnd::kTimeout: return "the time-out (--timeout) expired\n";
        case AttemptEnd::kRefused: return outcome.refusal + "\n";
        case AttemptEnd::kModuleFailed:
        case AttemptEnd::kModuleRefuses: return DescribeFailure(outcome.moduleFailure);
        case AttemptEnd::kTargetFailed: return outcome.targetFailure + "\n";
        default: return "";
    }
}

[[noreturn]] void Live(const WorkerSettings& settings, Target& target) {
    // The module prints its report on standard output.
    if (platform::RedirectStdout(platform::ModuleOutput::kDropped) < 0) {
        EndWorker(AttemptEnd::kRefused, std::string("standard output: ") + std::strerror(errno) + "\n");
    }
    PIDMMainFunction entryPoint = nullptr;
    const Status loaded = LoadModule(settings.modulePath, entryPoint);
    if (!loaded.IsOk()) EndWorker(AttemptEnd::kModuleMissing, loaded.Error() + "\n");
    WatchInterrupts(platform::MarkExitCode(FindAttemptEnd(AttemptEnd::kStoppedImmediately).workerCode));
    ProgressCounters counters;
    counters.secondsBefore = SecondsSince(settings.commandStartedMs);
    StartProgress(settings.progress, counters);
    const AttemptResult outcome =
        RunAttempt(entryPoint, settings.attempt, target, settings.observer, counters);
    StopProgress();
    EndWorker(outcome.end, DescribeEnd(settings, outcome, target));
}

}  // namespace

void RunAsWorker(const WorkerSettings& settings, Target& target) {
    // An exception must not leave by way of main: exit routines of an MQ library may disconnect.
    try {
        Live(settings, target);
    } catch (const std::exception& error) {
        EndWorker(AttemptEnd::kModuleFailed, std::string(error.what()) + "\n");
    }
}

}  // namespace mqam
