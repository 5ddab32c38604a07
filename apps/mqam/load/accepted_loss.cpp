// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/accepted_loss.h"

#include <algorithm>

#include "mqam/base/progress.h"
#include "mqam/base/utc_time.h"
#include "mqam/checkpoint/repair.h"
#include "platform/durable_file.h"

namespace mqam {

std::string DatedSuffix(const char* suffix) {
    std::string digits;
    for (const char c : UtcNow()) {
        if (c >= '0' && c <= '9') digits += c;
    }
    return std::string(suffix) + "-" + digits.substr(0, 8) + "-" + digits.substr(8);
}

namespace {

// Collects records in the layout of the checkpoint file.
class CheckpointBytesSink : public RecordSink {
  public:
    explicit CheckpointBytesSink(std::int32_t sequence) { Append(&sequence, sizeof sequence); }
    Status Open() override { return {}; }
    Status Put(const char* record, std::size_t length) override {
        const std::uint64_t lengthField = length;
        Append(&lengthField, sizeof lengthField);
        Append(record, length);
        return {};
    }
    Status Finish() override { return {}; }
    [[nodiscard]] const std::string& Bytes() const { return bytes_; }

  private:
    void Append(const void* bytes, std::size_t count) {
        bytes_.append(static_cast<const char*>(bytes), count);
    }

    std::string bytes_;
};

// How many records a file that is missing, or that lost all of its records, contained.
std::string DescribeUnknownLoss(const RestartState& state, std::uint64_t checkpointEveryRecords) {
    if (state.lastEnd != LastEnd::kNone) {
        const std::uint64_t since = state.lastEndRecords - state.records;
        return since == 0 ? "no record: none had been read since the last checkpoint"
                          : FormatRecords(since) + ", read since the last checkpoint";
    }
    const std::string since = "the records read since the last checkpoint";
    return checkpointEveryRecords == 0
               ? since + "; their number is not known"
               : since + ", at most " + FormatCount(checkpointEveryRecords) + " (--checkpoint-every)";
}

Status CheckKind(const CheckpointScan& scan, const std::vector<std::string>& temporaries, bool hasRecords) {
    if (!temporaries.empty()) {
        return Status::Refused(
            "--accept-loss: there is a temporary checkpoint file, which may contain the records; " +
            HowToRepair(scan.path));
    }
    if (HasNoSequence(scan) && hasRecords) {
        return Status::Refused(
            "--accept-loss: it cannot be known which records of " + scan.path +
            " are loaded, because its sequence number is lost; save them with `mqam checkpoint "
            "export " +
            scan.path + " --to FILE`, move the file away, and run the same command again");
    }
    if (scan.shape == CheckpointShape::kMissing || scan.shape == CheckpointShape::kHeaderOnly ||
        IsDamaged(scan))
        return {};
    return Status::Refused("--accept-loss does not apply: nothing is lost in " + scan.path +
                           ", but it does not fit");
}

// Whether the file is that of the stored position: if the record that is loaded according to the position can be read, it
// is the last one of the target.
bool FitsLoad(const CheckpointScan& scan, const RestartState& state, const std::vector<char>& lastRecord) {
    const std::optional<std::uint64_t> unloadedFrom = FindFirstUnloaded(scan, *state.position);
    if (!unloadedFrom) return false;
    for (const ScannedRecord& record : scan.records) {
        if (record.offset + 1 != *unloadedFrom || record.offset >= EstimateLoss(scan).from) continue;
        return record.length == lastRecord.size() &&
               std::equal(record.head.begin(), record.head.end(), lastRecord.begin());
    }
    return true;
}

std::string ComposeQuestion(const AcceptedLoss& loss, const CheckpointScan& scan, const RestartState& state,
                            std::uint64_t checkpointEveryRecords) {
    std::string text =
        "  loaded     " + FormatRecordsThatAre(state.records) + " in " + state.target + " and stay there\n";
    text += "  continues  with " + FormatRecords(CountRecords(loss.unloaded)) + " of " + scan.path +
            ", then with the queue\n";
    if (loss.unloaded.loss.to == 0) {
        text += "  lost       " + DescribeUnknownLoss(state, checkpointEveryRecords) + "\n";
    } else {
        text += DescribeExport(loss.unloaded);
    }
    if (!loss.keptPath.empty()) text += "  kept       the file as it is, in " + loss.keptPath + "\n";
    if (!loss.exportPath.empty()) {
        text += "  saved      every record that can be read (" + FormatCount(CountRecords(loss.everything)) +
                ", loaded or not) in " + loss.exportPath + ", in the format length\n";
    }
    return text;
}

}  // namespace

Status PlanAcceptedLoss(const CheckpointScan& scan, const std::vector<std::string>& temporaries,
                        const RestartState& state, std::uint64_t checkpointEveryRecords, Target& target,
                        AcceptedLoss& loss) {
    loss.everything = PlanExport(scan, nullptr);
    const bool hasRecords = CountRecords(loss.everything) != 0;
    Status status = CheckKind(scan, temporaries, hasRecords);
    if (!status.IsOk()) return status;
    loss.checkpointFile = scan.path;
    loss.sequence = state.position->CkPtSeq;
    loss.fileExists = scan.shape != CheckpointShape::kMissing;
    if (state.position->CkPtMsgCount != 0 && state.lastRecordLength != 0) {
        // With this record in front, the module recognises the redelivery of it, and the load does not put it twice.
        status = target.ReadLastRecord(state, loss.lastRecord);
        if (!status.IsOk()) return status;
    }
    if (hasRecords && !FitsLoad(scan, state, loss.lastRecord)) {
        return Status::Refused("--accept-loss does not apply: " + scan.path +
                               " does not fit the stored position, so it is another load's or a backup");
    }
    loss.unloaded = PlanExport(scan, &state);
    if (loss.fileExists && scan.fileBytes != 0) loss.keptPath = FreeName(scan.path, DatedSuffix(".kept"));
    if (hasRecords) loss.exportPath = FreeName(scan.path, DatedSuffix(".saved"));
    loss.question = ComposeQuestion(loss, scan, state, checkpointEveryRecords);
    return {};
}

Status AcceptLoss(const AcceptedLoss& loss) {
    const std::string& path = loss.checkpointFile;
    ExportCounts counts;
    Status status;
    if (!loss.exportPath.empty())
        status = ExportRecords(path, loss.everything, loss.exportPath, RecordFormat::kLength, counts);
    if (status.IsOk() && !loss.keptPath.empty()) {
        RepairStep copy;
        copy.kind = RepairStep::Kind::kKeepTail;
        copy.keptPath = loss.keptPath;
        status = TakeStep(path, copy);
    }
    CheckpointBytesSink bytes(loss.sequence);
    if (status.IsOk() && !loss.lastRecord.empty())
        status = bytes.Put(loss.lastRecord.data(), loss.lastRecord.size());
    if (status.IsOk() && CountRecords(loss.unloaded) != 0)
        status = PutRecords(path, loss.unloaded, bytes, counts);
    std::string error;
    if (status.IsOk() && !platform::ReplaceDurably(path, FreeName(path, ".new"), bytes.Bytes(), error)) {
        status = Status::Transient("cannot replace " + path + ": " + error);
    }
    return status;
}

}  // namespace mqam
