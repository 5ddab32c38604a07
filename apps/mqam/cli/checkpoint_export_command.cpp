// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/checkpoint_export_command.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/checkpoint/listing.h"
#include "mqam/cli/option_values.h"
#include "mqam/load/record_export.h"
#include "mqam/load/stored_load.h"
#include "mqam/target/load_places.h"
#include "mqam/target/lock_file.h"

namespace mqam {

namespace {

constexpr const char* kExportExamples =
    "Examples:\n"
    "  mqam checkpoint export orders.ckpt --to saved.txt\n"
    "      every record that can be read, a line each\n"
    "  mqam checkpoint export orders.ckpt --to saved.bin --format length\n"
    "      4 bytes little-endian length before each record\n"
    "  mqam checkpoint export orders.ckpt --to saved.txt --restart-file orders.restart\n"
    "      without the records that are in the target already\n"
    "\n"
    "The file itself is not changed. Of a damaged file, the records before the damage are written, and those after it\n"
    "if the lengths from there lead exactly to the end of the file and the bytes cannot be read in another way.\n"
    "\n"
    "Exit codes: 0 every record was written, 1 nothing was written (the file is missing or in use, or OUT exists),\n"
    "3 a file cannot be read or written, 10 the file is damaged: a part was written, and what is missing is reported.\n";

struct ExportOptions {
    std::string path;
    std::uint64_t maxRecordBytes = kLargestRecordBytes;
    std::string to;
    RecordFormat format = RecordFormat::kLines;
    std::string restartFile;
};

int RefuseExport(const std::string& error) {
    PrintMessage("mqam checkpoint: " + error + "\n");
    return kExitNotStarted;
}

// Exports while no load uses the file.
int ExportLocked(const ExportOptions& options, const RestartState* stored) {
    const CheckpointScan scan = ScanCheckpointFile(options.path, options.maxRecordBytes);
    if (scan.shape == CheckpointShape::kMissing || scan.shape == CheckpointShape::kUnreadable) {
        return RefuseExport(SummarizeScan(scan));
    }
    const ExportPlan plan = PlanExport(scan, stored);
    ExportCounts counts;
    const Status exported = ExportRecords(options.path, plan, options.to, options.format, counts);
    if (!exported.IsOk()) {
        const int refused = RefuseExport("nothing was exported: " + exported.Error());
        return exported.Code() == StatusCode::kRefused ? refused : static_cast<int>(kExitTargetFailed);
    }
    std::string text = options.path + ": " + FormatRecords(counts.records) + " (" +
                       FormatCount(counts.bytes) + " bytes) written to " + options.to +
                       (IsComplete(plan) ? "\n" : "; the file is damaged\n");
    text += DescribeExport(plan);
    if (options.format == RecordFormat::kLines && counts.withLineFeeds != 0) {
        text +=
            "  note: " + FormatRecordsThatAre(counts.withLineFeeds) +
            " of several lines, because the data contains line feeds; --format length keeps records apart\n";
    }
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        (void)RefuseExport("cannot write to standard output; " + options.to + " is complete");
        return kExitTargetFailed;
    }
    return IsComplete(plan) ? kExitDone : kExitDamaged;
}

int RunExport(const ExportOptions& options) {
    RestartState stored;
    if (!options.restartFile.empty()) {
        const Status read = ReadStateOfLoad(options.restartFile, options.path, stored);
        if (!read.IsOk()) return RefuseExport(read.Error());
    }
    // A directory in which no lock can be created is not used by a load either.
    const std::string lock = CheckpointLockPath(RealPath(options.path));
    const Status locked = AcquireLockFile(lock, 0);
    if (locked.Code() == StatusCode::kRefused) return RefuseExport("nothing was exported: " + locked.Error());
    const int exitCode = ExportLocked(options, options.restartFile.empty() ? nullptr : &stored);
    ReleaseLockFile(lock);
    return exitCode;
}

}  // namespace

void AddCheckpointExportCommand(CLI::App& parent, int& exitCode) {
    CLI::App* command =
        parent.add_subcommand("export", "Write the records to a file, also those of a damaged file");
    const auto options = std::make_shared<ExportOptions>();
    std::vector<std::pair<std::string, RecordFormat>> formats;
    std::string formatNames;
    for (const RecordFormatRow& row : kRecordFormats) {
        formats.emplace_back(row.name, row.format);
        formatNames += (formatNames.empty() ? "" : "|") + std::string(row.name);
    }
    command->add_option("FILE", options->path, "the checkpoint file")->type_name("")->required();
    command->add_option("--to", options->to, "the file to write; it must not exist")
        ->type_name("OUT")
        ->required();
    command
        ->add_option("--format", options->format,
                     "how the records are written, as in `mqam load`. Default: lines")
        ->type_name(formatNames)
        ->transform(EnumeratorIn(formats));
    command
        ->add_option(
            "--restart-file", options->restartFile,
            "the restart file of the load, or its SQLite target: records that are loaded already are left out")
        ->type_name("FILE");
    command
        ->add_option("--bksz,--max-record", options->maxRecordBytes,
                     "the largest record of the load, at most 16M. Default: 16777216, the module's limit")
        ->type_name("BYTES")
        ->transform(NumberIn({NumberUnit::kBytes, 1, kLargestRecordBytes}));
    command->footer(kExportExamples);
    command->callback([options, &exitCode] { exitCode = RunExport(*options); });
}

}  // namespace mqam
