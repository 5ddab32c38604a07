#include "apps/mqam/load_command.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <memory>

#include "apps/mqam/exit_codes.h"
#include "apps/mqam/file_sink.h"
#include "apps/mqam/keyword_options.h"
#include "apps/mqam/load_life.h"
#include "apps/mqam/load_summary.h"
#include "apps/mqam/module_requests.h"
#include "apps/mqam/platform.h"
#include "apps/mqam/progress.h"

namespace {

struct LoadOptions {
    ModuleOptions module;
    std::string target;
    RecordFormat format = RecordFormat::kLines;
    bool force = false;
    bool append = false;
    std::vector<std::string> attributes;
    int timeoutSeconds = 0;
    bool preserve = false;
    std::uint64_t checkpointEvery = 0;
    bool verbose = false;
    bool quiet = false;
};

constexpr const char* kExamples =
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
    "      as an MQ client, with checkpoints, message log and trace\n";

int Refuse(const std::string& words) {
    TellUser("mqam load: " + words + "\n");
    return kExitNotStarted;
}

// Fills the settings of the life. Returns false with a complaint.
bool ComposeSettings(const LoadOptions& options, LifeSettings& settings, std::string& complaint) {
    if (!ComposeInitString(options.module, settings.initString, complaint)) return false;
    for (const std::string& item : options.attributes) {
        const std::size_t equals = item.find('=');
        if (equals == std::string::npos || equals == 0 || equals > kAttributeNameBytes) {
            complaint = "--attribute: '" + item + "' is not of the form NAME=VALUE";
            return false;
        }
        settings.attributes.emplace_back(item.substr(0, equals), item.substr(equals + 1));
    }
    if (options.timeoutSeconds > 0) {
        settings.attributes.emplace_back("TIMEOUT_SECONDS", std::to_string(options.timeoutSeconds));
    }
    if (options.preserve) settings.attributes.emplace_back("PRESERVE_RESTART_INFO", "YES");
    settings.checkpointEveryRecords = options.checkpointEvery;
    settings.keywordHelpWanted = WasKeywordGiven(options.module, "HELP");
    return true;
}

// Decides how the target is opened. Returns false with a complaint when a file stands in the way.
bool ChooseTarget(const LoadOptions& options, FileTarget& target, std::string& complaint) {
    target.format = options.format;
    if (options.target == "-") {
        target.path = "standard output";
        return true;
    }
    target.path = options.target;
    switch (ProbePath(options.target)) {
        case PathKind::kMissing:
            target.mode = options.append ? OpenMode::kAppend : OpenMode::kCreate;
            return true;
        case PathKind::kOther: target.mode = OpenMode::kExisting; return true;
        case PathKind::kFile: break;
    }
    if (!options.force && !options.append) {
        complaint = options.target + " exists; give --force to replace it, or --append to add to it";
        return false;
    }
    target.mode = options.append ? OpenMode::kAppend : OpenMode::kReplace;
    return true;
}

int FinishLoad(const LoadOptions& options, const LifeOutcome& outcome, const std::string& target,
               double seconds) {
    if (outcome.end == LifeEnd::kNotStarted) {
        return Refuse(
            outcome.standsInTheWay +
            " exists: as the checkpoint file or log of an earlier load it may hold the only copy of records, "
            "and this load would destroy it. Move it away, or delete it when that load is done with");
    }
    if (outcome.moduleFailure.code != pmrcOK)
        TellUser("mqam load: " + DescribeFailure(outcome.moduleFailure));
    if (!outcome.targetFailure.empty()) TellUser("mqam load: " + outcome.targetFailure + "\n");
    const bool failed = outcome.end == LifeEnd::kModuleFailed || outcome.end == LifeEnd::kTargetFailed;
    if (failed && outcome.mustEndProcess && outcome.records > 0)
        TellUser(DescribeWhatIsSafe(options.checkpointEvery > 0));
    if (!options.quiet && outcome.targetWasOpened)
        TellUser("mqam load: " + DescribeSummary(outcome, target, seconds));
    if (outcome.end == LifeEnd::kTargetFailed) return kExitTargetFailed;
    if (outcome.moduleFailure.code != pmrcOK) return kExitModuleFailed;
    switch (outcome.end) {
        case LifeEnd::kEndedEarly: return kExitEndedEarly;
        case LifeEnd::kOnRequest: return kExitInterrupted;
        case LifeEnd::kTimeout: return kExitTimeout;
        default: return kExitDone;
    }
}

LifeObserver MakeObserver(const LoadOptions& options) {
    LifeObserver observer;
    observer.stopWanted = [] { return InterruptRequested(); };
    observer.notice = [](const std::string& text) { TellUser("mqam load: " + DescribeNotice(text) + "\n"); };
    if (options.verbose) {
        observer.report = [](const StartupReport& report) { TellUser(FormatReport(report, "  ")); };
        observer.checkpoint = [](const PositionData& position) {
            TellUser("mqam load: checkpoint " + std::to_string(position.CkPtSeq) + " after " +
                     std::to_string(position.CkPtMsgCount) + " records, file offset " +
                     std::to_string(position.CkPtOffset) + "\n");
        };
    }
    return observer;
}

int RunLoad(const LoadOptions& options) {
    LifeSettings settings;
    FileTarget target;
    std::string complaint;
    if (!ComposeSettings(options, settings, complaint) || !ChooseTarget(options, target, complaint)) {
        return Refuse(complaint);
    }
    const int standardOutput = ClaimStandardOutput(settings.keywordHelpWanted ? ModuleOutput::kToStandardError
                                                                              : ModuleOutput::kDropped);
    if (standardOutput < 0) return Refuse(std::string("standard output: ") + std::strerror(errno));
    if (options.target == "-") target.descriptor = standardOutput;

    const PIDMMainFunction entryPoint = LoadModule(options.module.modulePath, complaint);
    if (entryPoint == nullptr) {
        TellUser("mqam load: the module cannot be loaded: " + complaint + "\n");
        return kExitModuleMissing;
    }
    WatchInterrupts(kExitStoppedAtOnce);
    FileSink sink(target);
    ProgressCounters counters;
    ProgressStyle style = ProgressStyle::kNone;
    if (!options.quiet) {
        const bool recordsOnScreen = options.target == "-" && IsTerminal(standardOutput);
        style = IsStandardErrorTerminal() && !recordsOnScreen ? ProgressStyle::kLiveLine
                                                              : ProgressStyle::kPlainLines;
    }
    const auto start = std::chrono::steady_clock::now();
    StartProgress(style, counters);
    const LifeOutcome outcome = RunLife(entryPoint, settings, sink, MakeObserver(options), counters);
    StopProgress();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const int exitCode = FinishLoad(options, outcome, target.path, seconds);
    if (outcome.mustEndProcess) EndProcessAtOnce(exitCode);
    return exitCode;
}

}  // namespace

void AddLoadCommand(CLI::App& app, int& exitCode) {
    CLI::App* command = app.add_subcommand("load", "Load the messages of a queue into a file");
    const auto options = std::make_shared<LoadOptions>();
    static const std::map<std::string, RecordFormat> kFormats = {
        {"lines", RecordFormat::kLines}, {"length", RecordFormat::kLength}, {"raw", RecordFormat::kRaw}};
    command->add_option("--to", options->target, "file for the records, or - for standard output")
        ->type_name("FILE")
        ->required()
        ->group("Target");
    command
        ->add_option(
            "--format", options->format,
            "lines: the record and a line feed; length: 4 bytes little-endian length, then the record; raw: "
            "the bytes alone. Default: lines. Records that hold line feeds need length")
        ->type_name("lines|length|raw")
        ->transform(CLI::Transformer(kFormats).description(""))
        ->group("Target");
    auto* force = command->add_flag("--force", options->force, "replace a file that exists")->group("Target");
    command->add_flag("--append", options->append, "add to a file that exists")
        ->group("Target")
        ->excludes(force);
    AddModuleOptions(*command, options->module);
    command
        ->add_option("--timeout", options->timeoutSeconds,
                     "end a read that has waited for more than so many seconds, 1..2147483647. Default: none")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 2147483647).description(""))
        ->group("Reading");
    command
        ->add_option("--checkpoint-every", options->checkpointEvery,
                     "take a checkpoint after every N records; needs a checkpoint file")
        ->type_name("N")
        ->check(CLI::PositiveNumber.description(""))
        ->group("Checkpoint and log");
    command->add_flag("--preserve", options->preserve, "keep checkpoint file and log at the end")
        ->group("Checkpoint and log");
    command
        ->add_option("--attribute", options->attributes,
                     "put an attribute of the module after Init; may be repeated")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->take_all()
        ->group("Diagnosis");
    command->add_flag("--verbose", options->verbose, "show the parameters in effect and every checkpoint")
        ->group("Diagnosis");
    command->add_flag("--quiet", options->quiet, "no progress and no summary; failures are told")
        ->group("Diagnosis");
    std::string footer = kExamples;
    footer += "\nExit codes:\n";
    for (const ExitCodeRow& row : kExitCodes) {
        footer += "  " + std::to_string(row.code) + "  " + row.meaning + "\n";
    }
    command->footer(footer);
    command->callback([options, &exitCode] { exitCode = RunLoad(*options); });
}
