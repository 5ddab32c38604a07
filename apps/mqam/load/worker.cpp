// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/worker.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>

#include "mqam/explain/failure_report.h"
#include "mqam/load/attempt_watch.h"
#include "mqam/load/exit_table.h"
#include "mqam/load/interrupts.h"
#include "mqam/load/probe_process.h"
#include "mqam/load/worker_process.h"
#include "mqam/module/module_session.h"
#include "mqam/target/record_encoder.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/standard_streams.h"

namespace mqam {

namespace {

// Makes the calling thread the one that ends the process. If the thread of the attempt and that of the watch both want
// to, the first one does, and the other one waits for it.
void ClaimEnd() {
    static std::atomic_flag isClaimed;
    while (isClaimed.test_and_set())
        platform::SleepMs(1000);
    StopProgress();
}

void PrintEnd(const std::string& message) {
    if (!message.empty()) PrintMessage("mqam load: " + message);
}

[[noreturn]] void ExitWorker(AttemptEnd end) {
    platform::ExitImmediately(platform::MarkExitCode(FindAttemptEnd(end).workerCode));
}

[[noreturn]] void EndWorker(AttemptEnd end, const std::string& message) {
    ClaimEnd();
    PrintEnd(message);
    ExitWorker(end);
}

double SecondsSince(std::int64_t epochMs) {
    const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    return now > epochMs ? static_cast<double>(now - epochMs) / 1000 : 0;
}

std::string DescribeDone(const WorkerSettings& settings, const AttemptResult& result, const Target& target) {
    if (settings.quiet) return "";
    const RestartState& state = result.state;
    return "end of the queue: the load is done\n  records   " + FormatCount(state.records) +
           "\n  bytes     " + FormatCount(state.bytes) + "\n  begun     " + state.begun + "\n  attempts  " +
           FormatCount(state.attempts) + "\n  elapsed   " +
           FormatElapsed(SecondsSince(settings.commandStartedMs)) + "\n  target    " + target.Name() + "\n";
}

std::string DescribeCompletedLoad(const RestartState& state, const Target& target) {
    return "this load is already complete, so nothing was loaded now: it began " + state.begun + " and put " +
           FormatRecords(state.records) + " into " + state.target +
           "\n  next      to load more into it, give --append; to load from scratch, move it away, and leave what is "
           "kept of the load (" +
           target.StateName() + ")\n";
}

// Describes an end that needs no result of the attempt.
std::string DescribeEndFromOutside(AttemptEnd end) {
    return end == AttemptEnd::kTimeout ? "the time-out (--timeout) expired\n" : "ended on request\n";
}

// Returns the lines that the user sees, each with its line end, or an empty string if there is nothing to
// report.
std::string DescribeEnd(const WorkerSettings& settings, const AttemptResult& result, const Target& target) {
    switch (result.end) {
        case AttemptEnd::kLoadDone: return DescribeDone(settings, result, target);
        case AttemptEnd::kNothingToDo: return DescribeCompletedLoad(result.state, target);
        case AttemptEnd::kInterrupted:
        case AttemptEnd::kTimeout: return DescribeEndFromOutside(result.end);
        case AttemptEnd::kRefused:
            if (!result.error.IsOk()) return result.error.Error() + "\n";
            return DescribeFailure(result.moduleFailure, settings.detail) + settings.usage;
        case AttemptEnd::kTargetFailed: return result.error.Error() + "\n";
        case AttemptEnd::kModuleFailed:
        case AttemptEnd::kModuleRefuses: return DescribeFailure(result.moduleFailure, settings.detail);
        default: return "";
    }
}

[[noreturn]] void MakeAttempt(const WorkerSettings& settings, Target& target) {
    // The module prints its report on standard output.
    if (platform::RedirectStdout(platform::ModuleOutput::kDropped) < 0) {
        EndWorker(AttemptEnd::kRefused, std::string("standard output: ") + std::strerror(errno) + "\n");
    }
    PIDMMainFunction entryPoint = nullptr;
    const Status loaded = LoadModule(settings.modulePath, entryPoint);
    if (!loaded.IsOk()) EndWorker(AttemptEnd::kModuleMissing, loaded.Error() + "\n");
    WatchInterrupts(platform::MarkExitCode(FindAttemptEnd(AttemptEnd::kStoppedImmediately).workerCode));
    // Other threads use these until the process ends, after an exception as well.
    static ProgressCounters counters;
    static AttemptWatch watch;
    counters.secondsBefore = SecondsSince(settings.commandStartedMs);
    StartProgress(settings.progress, counters);
    watch.Start(settings.observer.stopWanted,
                [](AttemptEnd end) { EndWorker(end, DescribeEndFromOutside(end)); });
    const AttemptResult result =
        RunAttempt(entryPoint, settings.attempt, target, settings.observer, counters, watch);
    ClaimEnd();
    PrintEnd(DescribeEnd(settings, result, target));
    const std::string lineFeeds = DescribeLineFeeds(target.RecordsWithLineFeeds());
    if (!settings.quiet && !lineFeeds.empty()) PrintMessage("mqam load: " + lineFeeds + "\n");
    RunProbeProcess(ProbeKindOf(result.moduleFailure));
    ExitWorker(result.end);
}

}  // namespace

void RunAsWorker(const WorkerSettings& settings, Target& target) {
    // An exception must not leave by way of main: exit routines of an MQ library may disconnect.
    try {
        MakeAttempt(settings, target);
    } catch (const std::exception& error) {
        EndWorker(AttemptEnd::kModuleFailed, std::string(error.what()) + "\n");
    }
}

}  // namespace mqam
