// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/checkpoint_command.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>

#include "mqam/base/exit_codes.h"
#include "mqam/base/json_writer.h"
#include "mqam/base/progress.h"
#include "mqam/checkpoint/integrity.h"
#include "mqam/checkpoint/listing.h"
#include "mqam/checkpoint/repair.h"
#include "mqam/checkpoint/scan_json.h"
#include "mqam/cli/checkpoint_export_command.h"
#include "mqam/cli/confirmation.h"
#include "mqam/cli/option_values.h"
#include "mqam/load/stored_load.h"
#include "mqam/module/position_text.h"
#include "mqam/target/load_places.h"
#include "mqam/target/lock_file.h"
#include "platform/paths.h"

namespace mqam {

namespace {

constexpr const char* kShowExamples =
    "Examples:\n"
    "  mqam checkpoint show orders.ckpt\n"
    "      its contents, and the temporary files next to it\n"
    "  mqam checkpoint show orders.ckpt --position 05000000080000000400000000000000 --all\n"
    "      every record, and what a restart with this position would do\n"
    "  mqam checkpoint show orders.ckpt --restart-file orders.restart\n"
    "      the same with the position that the load has stored\n"
    "  mqam checkpoint show orders.ckpt --restart-file 'sqlite:orders.db?table=orders'\n"
    "      the same for a load into SQLite\n"
    "\n"
    "Exit codes: 0 the file was shown, 1 the file (or the restart file) is missing or cannot be read, 3 standard\n"
    "output cannot be written.\n";

constexpr const char* kVerifyExamples =
    "Examples:\n"
    "  mqam checkpoint verify orders.ckpt\n"
    "      intact, incomplete as a crash leaves it, or damaged, with the bytes concerned\n"
    "  mqam checkpoint verify orders.ckpt --restart-file orders.restart\n"
    "      and whether the load can resume with it\n"
    "\n"
    "Exit codes: 0 intact, 1 the file (or the restart file) is missing or cannot be read, 3 standard output\n"
    "cannot be written, 10 incomplete, damaged, or not the file that the load needs.\n";

constexpr const char* kRepairExamples =
    "Examples:\n"
    "  mqam checkpoint repair orders.ckpt\n"
    "      shows what it would do and asks\n"
    "  mqam checkpoint repair orders.ckpt --yes\n"
    "      does it\n"
    "  mqam checkpoint repair orders.ckpt --restart-file orders.restart\n"
    "      with the position that the load has stored\n"
    "\n"
    "No load may be using the file. A restart makes the safe repairs automatically. This command makes them without\n"
    "a restart, and also those that need a decision. Replaced files are kept as FILE.kept, removed bytes as\n"
    "FILE.torn.\n"
    "\n"
    "Exit codes: 0 everything is in order now, 1 nothing was changed (not confirmed, or a wrong option), 3 a change\n"
    "failed, 10 something cannot be repaired.\n";

struct CheckpointOptions {
    std::string path;
    std::uint64_t maxRecordBytes = kLargestRecordBytes;
    std::string position;
    std::string restartFile;
    std::size_t first = 0;
    std::size_t last = 0;
    bool all = false;
    bool json = false;
    bool yes = false;
};

int PrintError(const std::string& error) {
    PrintMessage("mqam checkpoint: " + error + "\n");
    return kExitNotStarted;
}

// Prints on standard output. Returns `exitCode`, or kExitTargetFailed if that cannot be written.
int Print(const std::string& text, int exitCode) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return exitCode;
    (void)PrintError(std::string("cannot write to standard output: ") + std::strerror(errno));
    return kExitTargetFailed;
}

bool CanBeRead(const CheckpointScan& scan) {
    return scan.shape != CheckpointShape::kMissing && scan.shape != CheckpointShape::kUnreadable;
}

// Keeps what is known about the load that the file belongs to.
struct Stored {
    std::optional<RestartState> state;  // with --restart-file
    std::optional<PositionData> position;
};

// Returns false if the restart information that the user named cannot be used; the error has been printed.
bool FetchStored(const CheckpointOptions& options, Stored& stored) {
    if (!options.position.empty()) stored.position = ParsePosition(options.position);
    if (options.restartFile.empty()) return true;
    RestartState state;
    const Status read = ReadStateOfLoad(options.restartFile, options.path, state);
    if (!read.IsOk()) {
        (void)PrintError(read.Error());
        return false;
    }
    stored.position = state.position;
    stored.state = state;
    return true;
}

std::string DescribeRestartWith(const CheckpointOptions& options, const Stored& stored, bool& isRefused) {
    isRefused = false;
    if (options.position.empty() && !stored.state) {
        return "(give --position or --restart-file to see what a restart would do)\n";
    }
    std::string text = DescribeRestart(options.path, stored.position, options.maxRecordBytes, isRefused);
    if (!stored.state || isRefused) return text;
    const Status checked = CheckFirstRecord(options.path, *stored.state, options.maxRecordBytes);
    if (checked.IsOk()) return text;
    isRefused = true;
    return text + "  then refused: " + checked.Error() + "\n";
}

ListedRecords ListedBy(const CheckpointOptions& options) {
    if (options.all) return {std::numeric_limits<std::size_t>::max(), 0};
    if (options.first == 0 && options.last == 0) return {};
    return {options.first, options.last};
}

// Writes what a restart would do, or null if no position is known.
void WriteRestart(JsonWriter& json, const CheckpointOptions& options, const Stored& stored, bool& isRefused) {
    isRefused = false;
    json.Key("restart");
    if (options.position.empty() && !stored.state) {
        json.Null();
        return;
    }
    const std::string text = DescribeRestartWith(options, stored, isRefused);
    json.BeginObject().BoolMember("refused", isRefused).TextMember("text", text).EndObject();
}

std::string FormatShownAsJson(const CheckpointOptions& options, const CheckpointScan& scan,
                              const Stored& stored) {
    JsonWriter json;
    json.BeginObject();
    WriteScanMembers(json, scan);
    json.Key("listed");
    WriteListedRecords(json, scan, ListedBy(options));
    json.Key("temporary_files").BeginArray();
    for (const std::string& temporary : FindTemporaryFiles(options.path)) {
        json.BeginObject();
        WriteScanMembers(json, ScanCheckpointFile(temporary, options.maxRecordBytes));
        json.EndObject();
    }
    json.EndArray();
    bool isRefused = false;
    WriteRestart(json, options, stored, isRefused);
    return json.EndObject().Line() + "\n";
}

int RunShow(const CheckpointOptions& options) {
    Stored stored;
    if (!FetchStored(options, stored)) return kExitNotStarted;
    const CheckpointScan scan = ScanCheckpointFile(options.path, options.maxRecordBytes);
    if (options.json) {
        return Print(FormatShownAsJson(options, scan, stored), CanBeRead(scan) ? kExitDone : kExitNotStarted);
    }
    std::string text = SummarizeScan(scan) + "\n" + ListRecords(scan, ListedBy(options));
    for (const std::string& temporary : FindTemporaryFiles(options.path)) {
        text +=
            "temporary file " + SummarizeScan(ScanCheckpointFile(temporary, options.maxRecordBytes)) + "\n";
    }
    bool isRefused = false;
    text += DescribeRestartWith(options, stored, isRefused);
    return Print(text, CanBeRead(scan) ? kExitDone : kExitNotStarted);
}

int VerifyAsJson(const CheckpointOptions& options, const CheckpointScan& scan, const Stored& stored) {
    JsonWriter json;
    json.BeginObject();
    WriteScanMembers(json, scan);
    json.Key("temporary_files").BeginArray();
    for (const std::string& temporary : FindTemporaryFiles(options.path))
        json.Text(temporary);
    json.EndArray();
    bool isRefused = false;
    WriteRestart(json, options, stored, isRefused);
    const std::string line = json.EndObject().Line() + "\n";
    if (!CanBeRead(scan)) return Print(line, kExitNotStarted);
    const bool isIntact = CheckIntegrity(scan) == Integrity::kIntact && !isRefused;
    return Print(line, isIntact ? kExitDone : kExitDamaged);
}

int RunVerify(const CheckpointOptions& options) {
    Stored stored;
    if (!FetchStored(options, stored)) return kExitNotStarted;
    const CheckpointScan scan = ScanCheckpointFile(options.path, options.maxRecordBytes);
    if (options.json) return VerifyAsJson(options, scan, stored);
    const std::vector<std::string> temporaries = FindTemporaryFiles(options.path);
    if (!CanBeRead(scan)) {
        const std::string hint = temporaries.empty() ? ""
                                                     : "; the temporary file " + temporaries.front() +
                                                           " is next to it: `mqam checkpoint show " +
                                                           options.path + "` shows what a restart would do";
        return PrintError(SummarizeScan(scan) + hint);
    }
    std::string text = DescribeIntegrity(scan, options.maxRecordBytes);
    for (const std::string& temporary : temporaries) {
        text += "The temporary file " + temporary +
                " is next to it: a rewrite was interrupted, or a load is running.\n";
    }
    bool isRefused = false;
    if (stored.state) text += DescribeRestartWith(options, stored, isRefused);
    const bool isIntact = CheckIntegrity(scan) == Integrity::kIntact && !isRefused;
    return Print(text, isIntact ? kExitDone : kExitDamaged);
}

RepairPlan Plan(const CheckpointOptions& options, const Stored& stored) {
    return PlanRepair(options.path, stored.position, options.maxRecordBytes);
}

std::string DescribeSteps(const CheckpointOptions& options, const RepairPlan& plan) {
    std::string text;
    for (const RepairStep& step : plan.steps)
        text += DescribeStep(options.path, step) + "\n";
    return text;
}

int TakeStepsLocked(const CheckpointOptions& options, const Stored& stored, const RepairPlan& plan) {
    // The user confirmed what was shown; a load may have run in the meantime.
    if (DescribeSteps(options, Plan(options, stored)) != DescribeSteps(options, plan)) {
        return PrintError(
            "nothing was changed: the files have changed in the meantime; run the command again");
    }
    for (const RepairStep& step : plan.steps) {
        const Status taken = TakeStep(options.path, step);
        if (taken.IsOk()) continue;
        (void)PrintError("could not " + DescribeStep(options.path, step) + ": " + taken.Error());
        return kExitTargetFailed;
    }
    return kExitDone;
}

// Takes the steps while the lock keeps restartable loads away from the file.
int TakeSteps(const CheckpointOptions& options, const Stored& stored, const RepairPlan& plan) {
    const std::string lock = CheckpointLockPath(RealPath(options.path));
    const Status locked = AcquireLockFile(lock, 0);
    if (!locked.IsOk()) {
        const int refused = PrintError("nothing was changed: " + locked.Error());
        return locked.Code() == StatusCode::kTransient ? kExitTargetFailed : refused;
    }
    const int exitCode = TakeStepsLocked(options, stored, plan);
    ReleaseLockFile(lock);
    return exitCode;
}

int RunRepair(const CheckpointOptions& options) {
    Stored stored;
    if (!FetchStored(options, stored)) return kExitNotStarted;
    const RepairPlan plan = Plan(options, stored);
    if (!plan.obstacle.empty()) PrintMessage("mqam checkpoint: " + plan.obstacle + "\n");
    const int exitCode = plan.obstacle.empty() ? kExitDone : kExitDamaged;
    if (plan.steps.empty()) {
        return exitCode == kExitDone ? Print(options.path + ": nothing to repair\n", exitCode) : exitCode;
    }
    const int printed = Print(DescribeSteps(options, plan), kExitDone);
    if (printed != kExitDone) return printed;
    if (!IsConfirmed("mqam checkpoint", "No load may be using this file. Make these changes?", options.yes))
        return kExitNotStarted;
    const int taken = TakeSteps(options, stored, plan);
    bool isRefused = false;
    return taken != kExitDone ? taken
                              : Print("done\n" + DescribeRestartWith(options, stored, isRefused), exitCode);
}

std::string CheckPosition(const std::string& digits) {
    return ParsePosition(digits) ? "" : "32 hexadecimal digits are needed";
}

void AddFileOptions(CLI::App& command, CheckpointOptions& options) {
    command.add_option("FILE", options.path, "the checkpoint file")->type_name("")->required();
    command
        .add_option("--bksz,--max-record", options.maxRecordBytes,
                    "the largest record of the load, at most 16M. Default: 16777216, the module's limit")
        ->type_name("BYTES")
        ->transform(NumberIn({NumberUnit::kBytes, 1, kLargestRecordBytes}));
}

CLI::Option* AddPositionOption(CLI::App& command, CheckpointOptions& options, const char* description) {
    return command.add_option("--position", options.position, description)
        ->type_name("HEX")
        ->check(CLI::Validator(CheckPosition, ""));
}

CLI::Option* AddRestartFileOption(CLI::App& command, CheckpointOptions& options) {
    return command
        .add_option(
            "--restart-file", options.restartFile,
            "the restart file of the load, which contains its position; for a load into SQLite its target, "
            "sqlite:FILE?table=NAME")
        ->type_name("FILE");
}

void AddJsonFlag(CLI::App& command, CheckpointOptions& options) {
    command.add_flag("--json", options.json, "one JSON object on one line, for programs");
}

using Run = int (*)(const CheckpointOptions&);

std::shared_ptr<CheckpointOptions> AddSubcommand(CLI::App& parent, const char* name, const char* description,
                                                 const char* examples, Run run, int& exitCode) {
    CLI::App* command = parent.add_subcommand(name, description);
    auto options = std::make_shared<CheckpointOptions>();
    AddFileOptions(*command, *options);
    command->footer(examples);
    command->callback([options, run, &exitCode] { exitCode = run(*options); });
    return options;
}

}  // namespace

void AddCheckpointCommand(CLI::App& app, int& exitCode) {
    CLI::App* parent = app.add_subcommand("checkpoint", "Show, verify, export or repair a checkpoint file");
    parent->require_subcommand(1);

    auto show = AddSubcommand(*parent, "show", "Show the records and what a restart would do", kShowExamples,
                              RunShow, exitCode);
    CLI::App* command = parent->get_subcommand("show");
    AddRestartFileOption(*command, *show)
        ->excludes(AddPositionOption(*command, *show, "the stored position of the load, 16 bytes in hex"));
    auto* all = command->add_flag("--all", show->all, "list every record");
    command->add_option("--first", show->first, "list N records from the beginning. Default: 10")
        ->type_name("N")
        ->transform(NumberIn({}))
        ->excludes(all);
    command->add_option("--last", show->last, "list N records from the end. Default: 10")
        ->type_name("N")
        ->transform(NumberIn({}))
        ->excludes(all);

    AddJsonFlag(*command, *show);

    auto verify = AddSubcommand(*parent, "verify", "Report whether the file is intact, to the byte",
                                kVerifyExamples, RunVerify, exitCode);
    AddRestartFileOption(*parent->get_subcommand("verify"), *verify);
    AddJsonFlag(*parent->get_subcommand("verify"), *verify);

    AddCheckpointExportCommand(*parent, exitCode);

    auto repair = AddSubcommand(*parent, "repair", "Complete what a crash interrupted", kRepairExamples,
                                RunRepair, exitCode);
    command = parent->get_subcommand("repair");
    AddRestartFileOption(*command, *repair)
        ->excludes(AddPositionOption(*command, *repair, "the stored position of the load, 16 bytes in hex"));
    command->add_flag("--yes", repair->yes, "do not ask before changing anything");
}

}  // namespace mqam
