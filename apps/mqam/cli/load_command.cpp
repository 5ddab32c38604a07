// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/load_command.h"

#include <CLI/App.hpp>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/cli/command_line.h"
#include "mqam/cli/load_options.h"
#include "mqam/cli/probe_command.h"
#include "mqam/cli/restartable_load.h"
#include "mqam/cli/summary.h"
#include "mqam/explain/advice.h"
#include "mqam/explain/code_tables.h"
#include "mqam/explain/failure_report.h"
#include "mqam/load/interrupts.h"
#include "mqam/module/module_session.h"
#include "mqam/target/file/file_sink.h"
#include "mqam/target/load_places.h"
#include "mqam/target/path_conflict.h"
#include "mqam/target/target_kind.h"
#include "platform/file.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/terminal.h"

namespace mqam {

namespace {

constexpr const char* kLoadExamples =
    "Whatever ends a load, the same command resumes it, and every message is in the target exactly once.\n"
    "What it needs for that is in the directory TARGET.load until the load is done.\n"
    "\n"
    "Examples:\n"
    "  mqam load --qmgr QM1 --queue ORDERS --to orders.txt\n"
    "      every message of the queue as a line of orders.txt; ends when the queue has been empty for 15 s\n"
    "  mqam load --qmgr QM1 --queue ORDERS --to orders.txt --append\n"
    "      the same every night: it adds what has arrived since to orders.txt\n"
    "  mqam load --qmgr QM1 --queue ORDERS --rwait 5 --format length --to orders.bin\n"
    "      binary messages: 4 bytes little-endian length before each\n"
    "  mqam load --qmgr QM1 --queue ORDERS --channel DEV.APP.SVRCONN --server 'mq.example.com(1414)' \\\n"
    "            --checkpoint-every 500 --trace 2 orders.trc --to orders.txt\n"
    "      as an MQ client, with a checkpoint after every 500 records and a trace\n"
    "  mqam load --qmgr QM1 --queue ORDERS --ckfile /fast/orders.ckpt --restart-file /safe/orders.restart \\\n"
    "            --to orders.txt\n"
    "      with the files of the load in other places\n"
    "  mqam load --qmgr QM1 --queue ORDERS --to 'sqlite:orders.db?table=orders' --retry-for 3600\n"
    "      into a SQLite table, which keeps the restart information itself; retries after a failure\n"
    "  mqam load --parmfile orders.parm --to - | gzip > orders.gz\n"
    "      keywords from a file, records to standard output: unprotected, a failure loses messages\n";

int Refuse(const std::string& error) {
    PrintMessage("mqam load: " + error + "\n");
    return kExitNotStarted;
}

// Refuses an option or a value.
int RefuseOption(const LoadOptions& options, const std::string& error) {
    return Refuse(error + "\n" + options.usage.substr(0, options.usage.size() - 1));
}

// Makes the settings of a unprotected load.
Status ComposeSettings(const LoadOptions& options, PlainLoadSettings& settings) {
    Status status = ComposeInitString(options.module, settings.initString);
    if (status.IsOk()) status = ComposeAttributes(options, settings.attributes);
    settings.timeout = std::chrono::seconds(options.timeoutSeconds);
    settings.wantsKeywordHelp = WasKeywordGiven(options.module, "HELP");
    return status;
}

// Refuses a target that is also a log or a trace.
Status CheckFiles(const LoadOptions& options) {
    std::vector<LoadFile> files;
    if (options.target != "-") files.push_back({RealPath(options.target), "target"});
    const std::string log = ValueOfKeyword(options.module, "LOG");
    if (!log.empty()) files.push_back({RealPath(log), "message log"});
    const std::string trace = ValueOfKeyword(options.module, "TRCL", 1);
    if (!trace.empty()) files.push_back({RealPath(trace), "trace"});
    return CheckPathConflicts(files);
}

// Returns the first option given that an unprotected load has no use for, or null.
const char* FindRestartOption(const LoadOptions& options) {
    if (WasKeywordGiven(options.module, "CKFILE")) return "--ckfile";
    if (options.checkpointEvery != 0) return "--checkpoint-every";
    if (!options.restartFile.empty()) return "--restart-file";
    if (options.checkpointSeconds != 0) return "--checkpoint-seconds";
    if (options.restart != RestartPolicy::kAuto) return "--restart";
    if (options.retryForSeconds != 0) return "--retry-for";
    if (options.acceptLoss) return "--accept-loss";
    if (options.durabilityGiven) return "--durability";
    return nullptr;
}

// Refuses options that do not go with an unprotected load.
Status CheckUnprotected(const LoadOptions& options) {
    const std::string cause = options.target == "-" ? "--to -" : "--unprotected";
    if (FindTargetKind(options.target).keepsRestartState) {
        return Status::Refused("--unprotected does not go with " + options.target +
                               ": such a target keeps the restart information itself");
    }
    if (const char* option = FindRestartOption(options)) {
        return Status::Refused(std::string(option) + " does not go with " + cause +
                               ": an unprotected load takes no checkpoints and cannot be resumed");
    }
    return {};
}

// Warns of what an unprotected load may cost.
void WarnUnprotected(const LoadOptions& options, const std::string& target) {
    if (options.quiet) return;
    const std::string loses =
        "a failure loses the messages that were taken from the queue and not yet written to " + target + "\n";
    PrintMessage(options.target == "-"
                     ? "mqam load: standard output cannot be truncated, so this load is unprotected: " + loses
                     : "mqam load: this load is unprotected (--unprotected): " + loses);
    if (WasKeywordGiven(options.module, "CONVERT")) {
        PrintMessage(
            "mqam load: --convert: in an unprotected load, a message that MQ cannot convert is lost\n");
    }
}

// Decides how the target is opened. Refuses a file that exists unless the user said what to do with it.
Status ChooseTarget(const LoadOptions& options, FileSinkSettings& target) {
    target.format = options.format;
    target.newlines = options.newlines;
    if (options.target == "-") {
        target.path = "standard output";
        return {};
    }
    target.path = options.target;
    switch (platform::ProbePath(options.target)) {
        case platform::PathKind::kMissing:
        case platform::PathKind::kUnknown:
            target.mode = options.append ? platform::OpenMode::kAppend : platform::OpenMode::kCreate;
            return {};
        case platform::PathKind::kOther: target.mode = platform::OpenMode::kExisting; return {};
        case platform::PathKind::kFile: break;
    }
    if (!options.force && !options.append) {
        return Status::Refused(options.target +
                               " exists; give --force to replace it, or --append to add to it");
    }
    target.mode = options.append ? platform::OpenMode::kAppend : platform::OpenMode::kReplace;
    return {};
}

int FinishLoad(const LoadOptions& options, const PlainLoadResult& outcome, FileSink& sink,
               const std::string& target, double seconds) {
    if (outcome.end == PlainLoadEnd::kNotStarted) {
        return Refuse(outcome.error.Error());
    }
    if (outcome.moduleFailure.code != pmrcOK)
        PrintMessage("mqam load: " + DescribeFailure(outcome.moduleFailure, DetailOf(options)));
    RunProbeProcess(ProbeKindOf(outcome.moduleFailure));
    if (IsWrongOption(outcome.moduleFailure)) {
        PrintMessage(options.usage);
        return kExitNotStarted;
    }
    if (!outcome.error.IsOk()) PrintMessage("mqam load: " + outcome.error.Error() + "\n");
    if (outcome.targetWasOpened) {
        PlainLoadResult written = outcome;
        written.records = sink.RecordsWritten();
        if (!options.quiet) PrintMessage("mqam load: " + DescribeSummary(written, target, seconds));
        const std::string lineFeeds = DescribeLineFeeds(sink.RecordsWithLineFeeds());
        if (!options.quiet && !lineFeeds.empty()) PrintMessage("mqam load: " + lineFeeds + "\n");
        const std::string cost = DescribeCost(written, sink.MostRecordsHeld(), target);
        if (!options.quiet || IsAnyLost(written)) PrintMessage(cost);
    }
    if (outcome.end == PlainLoadEnd::kEndedEarly && outcome.moduleFailure.code == pmrcOK)
        RunProbeProcess(ProbeKind::kEarlyEnd);
    return ExitCodeOf(outcome.end, outcome.moduleFailure.code != pmrcOK);
}

int RunUnprotectedLoad(const LoadOptions& options) {
    PlainLoadSettings settings;
    FileSinkSettings target;
    Status status = CheckUnprotected(options);
    if (status.IsOk()) status = CheckFiles(options);
    if (status.IsOk()) status = ComposeSettings(options, settings);
    if (status.IsOk()) status = ChooseTarget(options, target);
    if (!status.IsOk()) return RefuseOption(options, status.Error());
    const int standardOutput =
        platform::RedirectStdout(settings.wantsKeywordHelp ? platform::ModuleOutput::kToStandardError
                                                           : platform::ModuleOutput::kDropped);
    if (standardOutput < 0) return Refuse(std::string("standard output: ") + std::strerror(errno));
    if (options.target == "-") target.descriptor = standardOutput;

    PIDMMainFunction entryPoint = nullptr;
    status = LoadModule(options.module.modulePath, entryPoint);
    if (!status.IsOk()) {
        PrintMessage("mqam load: " + status.Error() + "\n");
        return kExitModuleMissing;
    }
    WarnUnprotected(options, target.path);
    WatchInterrupts(kExitStoppedImmediately);
    FileSink sink(target);
    ProgressCounters counters;
    const auto start = std::chrono::steady_clock::now();
    const bool recordsOnScreen = options.target == "-" && platform::IsTerminal(standardOutput);
    StartProgress(ChooseProgressStyle(options, recordsOnScreen), counters);
    const PlainLoadResult outcome = RunPlainLoad(entryPoint, settings, sink, MakeObserver(options), counters);
    StopProgress();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const int exitCode = FinishLoad(options, outcome, sink, target.path, seconds);
    if (outcome.mustEndProcess) platform::ExitImmediately(exitCode);
    return exitCode;
}

int RunLoad(const LoadOptions& options) {
    if (options.probe != 0) return RunProbe(options);
    // Messages may be confidential: what the load writes is for its user only.
    platform::RestrictNewFiles();
    std::vector<std::string> warnings;
    const Status checked = CheckParameterFile(options.module, warnings);
    if (!checked.IsOk()) return RefuseOption(options, checked.Error());
    const Status fits = CheckNewlineRule(options);
    if (!fits.IsOk()) return RefuseOption(options, fits.Error());
    const bool isWorker = options.workerSince >= 0;
    if (!isWorker) PrintWarnings("mqam load", warnings);
    return IsProtected(options) ? RunRestartableLoad(options) : RunUnprotectedLoad(options);
}

}  // namespace

void AddLoadCommand(CLI::App& app, int& exitCode) {
    CLI::App* command =
        app.add_subcommand("load", "Load the messages of a queue into a file or a SQLite table");
    const auto options = std::make_shared<LoadOptions>();
    AddLoadOptions(*command, *options);
    std::string footer = kLoadExamples;
    footer += "\nExit codes:\n";
    for (const ExitCodeRow& row : AllExitCodes()) {
        if (!row.isOfLoad) continue;
        footer += "  " + std::to_string(row.code) + "  " + row.meaning + "\n";
    }
    command->footer(footer);
    command->callback([command, options, &exitCode] {
        options->usage = UsageLineOf(*command);
        exitCode = RunLoad(*options);
    });
}

}  // namespace mqam
