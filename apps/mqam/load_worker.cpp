#include "apps/mqam/load_worker.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>

#include "apps/mqam/exit_codes.h"
#include "apps/mqam/module_requests.h"
#include "apps/mqam/platform.h"
#include "apps/mqam/worker_process.h"

namespace {

[[noreturn]] void EndWorker(int exitCode, const std::string& words) {
    if (!words.empty()) TellUser("mqam load: " + words);
    EndProcessAtOnce(MarkWorkerExit(exitCode));
}

double SecondsSince(std::int64_t epochMilliseconds) {
    const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    return now > epochMilliseconds ? static_cast<double>(now - epochMilliseconds) / 1000 : 0;
}

std::string DescribeDone(const LoadOptions& options, const RestartLifeOutcome& outcome,
                         const RestartableTarget& target) {
    if (options.quiet) return "";
    const RestartState& state = outcome.state;
    return "end of the queue: the load is done\n  records   " + FormatCount(state.records) +
           "\n  bytes     " + FormatCount(state.bytes) + "\n  begun     " + state.begun + "\n  lives     " +
           FormatCount(state.lives) + "\n  elapsed   " + FormatElapsed(SecondsSince(options.workerSince)) +
           "\n  target    " + target.Name() + "\n";
}

std::string DescribeReceipt(const RestartState& state, const RestartableTarget& target) {
    return "this load is complete, nothing was loaded now: begun " + state.begun + ", it has put " +
           FormatRecords(state.records) + " into " + state.target +
           "\n  next      to load more into it give --append; to load anew move it away, or delete what is "
           "kept of the load (" +
           target.StateName() + ")\n";
}

[[noreturn]] void EndLife(const LoadOptions& options, const RestartLifeOutcome& outcome,
                          const RestartableTarget& target) {
    switch (outcome.end) {
        case RestartLifeEnd::kLoadDone: EndWorker(kExitDone, DescribeDone(options, outcome, target));
        case RestartLifeEnd::kNothingToDo: EndWorker(kExitDone, DescribeReceipt(outcome.state, target));
        case RestartLifeEnd::kInputEnded: EndWorker(kWorkerInputEnded, "");
        case RestartLifeEnd::kNothingNew: EndWorker(kWorkerNothingNew, "");
        case RestartLifeEnd::kOnRequest: EndWorker(kExitInterrupted, "ended on request\n");
        case RestartLifeEnd::kTimeout: EndWorker(kExitTimeout, "the time-out (--timeout) expired\n");
        case RestartLifeEnd::kRefused: EndWorker(kWorkerRefused, outcome.refusal + "\n");
        case RestartLifeEnd::kModuleFailed: EndWorker(kExitRestart, DescribeFailure(outcome.moduleFailure));
        case RestartLifeEnd::kModuleRefuses:
            EndWorker(kExitModuleFailed, DescribeFailure(outcome.moduleFailure));
        case RestartLifeEnd::kTargetFailed: EndWorker(kExitTargetFailed, outcome.targetFailure + "\n");
    }
    EndWorker(kExitModuleFailed, "");
}

[[noreturn]] void Live(const LoadOptions& options, const RestartLifeSettings& settings,
                       RestartableTarget& target) {
    // The module prints its report on standard output.
    if (ClaimStandardOutput(ModuleOutput::kDropped) < 0) {
        EndWorker(kWorkerRefused, std::string("standard output: ") + std::strerror(errno) + "\n");
    }
    std::string reason;
    const PIDMMainFunction entryPoint = LoadModule(options.module.modulePath, reason);
    if (entryPoint == nullptr) {
        EndWorker(kExitModuleMissing, "the module cannot be loaded: " + reason + "\n");
    }
    WatchInterrupts(MarkWorkerExit(kExitStoppedAtOnce));
    ProgressCounters counters;
    counters.secondsBefore = SecondsSince(options.workerSince);
    StartProgress(ChooseProgressStyle(options, false), counters);
    const RestartLifeOutcome outcome =
        RunRestartLife(entryPoint, settings, target, MakeObserver(options), counters);
    StopProgress();
    EndLife(options, outcome, target);
}

}  // namespace

void LiveAsWorker(const LoadOptions& options, const RestartLifeSettings& settings,
                  RestartableTarget& target) {
    // An exception must not leave by way of main: exit routines of an MQ library may disconnect.
    try {
        Live(options, settings, target);
    } catch (const std::exception& error) {
        EndWorker(kExitRestart, std::string(error.what()) + "\n");
    }
}
