// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/integrity.h"

#include "mqam/base/progress.h"
#include "mqam/base/text_wrap.h"
#include "recovery/checkpoint_records.h"

namespace mqam {

namespace {

constexpr std::size_t kTextWidth = 100;

constexpr char kNoChecksum[] =
    "Not known: the format has no checksum. Changed bytes inside a record or in the sequence number cannot be "
    "detected, and neither can the loss of complete records at the end of the file.";

std::string At(std::uint64_t offset) {
    return "offset " + std::to_string(offset);
}

std::string CountCompleteRecords(std::uint64_t count) {
    return FormatCount(count) + (count == 1 ? " complete record" : " complete records");
}

// "  bytes 4 to 24: 2 whole records".
std::string Range(std::uint64_t from, std::uint64_t to, const std::string& what) {
    const std::string bytes = to == from + 1
                                  ? "byte " + std::to_string(from)
                                  : "bytes " + std::to_string(from) + " to " + std::to_string(to - 1);
    return "  " + bytes + ": " + what + "\n";
}

std::string Paragraph(const std::string& text) {
    return WrapText(text, kTextWidth) + "\n";
}

std::string DescribeTail(const CheckpointScan& scan, std::uint64_t maxRecordBytes) {
    const std::uint64_t tail = scan.fileBytes - scan.intactBytes;
    if (tail < mqamod::kRecordLengthBytes) return "the beginning of a record length (8 bytes)";
    const std::string length = "a record length of " + std::to_string(scan.lengthAfterIntact);
    if (scan.impossibleLengthAt != 0) {
        return length + ", above the largest record (" + std::to_string(maxRecordBytes) +
               "), and what follows it";
    }
    return length + ", and " + std::to_string(tail - mqamod::kRecordLengthBytes) + " bytes after it";
}

// Lists what each range of bytes is, read from the beginning.
std::string ListRanges(const CheckpointScan& scan, std::uint64_t maxRecordBytes) {
    std::string text = Range(0, 4, "the sequence number: checkpoint " + std::to_string(scan.sequence));
    const std::uint64_t doubtfulFrom = scan.damagedLengthAt != 0 && scan.damagedLengthAt < scan.intactBytes
                                           ? scan.damagedLengthAt
                                           : scan.intactBytes;
    std::uint64_t intact = 0;
    while (intact < scan.records.size() && scan.records[intact].offset < doubtfulFrom)
        ++intact;
    if (intact > 0) text += Range(4, doubtfulFrom, CountCompleteRecords(intact));
    if (doubtfulFrom < scan.intactBytes) {
        text += Range(doubtfulFrom, scan.intactBytes,
                      "read as " + CountCompleteRecords(scan.records.size() - intact) + ", probably wrongly");
    }
    if (scan.intactBytes < scan.fileBytes)
        text += Range(scan.intactBytes, scan.fileBytes, DescribeTail(scan, maxRecordBytes));
    return text;
}

std::string ExplainIncomplete(const CheckpointScan& scan) {
    return Paragraph(
               "Known: a crash in the middle of an append leaves exactly this. Such a record was never "
               "committed: it is still on the queue, and a restart removes its fragment.") +
           Paragraph(
               "Not known: a last record with a damaged length would look the same, and that one was "
               "committed. `mqam checkpoint repair " +
               scan.path + "` keeps a copy of the bytes that it removes.") +
           Paragraph(kNoChecksum);
}

std::string ExplainDamaged(const CheckpointScan& scan) {
    std::string text;
    if (scan.damagedLengthAt != 0) {
        const std::uint64_t flipped = scan.resyncOffset - scan.damagedLengthAt - mqamod::kRecordLengthBytes;
        text = Paragraph("Known: one bit of the record length at " + At(scan.damagedLengthAt) +
                         " is probably wrong. With the length " + std::to_string(flipped) + ", " +
                         CountCompleteRecords(scan.resyncRecords) + " from " + At(scan.resyncOffset) +
                         " would lead exactly to the end of the file.");
    } else if (scan.resyncOffset != 0) {
        text = Paragraph(
            "Known: no crash of the module leaves this, because an append is the end of the file. " +
            CountCompleteRecords(scan.resyncRecords) + " from " + At(scan.resyncOffset) +
            " lead exactly to its end; the lengths of one or more records between " + At(scan.intactBytes) +
            " and those are lost.");
    } else {
        text = Paragraph(
            "Known: no crash of the module leaves this. The start of the next record cannot be "
            "computed from such a length, and no complete record that leads to the end of the file "
            "was found after it.");
    }
    return text +
           Paragraph(
               "Not known: the wrong length may be an earlier one than the one that shows, so the records "
               "before it may not be what was saved.") +
           Paragraph(kNoChecksum) +
           Paragraph(
               "To do: keep a copy of the file, and restore an undamaged one. A restart refuses this "
               "file, and no repair is tried, because it would be a guess.");
}

}  // namespace

Integrity CheckIntegrity(const CheckpointScan& scan) {
    if (scan.impossibleLengthAt != 0 || scan.resyncOffset != 0) return Integrity::kDamaged;
    return scan.intactBytes == scan.fileBytes ? Integrity::kIntact : Integrity::kIncomplete;
}

std::string DescribeIntegrity(const CheckpointScan& scan, std::uint64_t maxRecordBytes) {
    if (scan.shape == CheckpointShape::kEmpty) {
        return scan.path + " is intact: it is empty\n" +
               Paragraph("Known: the file is new, or a rewrite was interrupted at its beginning.") +
               Paragraph("Not known: whether it contained records that something else removed.");
    }
    if (scan.shape == CheckpointShape::kTornHeader) {
        return scan.path + " is incomplete\n" +
               Range(0, scan.fileBytes, "the beginning of the sequence number (4 bytes)") +
               Paragraph(
                   "Known: a rewrite that was interrupted in its first write leaves this. The file has "
                   "no record.");
    }
    switch (CheckIntegrity(scan)) {
        case Integrity::kIntact:
            return scan.path + " is intact\n" + ListRanges(scan, maxRecordBytes) + Paragraph(kNoChecksum);
        case Integrity::kIncomplete:
            return scan.path + " is incomplete\n" + ListRanges(scan, maxRecordBytes) +
                   ExplainIncomplete(scan);
        case Integrity::kDamaged: break;
    }
    return scan.path + " is damaged\n" + ListRanges(scan, maxRecordBytes) + ExplainDamaged(scan);
}

}  // namespace mqam
