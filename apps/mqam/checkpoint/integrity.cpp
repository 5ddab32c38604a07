// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/integrity.h"

#include "mqam/base/progress.h"
#include "mqam/base/text_wrap.h"
#include "mqam/checkpoint/damage.h"
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

// Formats a range, for example "  bytes 4 to 24: 2 whole records".
std::string Range(std::uint64_t from, std::uint64_t to, const std::string& what) {
    const std::string bytes = to == from + 1
                                  ? "byte " + std::to_string(from)
                                  : "bytes " + std::to_string(from) + " to " + std::to_string(to - 1);
    return "  " + bytes + ": " + what + "\n";
}

std::string Paragraph(const std::string& text) {
    return WrapText(text, kTextWidth) + "\n";
}

// Describes the bytes from the end of the intact ones to `tailTo`.
std::string DescribeTail(const CheckpointScan& scan, std::uint64_t tailTo, std::uint64_t maxRecordBytes) {
    const std::uint64_t tail = tailTo - scan.intactBytes;
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
    std::uint64_t tailFrom = scan.intactBytes;
    if (scan.filler) {
        text += Range(tailFrom, scan.filler->to, NameFiller(*scan.filler));
        tailFrom = scan.filler->to;
    }
    const bool showsAfter = !scan.recordsAfter.empty() && scan.recordsAfter.front().offset >= tailFrom;
    const std::uint64_t tailTo = showsAfter ? scan.recordsAfter.front().offset : scan.fileBytes;
    if (tailFrom < tailTo) {
        text += Range(tailFrom, tailTo,
                      scan.filler ? "not a complete record" : DescribeTail(scan, tailTo, maxRecordBytes));
    }
    if (tailTo < scan.fileBytes)
        text += Range(tailTo, scan.fileBytes, CountCompleteRecords(scan.recordsAfter.size()));
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

std::string ExplainRecordsAfter(const CheckpointScan& scan) {
    if (scan.resyncOffset == 0) return "";
    std::string text = " " + CountCompleteRecords(scan.resyncRecords) + " from " + At(scan.resyncOffset) +
                       " lead exactly to the end of the file";
    const std::size_t reliable = scan.recordsAfter.size();
    if (reliable < scan.resyncRecords) {
        text += ", but the same bytes can be read in another way: " +
                (reliable == 0 ? std::string("none of them is")
                               : "only those from " + At(scan.recordsAfter.front().offset) + " are") +
                " certain";
    }
    return text + ".";
}

std::string ExplainFiller(const CheckpointScan& scan) {
    const FillerRun& filler = *scan.filler;
    const std::string where =
        "from " + At(scan.intactBytes) +
        (filler.to == scan.fileBytes ? " to the end of the file" : " to offset " + std::to_string(filler.to));
    std::string text =
        Paragraph("Known: no crash of the module leaves the " + NameFiller(filler) + " " + where +
                  ". A file system shows them where data never reached the disk, for example "
                  "after a power failure." +
                  ExplainRecordsAfter(scan));
    if (filler.from < scan.intactBytes) {
        text += Paragraph("Not known: the complete record before them ends in " + NameFiller(filler) +
                          " too, from " + At(filler.from) + ". They can be its own, or it is incomplete.");
    }
    return text;
}

std::string ExplainWrongLength(const CheckpointScan& scan) {
    std::string text;
    if (scan.damagedLengthAt != 0) {
        const std::uint64_t flipped = scan.resyncOffset - scan.damagedLengthAt - mqamod::kRecordLengthBytes;
        text = Paragraph("Known: one bit of the record length at " + At(scan.damagedLengthAt) +
                         " is probably wrong. With the length " + std::to_string(flipped) + ", " +
                         CountCompleteRecords(scan.resyncRecords) + " from " + At(scan.resyncOffset) +
                         " would lead exactly to the end of the file.");
    } else if (scan.resyncOffset != 0) {
        text =
            Paragraph("Known: no crash of the module leaves this, because an append is the end of the file." +
                      ExplainRecordsAfter(scan) + " The lengths of one or more records between " +
                      At(scan.intactBytes) + " and those are lost.");
    } else if (scan.emptyLengthAt != 0) {
        text = Paragraph(
            "Known: no crash of the module leaves this, because the module never saves an empty record after the "
            "first one. No complete record that leads to the end of the file was found after it.");
    } else {
        text = Paragraph(
            "Known: no crash of the module leaves this. The start of the next record cannot be "
            "computed from such a length, and no complete record that leads to the end of the file "
            "was found after it.");
    }
    return text +
           Paragraph(
               "Not known: the wrong length may be an earlier one than the one that shows, so the records "
               "before it may not be what was saved.");
}

std::string ExplainDamaged(const CheckpointScan& scan) {
    std::string text;
    if (HasNoSequence(scan)) {
        text += Paragraph(
            "Known: no checkpoint has the number 0. The sequence number never reached the disk, for example "
            "because of a power failure, so which checkpoint the file belongs to is lost.");
    }
    const Loss loss = EstimateLoss(scan);
    if (loss.to != 0) {
        text += scan.filler ? ExplainFiller(scan) : ExplainWrongLength(scan);
        text += Paragraph("Lost: between " + At(loss.from) + " and " + At(loss.to) + ", " +
                          DescribeLoss(loss) + ".");
    }
    return text + Paragraph(kNoChecksum) +
           Paragraph(
               "To do: keep a copy of the file, and restore an undamaged one. A restart refuses this "
               "file, and no repair is tried, because it would be a guess. If there is no other copy, "
               "`mqam checkpoint export` saves the records that can be read.");
}

}  // namespace

Integrity CheckIntegrity(const CheckpointScan& scan) {
    if (IsDamaged(scan)) return Integrity::kDamaged;
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
