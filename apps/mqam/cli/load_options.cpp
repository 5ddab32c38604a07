// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/load_options.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Validators.hpp>

#include "mqam/cli/confirmation.h"
#include "mqam/cli/option_values.h"
#include "mqam/explain/failure_report.h"
#include "mqam/load/probe_process.h"
#include "mqam/target/target_kind.h"
#include "mqamod.h"
#include "platform/interrupts.h"
#include "platform/terminal.h"

namespace mqam {

namespace {

constexpr const char* kTargetGroup = "Target";
constexpr const char* kRestartGroup = "Restart";
constexpr const char* kDiagnosisGroup = "Diagnosis";

std::string DescribeTargets() {
    std::string help = "where the records go. -: standard output";
    for (const TargetKind* kind : AllTargetKinds())
        help += std::string("; ") + kind->usage + ": " + kind->help;
    return help;
}

void AddTargetOptions(CLI::App& command, LoadOptions& options) {
    std::vector<std::pair<std::string, RecordFormat>> formats;
    for (const RecordFormatRow& row : kRecordFormats)
        formats.emplace_back(row.name, row.format);
    command.add_option("--to", options.target, DescribeTargets())
        ->type_name("TARGET")
        ->required()
        ->group(kTargetGroup);
    command
        .add_option(
            "--format", options.format,
            "lines: the record, then a line feed; length: 4 bytes little-endian length, then the record; raw: only the bytes; json: a line with an object that has the record's number and its text, or base64 if it is not UTF-8. Default: lines")
        ->type_name("lines|length|raw|json")
        ->transform(EnumeratorIn(formats))
        ->each([&options](const std::string&) { options.formatGiven = true; })
        ->group(kTargetGroup);
    const std::vector<std::pair<std::string, NewlineRule>> newlines = {
        {"keep", NewlineRule::kKeep}, {"fail", NewlineRule::kFail}, {"escape", NewlineRule::kEscape}};
    command
        .add_option(
            "--on-newline", options.newlines,
            "a line feed in a record, with --format lines. keep: it is written, and a warning says how many "
            "records look like several; fail: it ends the load; escape: it is written as \\n, and a backslash "
            "as two. Default: keep")
        ->type_name("keep|fail|escape")
        ->transform(EnumeratorIn(newlines))
        ->each([&options](const std::string&) { options.newlinesGiven = true; })
        ->group(kTargetGroup);
    auto* force =
        command.add_flag("--force", options.force, "replace a target that exists")->group(kTargetGroup);
    command.add_flag("--append", options.append, "add to a target that exists")
        ->group(kTargetGroup)
        ->excludes(force);
    command
        .add_flag(
            "--unprotected", options.unprotected,
            "keep no restart information: a failure loses the messages that were taken from the queue and are not yet in the target. Implied by --to -")
        ->group(kTargetGroup);
}

void AddSafetyOptions(CLI::App& command, LoadOptions& options) {
    command
        .add_option("--checkpoint-every", options.checkpointEvery,
                    "take a checkpoint after every N records. Default: " +
                        std::to_string(kCheckpointEveryByDefault) + ", unless --checkpoint-seconds is given")
        ->type_name("N")
        ->transform(NumberIn({NumberUnit::kNone, 1}))
        ->group(kSafetyGroup);
    command.add_flag("--preserve", options.preserve, "keep the checkpoint file and the log at the end")
        ->group(kSafetyGroup);
}

void AddRestartOptions(CLI::App& command, LoadOptions& options) {
    const std::vector<std::pair<std::string, RestartPolicy>> policies = {
        {"auto", RestartPolicy::kAuto}, {"never", RestartPolicy::kNever}, {"only", RestartPolicy::kOnly}};
    command
        .add_option(
            "--restart-file", options.restartFile,
            "keep the restart information in FILE. Default: TARGET.load/restart. A SQLite target keeps it in the database instead")
        ->type_name("FILE")
        ->group(kRestartGroup);
    command
        .add_option("--checkpoint-seconds", options.checkpointSeconds,
                    "take a checkpoint when a record arrives and the last checkpoint is at least SECONDS old")
        ->type_name("SECONDS")
        ->transform(NumberIn({NumberUnit::kSeconds, 1, kLargestSeconds}))
        ->group(kRestartGroup);
    const std::vector<std::pair<std::string, Durability>> durabilities = {{"power", Durability::kPower},
                                                                          {"process", Durability::kProcess}};
    command
        .add_option(
            "--durability", options.durability,
            "what no record is lost by. power: a power failure too, because each record is on the disk before its message is committed; process: a crash of the program, with fewer writes to the disk. Default: power")
        ->type_name("power|process")
        ->transform(EnumeratorIn(durabilities))
        ->each([&options](const std::string&) { options.durabilityGiven = true; })
        ->group(kRestartGroup);
    command
        .add_option(
            "--restart", options.restart,
            "auto: resume an unfinished load, else begin a new one; never: refuse if a load is unfinished; only: refuse if none is. Default: auto")
        ->type_name("auto|never|only")
        ->transform(EnumeratorIn(policies))
        ->group(kRestartGroup);
    command
        .add_option(
            "--retry-for", options.retryForSeconds,
            "retry after a failure, with growing pauses, until SECONDS pass without a new checkpoint. Default: exit")
        ->type_name("SECONDS")
        ->transform(NumberIn({NumberUnit::kSeconds, 1, kLargestSeconds}))
        ->group(kRestartGroup);
    command.add_option(kProbeOption, options.probe, "")->group("");
    command.add_option(kWorkerOption, options.workerSince, "")->group("");
    command.add_flag(kCompletedBeforeOption, options.workerCompletedBefore, "")->group("");
    auto* acceptLoss =
        command
            .add_flag(
                "--accept-loss", options.acceptLoss,
                "if the checkpoint file is damaged or missing, state what is lost, ask, and continue without it. "
                "The file is kept, and what can be read is saved first")
            ->group(kRestartGroup);
    command.add_flag("--yes", options.yes, "with --accept-loss: do not ask; necessary without a terminal")
        ->needs(acceptLoss)
        ->group(kRestartGroup);
    command.add_flag(kAcceptsLossOption, options.workerAcceptsLoss, "")->group("");
    command.add_flag(kFollowsEndOption, options.workerFollowsEnd, "")->group("");
}

void AddDiagnosisOptions(CLI::App& command, LoadOptions& options) {
    command
        .add_option("--attribute", options.attributes,
                    "set an attribute of the module after Init; may be repeated")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all()
        ->group(kDiagnosisGroup);
    command
        .add_flag("-v,--verbose", options.verbose,
                  "show the parameters in effect, every checkpoint, and the module's part in a failure")
        ->group(kDiagnosisGroup);
    command.add_flag("-q,--quiet", options.quiet, "no progress and no summary; failures are still reported")
        ->group(kDiagnosisGroup);
}

}  // namespace

void AddLoadOptions(CLI::App& command, LoadOptions& options) {
    AddTargetOptions(command, options);
    AddModuleOptions(command, options.module);
    command
        .add_option(
            "--timeout", options.timeoutSeconds,
            "end the load with exit code 6 when no message has come for SECONDS, and at most 1 s later. It has an effect only if it is shorter than --rwait, or with --rwait -1. Default: none")
        ->type_name("SECONDS")
        ->transform(NumberIn({NumberUnit::kSeconds, 1, kLargestSeconds}))
        ->group(kReadGroup);
    AddSafetyOptions(command, options);
    AddRestartOptions(command, options);
    AddDiagnosisOptions(command, options);
}

bool IsProtected(const LoadOptions& options) {
    return !options.unprotected && options.target != "-";
}

Status CheckNewlineRule(const LoadOptions& options) {
    const bool isLines =
        options.format == RecordFormat::kLines && !FindTargetKind(options.target).keepsRestartState;
    if (!options.newlinesGiven || isLines) return {};
    return Status::Refused("--on-newline has an effect only with --format lines; leave it out");
}

Status ComposeAttributes(const LoadOptions& options,
                         std::vector<std::pair<std::string, std::string>>& attributes) {
    for (const std::string& item : options.attributes) {
        const std::size_t equals = item.find('=');
        if (equals == std::string::npos || equals == 0 || equals > MQAMOD_ATTRIBUTE_NAME_BYTES) {
            return Status::Refused("--attribute: '" + item + "' is not of the form NAME=VALUE");
        }
        attributes.emplace_back(item.substr(0, equals), item.substr(equals + 1));
    }
    if (options.preserve) attributes.emplace_back("PRESERVE_RESTART_INFO", "YES");
    return {};
}

LoadObserver MakeObserver(const LoadOptions& options) {
    LoadObserver observer;
    observer.stopWanted = [] { return platform::InterruptRequested(); };
    observer.notice = [](const std::string& text) {
        PrintMessage("mqam load: " + DescribeNotice(text) + "\n");
    };
    observer.repaired = [](const std::string& what) { PrintMessage("mqam load: repaired: " + what + "\n"); };
    if (options.workerAcceptsLoss) {
        observer.acceptLoss = [yes = options.yes](const std::string& loss) {
            PrintMessage("mqam load: " + loss);
            return IsConfirmed("mqam load", "Continue without what is lost?", yes);
        };
    }
    if (options.verbose) {
        observer.report = [](const StartupReport& report) { PrintMessage(FormatReport(report, "  ")); };
        observer.decision = [](const std::string& text) { PrintMessage("mqam load: " + text + "\n"); };
        observer.checkpoint = [](const PositionData& position) {
            PrintMessage("mqam load: checkpoint " + std::to_string(position.CkPtSeq) + " after " +
                         std::to_string(position.CkPtMsgCount) + " records, file offset " +
                         std::to_string(position.CkPtOffset) + "\n");
        };
    }
    return observer;
}

FailureDetail DetailOf(const LoadOptions& options) {
    return options.verbose ? FailureDetail::kForDevelopers : FailureDetail::kForOperators;
}

ProgressStyle ChooseProgressStyle(const LoadOptions& options, bool recordsOnScreen) {
    if (options.quiet) return ProgressStyle::kNone;
    return platform::IsStandardErrorTerminal() && !recordsOnScreen ? ProgressStyle::kLiveLine
                                                                   : ProgressStyle::kPlainLines;
}

}  // namespace mqam
