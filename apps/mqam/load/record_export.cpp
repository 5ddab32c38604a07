// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/record_export.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "mqam/base/progress.h"
#include "mqam/checkpoint/repair.h"
#include "mqam/target/file/file_sink.h"
#include "platform/durable_file.h"
#include "platform/file.h"
#include "platform/stream.h"
#include "recovery/checkpoint_records.h"

namespace mqam {

namespace {

// Whether the record that is loaded according to the position can be the one that the state describes.
bool FitsLastRecord(const CheckpointScan& scan, std::uint64_t unloadedFrom, const RestartState& stored) {
    for (const ScannedRecord& record : scan.records) {
        if (record.offset + 1 == unloadedFrom) return record.length == stored.lastRecordLength;
    }
    return true;
}

// Copies the records that the load needs.
void TakeRecords(const std::vector<ScannedRecord>& records, std::uint64_t from, std::uint64_t to,
                 ExportPlan& plan, std::vector<ScannedRecord>& taken) {
    for (const ScannedRecord& record : records) {
        if (record.length == 0 || record.offset >= to) continue;
        if (record.offset < from) {
            ++plan.leftOut;
        } else {
            taken.push_back(record);
        }
    }
}

Status FailOn(const char* action, const std::string& path) {
    return Status::Transient(std::string("cannot ") + action + " " + path + ": " +
                             (errno != 0 ? std::strerror(errno) : "it has changed in the meantime"));
}

// Puts one record into the sink.
Status PutRecord(std::FILE* from, const std::string& path, const ScannedRecord& record, bool lengthIsWrong,
                 RecordSink& sink, ExportCounts& counts) {
    std::vector<char> body(static_cast<std::size_t>(record.length));
    std::uint64_t length = 0;
    errno = 0;
    if (!platform::MoveStreamTo(from, record.offset) || !mqamod::ReadRecordLength(from, length).complete ||
        !mqamod::ReadRecordBody(from, body.data(), record.length).complete) {
        return FailOn("read", path);
    }
    const bool begins =
        record.head.empty() || std::equal(record.head.begin(), record.head.end(), body.begin());
    if (!begins || (length != record.length && !lengthIsWrong)) return FailOn("export", path);
    ++counts.records;
    counts.bytes += record.length;
    if (std::find(body.begin(), body.end(), '\n') != body.end()) ++counts.withLineFeeds;
    return sink.Put(body.data(), body.size());
}

}  // namespace

Status PutRecords(const std::string& checkpointFile, const ExportPlan& plan, RecordSink& sink,
                  ExportCounts& counts) {
    const platform::Stream from(std::fopen(checkpointFile.c_str(), "rb"));
    if (from == nullptr) return FailOn("read", checkpointFile);
    Status put;
    for (const ScannedRecord& record : plan.before) {
        if (put.IsOk()) put = PutRecord(from.get(), checkpointFile, record, false, sink, counts);
    }
    if (plan.corrected && put.IsOk())
        put = PutRecord(from.get(), checkpointFile, *plan.corrected, true, sink, counts);
    for (const ScannedRecord& record : plan.after) {
        if (put.IsOk()) put = PutRecord(from.get(), checkpointFile, record, false, sink, counts);
    }
    return put;
}

namespace {

// Writes the file and syncs it to disk. It is closed when this returns.
Status WriteRecords(const std::string& checkpointFile, const ExportPlan& plan,
                    const FileSinkSettings& settings, ExportCounts& counts) {
    FileSink sink(settings);
    Status opened = sink.Open();
    if (!opened.IsOk()) return opened;
    Status put = PutRecords(checkpointFile, plan, sink, counts);
    Status finished = sink.Finish();
    return put.IsOk() ? finished : put;
}

std::string DescribeRange(const std::vector<ScannedRecord>& records, const char* where) {
    if (records.empty()) return "";
    const ScannedRecord& last = records.back();
    return "  written: " + FormatRecords(records.size()) + where + ", from offset " +
           std::to_string(records.front().offset) + " to offset " +
           std::to_string(last.offset + mqamod::kRecordLengthBytes + last.length);
}

// The lengths of the records after the damage are the only evidence that they begin there.
std::string DescribeCertainty(std::size_t records) {
    if (records == 1) return "  (probable: one length leads to the end of the file)\n";
    return "  (certain but for chance: " + FormatCount(records) +
           " lengths in a row lead exactly to the end of the file)\n";
}

}  // namespace

std::optional<std::uint64_t> FindFirstUnloaded(const CheckpointScan& scan, const PositionData& position) {
    const auto ahead = static_cast<std::int64_t>(scan.sequence) - position.CkPtSeq;
    if (position.CkPtMsgCount == 0) return ahead == 0 ? std::optional<std::uint64_t>(0) : std::nullopt;
    // Right after a checkpoint, the file begins with the last record loaded, unless a rewrite put an empty one first.
    if (ahead == 0) {
        const bool hasEmpty = !scan.records.empty() && scan.records.front().length == 0;
        return mqamod::kSequenceBytes + (hasEmpty ? mqamod::kRecordLengthBytes : 0) + 1;
    }
    // Before it is carried out, the position names that record in the file of the previous checkpoint.
    if (ahead != -1 || position.CkPtOffset < 0) return std::nullopt;
    return static_cast<std::uint64_t>(position.CkPtOffset) + 1;
}

ExportPlan PlanExport(const CheckpointScan& scan, const RestartState* stored) {
    ExportPlan plan;
    std::uint64_t from = 0;
    if (stored != nullptr && stored->position) from = FindFirstUnloaded(scan, *stored->position).value_or(0);
    if (stored != nullptr && !FitsLastRecord(scan, from, *stored)) from = 0;
    plan.loss = EstimateLoss(scan);
    const bool isBroken = plan.loss.to != 0;
    TakeRecords(scan.records, from, isBroken ? plan.loss.from : scan.intactBytes, plan, plan.before);
    TakeRecords(scan.recordsAfter, from, scan.fileBytes, plan, plan.after);
    const bool isCorrectable = scan.damagedLengthAt != 0 && scan.damagedLengthAt >= from &&
                               !scan.recordsAfter.empty() &&
                               scan.recordsAfter.front().offset == scan.resyncOffset &&
                               scan.resyncOffset > scan.damagedLengthAt + mqamod::kRecordLengthBytes;
    if (isCorrectable) {
        plan.corrected = ScannedRecord{
            scan.damagedLengthAt, scan.resyncOffset - scan.damagedLengthAt - mqamod::kRecordLengthBytes, ""};
    }
    if (!isBroken && scan.shape == CheckpointShape::kTornHeader) plan.tornBytes = scan.fileBytes;
    if (!isBroken && scan.intactBytes != 0) plan.tornBytes = scan.fileBytes - scan.intactBytes;
    return plan;
}

bool IsComplete(const ExportPlan& plan) {
    return plan.loss.to == 0;
}

std::uint64_t CountRecords(const ExportPlan& plan) {
    return plan.before.size() + (plan.corrected ? 1 : 0) + plan.after.size();
}

Status ExportRecords(const std::string& checkpointFile, const ExportPlan& plan, const std::string& path,
                     RecordFormat format, ExportCounts& counts) {
    counts = {};
    if (platform::ProbePath(path) != platform::PathKind::kMissing) {
        return Status::Refused(path + " exists and is not overwritten: choose another name, or move it away");
    }
    // The file gets its name when it is complete, so that what a crash leaves is not taken for it.
    const std::string part = FreeName(path, ".part");
    Status status =
        WriteRecords(checkpointFile, plan, {part, -1, platform::OpenMode::kCreate, format}, counts);
    std::string error;
    if (status.IsOk() && !platform::RenameDurably(part, path, error)) {
        status = Status::Transient("cannot rename " + part + " to " + path + ": " + error);
    }
    if (!status.IsOk()) (void)std::remove(part.c_str());
    return status;
}

std::string DescribeExport(const ExportPlan& plan) {
    std::string text;
    if (plan.leftOut != 0) {
        text += "  left out: " + FormatRecords(plan.leftOut) + " that the load has loaded already\n";
    }
    if (!plan.before.empty())
        text += DescribeRange(plan.before, IsComplete(plan) ? "" : " before the damage") + "\n";
    if (plan.loss.lastRecordIsDoubtful && !plan.before.empty()) {
        text += "  doubtful: the record at offset " + std::to_string(plan.before.back().offset) +
                " ends in the same bytes as the damage after it, so it may be incomplete\n";
    }
    if (plan.corrected) {
        text += "  written: 1 record at offset " + std::to_string(plan.corrected->offset) +
                ", of whose length one bit is corrected (probable)\n";
    }
    if (!plan.after.empty()) {
        text += DescribeRange(plan.after, " after the damage") + "\n" + DescribeCertainty(plan.after.size());
    }
    if (plan.tornBytes != 0) {
        text +=
            "  not written: " + FormatCount(plan.tornBytes) +
            " bytes at the end, the beginning of a record that was never committed: it is still on the queue\n";
    }
    if (!IsComplete(plan)) {
        text += "  missing: between offset " + std::to_string(plan.loss.from) + " and offset " +
                std::to_string(plan.loss.to) + ", " +
                (plan.corrected ? std::string("nothing if the corrected length is right")
                                : DescribeLoss(plan.loss)) +
                "\n";
    }
    return text;
}

}  // namespace mqam
