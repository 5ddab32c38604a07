// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/restart_command.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <filesystem>
#include <memory>

#include "mqam/base/answer.h"
#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/checkpoint/listing.h"
#include "mqam/cli/confirmation.h"
#include "mqam/load/abandoned_load.h"
#include "mqam/load/record_export.h"
#include "mqam/target/load_places.h"
#include "mqam/target/target_kind.h"
#include "platform/file.h"
#include "platform/interrupts.h"
#include "platform/process.h"

namespace mqam {

namespace {

constexpr const char* kRestartExamples =
    "WHERE is the target of the load (a file, or sqlite:FILE?table=NAME), its directory TARGET.load, or its restart\n"
    "file.\n"
    "\n"
    "Examples:\n"
    "  mqam restart show orders.txt\n"
    "      what has been loaded, since when, by which command, and what is next\n"
    "  mqam restart resume orders.txt\n"
    "      runs that command again, in its directory\n"
    "  mqam restart abandon orders.txt\n"
    "      saves the records that are not in the target, asks, then deletes the files of the load\n"
    "\n"
    "Exit codes: 0 done, 1 there is no such load, or nothing was changed, 3 a file cannot be read, written or deleted,\n"
    "10 abandon: the checkpoint file is damaged or missing, and a part of the records was saved; resume: that of the\n"
    "load.\n";

struct RestartOptions {
    std::string where;
    std::string to;
    bool yes = false;
};

struct FoundLoad {
    std::string place;  // of the restart information, as readState takes it
    RestartState state;
};

int RefuseRestart(const std::string& error) {
    PrintMessage("mqam restart: " + error + "\n");
    return kExitNotStarted;
}

// Returns the places at which the restart information can be, in the order of their search.
std::vector<std::string> PossiblePlaces(const std::string& where) {
    if (FindTargetKind(where).keepsRestartState) return {where};
    const std::string path = RealPath(where);
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) return {path + "/restart"};
    return {PlacesOfFile(path, "").restartFile, path};
}

// Returns kExitDone if the load was found; otherwise the error has been printed.
int FindLoad(const std::string& where, FoundLoad& found) {
    for (const std::string& place : PossiblePlaces(where)) {
        const TargetKind& kind = FindTargetKind(place);
        if (!kind.keepsRestartState && platform::ProbePath(place) == platform::PathKind::kMissing) continue;
        std::optional<RestartState> state;
        const Status read = kind.readState(place, state);
        // WHERE is the target of a load whose files are gone, not a damaged restart file.
        const bool isTarget = read.Error().find("is not restart information of mqam") != std::string::npos;
        if (isTarget && place == RealPath(where)) continue;
        if (!read.IsOk()) {
            const int refused = RefuseRestart(read.Error());
            return read.Code() == StatusCode::kRefused ? refused : static_cast<int>(kExitTargetFailed);
        }
        if (!state) continue;
        found.place = place;
        found.state = *state;
        return kExitDone;
    }
    return RefuseRestart("there is no restart information of a load at " + where +
                         ": name the target, its directory TARGET.load, or the restart file");
}

// A word as a shell reads it.
std::string QuoteWord(const std::string& word) {
    const bool isPlain =
        !word.empty() && word.find_first_of(" \t\n'\"\\\\$&|;<>()*?[]#~`!{}") == std::string::npos;
    if (isPlain) return word;
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + "'";
}

std::string DescribeCommand(const RestartState& state) {
    if (state.command.empty()) return "not known: an earlier version of mqam stored it";
    std::string text = "mqam";
    for (const std::string& word : state.command)
        text += " " + QuoteWord(word);
    return text;
}

std::string DescribePhase(const RestartState& state) {
    if (IsOver(state)) return "complete: every message is in the target";
    return IsUnfinished(state) ? "unfinished" : "not begun: nothing has been read from the queue";
}

std::string DescribeCheckpointFile(const RestartState& state) {
    const CheckpointScan scan = ScanCheckpointFile(state.checkpointFile, kLargestRecordBytes);
    std::string text = SummarizeScan(scan);
    if (scan.shape != CheckpointShape::kMissing && scan.shape != CheckpointShape::kUnreadable) {
        text +=
            "; " + FormatRecordsThatAre(CountRecords(PlanExport(scan, &state))) + " not in the target yet";
    }
    return text;
}

int RunShow(const RestartOptions& options) {
    FoundLoad found;
    const int search = FindLoad(options.where, found);
    if (search != kExitDone) return search;
    const RestartState& state = found.state;
    std::string text = found.place + ": " + DescribePhase(state) + "\n";
    text += "  begun       " + state.begun + "\n";
    text += "  loaded      " + FormatRecords(state.records) + ", " + FormatCount(state.bytes) +
            " bytes, in " + state.target + " (" + state.format + ")\n";
    text += "  from        " + state.queue + " of " + state.queueManager + "\n";
    text += "  attempts    " + FormatCount(state.attempts) + "\n";
    if (!IsOver(state)) text += "  checkpoint  " + DescribeCheckpointFile(state) + "\n";
    if (!state.directory.empty()) text += "  directory   " + state.directory + "\n";
    text += "  command     " + DescribeCommand(state) + "\n";
    if (!IsOver(state)) {
        text += "  next        mqam restart resume " + QuoteWord(options.where) +
                ", or mqam restart abandon " + QuoteWord(options.where) + "\n";
    }
    return PrintAnswer("mqam restart", text);
}

int RunResume(const RestartOptions& options) {
    FoundLoad found;
    const int search = FindLoad(options.where, found);
    if (search != kExitDone) return search;
    const RestartState& state = found.state;
    if (IsOver(state)) return RefuseRestart("the load is complete: every record is in " + state.target);
    if (state.command.empty()) {
        return RefuseRestart(
            "the command of the load is not known, because an earlier version of mqam stored it: run "
            "it as it was typed");
    }
    std::error_code error;
    std::filesystem::current_path(state.directory, error);
    if (error) {
        return RefuseRestart("the directory in which the load was run, " + state.directory +
                             ", cannot be used: " + error.message());
    }
    PrintMessage("mqam restart: in " + state.directory + ": " + DescribeCommand(state) + "\n");
    std::vector<std::string> arguments = {"mqam"};
    arguments.insert(arguments.end(), state.command.begin(), state.command.end());
    platform::ForwardInterrupts();
    platform::ProcessOptions process;
    process.endsWithParent = true;
    process.receivesInterrupts = true;
    std::string reason;
    const platform::ProcessHandle load =
        platform::StartProcess(platform::RunningProgramPath(), arguments, process, reason);
    if (load == platform::kNoProcess) return RefuseRestart("the command cannot be started: " + reason);
    const platform::ProcessEnd end = platform::WaitForProcess(load);
    return end.killed ? static_cast<int>(kExitRestart) : end.code;
}

int RunAbandon(const RestartOptions& options) {
    FoundLoad found;
    const int search = FindLoad(options.where, found);
    if (search != kExitDone) return search;
    AbandonRequest request;
    request.state = found.state;
    request.restartFile = FindTargetKind(found.place).keepsRestartState ? "" : found.place;
    request.exportPath = options.to;
    request.isConfirmed = [&options](const std::string& plan) {
        PrintMessage("mqam restart: " + plan);
        return IsConfirmed("mqam restart", "Give up this load?", options.yes);
    };
    std::string report;
    bool isComplete = true;
    const Status abandoned = AbandonLoad(request, report, isComplete);
    if (!abandoned.IsOk()) {
        const int refused = RefuseRestart(abandoned.Error());
        return abandoned.Code() == StatusCode::kRefused ? refused : static_cast<int>(kExitTargetFailed);
    }
    const int printed = PrintAnswer("mqam restart", report);
    return printed != kExitDone || isComplete ? printed : static_cast<int>(kExitDamaged);
}

using RunRestart = int (*)(const RestartOptions&);

CLI::App* AddRestartSubcommand(CLI::App& parent, const char* name, const char* description, RunRestart run,
                               const std::shared_ptr<RestartOptions>& options, int& exitCode) {
    CLI::App* command = parent.add_subcommand(name, description);
    command
        ->add_option("WHERE", options->where,
                     "the target of the load, its directory TARGET.load, or its restart file")
        ->type_name("")
        ->required();
    command->footer(kRestartExamples);
    command->callback([options, run, &exitCode] { exitCode = run(*options); });
    return command;
}

}  // namespace

void AddRestartCommand(CLI::App& app, int& exitCode) {
    CLI::App* parent = app.add_subcommand("restart", "Show, resume or give up a load that did not end");
    parent->require_subcommand(1);
    const auto options = std::make_shared<RestartOptions>();
    AddRestartSubcommand(*parent, "show", "Show what has been loaded, since when and by which command",
                         RunShow, options, exitCode);
    AddRestartSubcommand(*parent, "resume", "Run the command of the load again", RunResume, options,
                         exitCode);
    CLI::App* abandon =
        AddRestartSubcommand(*parent, "abandon", "Save what is not loaded yet, then give up the load",
                             RunAbandon, options, exitCode);
    abandon
        ->add_option("--to", options->to,
                     "where the records that are not in the target are saved. Default: TARGET.unloaded-DATE")
        ->type_name("OUT");
    abandon->add_flag("--yes", options->yes, "do not ask before deleting the files of the load");
}

}  // namespace mqam
