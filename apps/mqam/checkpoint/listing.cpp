// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/listing.h"

#include <algorithm>
#include <cstdio>

#include "mqam/base/progress.h"
#include "mqam/checkpoint/repair.h"
#include "mqam/checkpoint/start_decision.h"
#include "mqam/module/position_text.h"

namespace mqam {

namespace {

constexpr std::size_t kHexBytes = 16;

std::string CountOf(std::uint64_t count, const std::string& one) {
    return FormatCount(count) + " " + one + (count == 1 ? "" : "s");
}

std::string SummarizeTail(const CheckpointScan& scan) {
    const std::uint64_t tail = scan.fileBytes - scan.intactBytes;
    if (tail == 0) return "";
    std::string text = "; " + CountOf(tail, "byte") + " from offset " + std::to_string(scan.intactBytes) +
                       " to the end are not a complete record";
    if (IsDamaged(scan)) {
        text += ": damaged, see `mqam checkpoint verify " + scan.path + "`";
    }
    return text;
}

std::string ListRecord(const ScannedRecord& record) {
    char line[64];
    std::snprintf(line, sizeof line, "%12llu %10llu  ", static_cast<unsigned long long>(record.offset),
                  static_cast<unsigned long long>(record.length));
    std::string text = line;
    for (std::size_t i = 0; i < kHexBytes; ++i) {
        if (i < record.head.size()) {
            std::snprintf(line, sizeof line, "%02x ", static_cast<unsigned char>(record.head[i]));
            text += line;
        } else {
            text += "   ";
        }
    }
    text += " |";
    for (const char byte : record.head)
        text += byte >= ' ' && byte <= '~' ? byte : '.';
    return text + "|\n";
}

}  // namespace

std::string SummarizeScan(const CheckpointScan& scan) {
    std::string text = scan.path + ": ";
    switch (scan.shape) {
        case CheckpointShape::kMissing: return text + "missing";
        case CheckpointShape::kUnreadable: return text + "cannot be read: " + scan.error;
        case CheckpointShape::kEmpty: return text + "empty";
        case CheckpointShape::kTornHeader:
            return text + CountOf(scan.fileBytes, "byte") + ", less than the sequence number";
        case CheckpointShape::kHeaderOnly:
        case CheckpointShape::kRecords: break;
    }
    std::uint64_t dataBytes = 0;
    for (const ScannedRecord& record : scan.records)
        dataBytes += record.length;
    text += CountOf(scan.fileBytes, "byte") + ", checkpoint " + std::to_string(scan.sequence) + ", ";
    text += scan.records.empty()
                ? "no record"
                : CountOf(scan.records.size(), "record") + " (" + CountOf(dataBytes, "byte") + " of data)";
    return text + SummarizeTail(scan);
}

std::string ListRecords(const CheckpointScan& scan, const ListedRecords& listed) {
    const std::size_t count = scan.records.size();
    if (count == 0) return "";
    std::string text = "      offset     length  begins\n";
    const std::size_t first = std::min(listed.first, count);
    const std::size_t last = std::min(listed.last, count - first);
    for (std::size_t i = 0; i < first; ++i)
        text += ListRecord(scan.records[i]);
    if (first + last < count) {
        text += "             (" + CountOf(count - first - last, "record") + " left out; --all lists them)\n";
    }
    for (std::size_t i = count - last; i < count; ++i)
        text += ListRecord(scan.records[i]);
    return text;
}

std::string DescribeRestart(const std::string& checkpointPath, const std::optional<PositionData>& stored,
                            std::uint64_t maxRecordBytes, bool& isRefused) {
    const std::vector<std::string> temporaries = FindTemporaryFiles(checkpointPath);
    const CheckpointScan scan = ScanForStart(checkpointPath, temporaries, maxRecordBytes);
    const StartDecision decision = DecideStart(checkpointPath, stored, scan, temporaries);
    isRefused = decision.action == StartAction::kRefuse;
    std::string text = "A restart without a stored position";
    if (stored) {
        const auto count = static_cast<std::uint64_t>(std::max(0, stored->CkPtMsgCount));
        text = "A restart with the position " + FormatPosition(*stored) + " (checkpoint " +
               std::to_string(stored->CkPtSeq) + ", taken after " + CountOf(count, "record") + ", offset " +
               std::to_string(stored->CkPtOffset) + ")";
    }
    text += ":\n";
    for (const Repair& repair : decision.repairs)
        text += "  first: " + DescribeRepair(checkpointPath, repair) + "\n";
    return text + (isRefused ? "  refused: " : "  ") + decision.message + "\n";
}

}  // namespace mqam
