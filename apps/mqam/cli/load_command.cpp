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
#include "mqam/cli/restartable_load.h"
#include "mqam/cli/summary.h"
#include "mqam/explain/advice.h"
#include "mqam/explain/code_tables.h"
#include "mqam/explain/failure_report.h"
#include "mqam/load/interrupts.h"
#include "mqam/module/module_session.h"
#include "mqam/target/file/file_sink.h"
#include "platform/file.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/terminal.h"

namespace mqam {

namespace {

constexpr const char* kLoadExamples =
    "Examples:\n"
    "  mqam load --qmgr QM1 --queue ORDERS --to orders.txt\n"
    "      every message of the queue as a line of orders.txt; ends when the queue has been empty for 15 s\n"
    "  mqam load --qmgr QM1 --queue ORDERS --rwait 5 --format length --to orders.bin\n"
    "      binary messages: 4 bytes little-endian length before each\n"
    "  mqam load --parmfile orders.parm --to - | gzip > orders.gz\n"
    "      keywords from a file, records to standard output\n"
    "  mqam load --qmgr QM1 --queue ORDERS --channel DEV.APP.SVRCONN --server 'mq.example.com(1414)' \\\n"
    "            --ckfile orders.ckpt --checkpoint-every 1000 --log orders.log --trace 2 orders.trc --to "
    "orders.txt\n"
    "      as an MQ client, with checkpoints, message log and trace\n"
    "  mqam load --qmgr QM1 --queue ORDERS --ckfile orders.ckpt --restart-file orders.restart --to "
    "orders.txt\n"
    "      whatever ends it, the same command resumes it: every message is in orders.txt exactly once\n"
    "  mqam load --qmgr QM1 --queue ORDERS --ckfile orders.ckpt --to 'sqlite:orders.db?table=orders' \\\n"
    "            --retry-for 3600\n"
    "      the same into a SQLite table, which keeps the restart information itself; retries after a failure\n";

int Refuse(const std::string& error) {
    PrintMessage("mqam load: " + error + "\n");
    return kExitNotStarted;
}

// Refuses an option or a value.
int RefuseOption(const LoadOptions& options, const std::string& error) {
    return Refuse(error + "\n" + options.usage.substr(0, options.usage.size() - 1));
}

// Makes the settings of a plain load.
Status ComposeSettings(const LoadOptions& options, PlainLoadSettings& settings) {
    Status status = ComposeInitString(options.module, settings.initString);
    if (status.IsOk()) status = ComposeAttributes(options, settings.attributes);
    settings.checkpointEveryRecords = options.checkpointEvery;
    settings.wantsKeywordHelp = WasKeywordGiven(options.module, "HELP");
    return status;
}

// Returns the first option given that only a load with restart information has, or null.
const char* FindRestartOption(const LoadOptions& options) {
    if (options.checkpointSeconds != 0) return "--checkpoint-seconds";
    if (options.restart != RestartPolicy::kAuto) return "--restart";
    if (options.retryForSeconds != 0) return "--retry-for";
    return nullptr;
}

// Decides how the target is opened. Refuses a file that exists unless the user said what to do with it.
Status ChooseTarget(const LoadOptions& options, FileSinkSettings& target) {
    target.format = options.format;
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

int FinishLoad(const LoadOptions& options, const PlainLoadResult& outcome, const std::string& target,
               double seconds) {
    if (outcome.end == PlainLoadEnd::kNotStarted) {
        return Refuse(outcome.error.Error());
    }
    if (outcome.moduleFailure.code != pmrcOK)
        PrintMessage("mqam load: " + DescribeFailure(outcome.moduleFailure, DetailOf(options)));
    if (IsWrongOption(outcome.moduleFailure)) {
        PrintMessage(options.usage);
        return kExitNotStarted;
    }
    if (!outcome.error.IsOk()) PrintMessage("mqam load: " + outcome.error.Error() + "\n");
    const bool failed =
        outcome.end == PlainLoadEnd::kModuleFailed || outcome.end == PlainLoadEnd::kTargetFailed;
    if (failed && outcome.mustEndProcess && outcome.records > 0)
        PrintMessage(DescribeWhatIsSafe(options.checkpointEvery > 0));
    if (!options.quiet && outcome.targetWasOpened)
        PrintMessage("mqam load: " + DescribeSummary(outcome, target, seconds));
    return ExitCodeOf(outcome.end, outcome.moduleFailure.code != pmrcOK);
}

int RunLoad(const LoadOptions& options) {
    PlainLoadSettings settings;
    FileSinkSettings target;
    std::vector<std::string> warnings;
    const Status checked = CheckParameterFile(options.module, warnings);
    if (!checked.IsOk()) return RefuseOption(options, checked.Error());
    const bool isWorker = options.workerSince >= 0;
    if (!isWorker) PrintWarnings("mqam load", warnings);
    if (IsRestartable(options)) return RunRestartableLoad(options);
    if (const char* option = FindRestartOption(options)) {
        return RefuseOption(options, std::string(option) + " needs --restart-file FILE, or a SQLite target");
    }
    Status status = ComposeSettings(options, settings);
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
    WatchInterrupts(kExitStoppedImmediately);
    FileSink sink(target);
    ProgressCounters counters;
    const auto start = std::chrono::steady_clock::now();
    const bool recordsOnScreen = options.target == "-" && platform::IsTerminal(standardOutput);
    StartProgress(ChooseProgressStyle(options, recordsOnScreen), counters);
    const PlainLoadResult outcome = RunPlainLoad(entryPoint, settings, sink, MakeObserver(options), counters);
    StopProgress();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const int exitCode = FinishLoad(options, outcome, target.path, seconds);
    if (outcome.mustEndProcess) platform::ExitImmediately(exitCode);
    return exitCode;
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
