#include "mqam/checkpoint/integrity.h"

#include "mqam/base/progress.h"
#include "mqam/base/text_wrap.h"

namespace mqam {

namespace {

constexpr std::size_t kTextWidth = 100;
constexpr std::uint64_t kLengthBytes = 8;

constexpr char kNoChecksum[] =
    "Not known: the format has no checksum. Bytes changed inside a record or in the sequence number do not "
    "show, and neither does a file that lost whole records at its end.";

std::string At(std::uint64_t offset) {
    return "offset " + std::to_string(offset);
}

std::string CountRecords(std::uint64_t count) {
    return FormatCount(count) + (count == 1 ? " whole record" : " whole records");
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

std::string DescribeTail(const CheckpointScan& facts, std::uint64_t maxRecordBytes) {
    const std::uint64_t tail = facts.fileBytes - facts.intactBytes;
    if (tail < kLengthBytes) return "the beginning of a record length, of 8 bytes";
    const std::string length = "a record length of " + std::to_string(facts.lengthBehindIntact);
    if (facts.impossibleLengthAt != 0) {
        return length + ", above the largest record (" + std::to_string(maxRecordBytes) +
               "), and what follows it";
    }
    return length + ", and " + std::to_string(tail - kLengthBytes) + " bytes behind it";
}

// What each range of bytes is, as they are read from the beginning.
std::string ListRanges(const CheckpointScan& facts, std::uint64_t maxRecordBytes) {
    std::string text = Range(0, 4, "the sequence number: checkpoint " + std::to_string(facts.sequence));
    const std::uint64_t doubtful = facts.damagedLengthAt != 0 && facts.damagedLengthAt < facts.intactBytes
                                       ? facts.damagedLengthAt
                                       : facts.intactBytes;
    std::uint64_t sound = 0;
    while (sound < facts.records.size() && facts.records[sound].offset < doubtful)
        ++sound;
    if (sound > 0) text += Range(4, doubtful, CountRecords(sound));
    if (doubtful < facts.intactBytes) {
        text += Range(doubtful, facts.intactBytes,
                      "read as " + CountRecords(facts.records.size() - sound) + ", probably wrongly");
    }
    if (facts.intactBytes < facts.fileBytes)
        text += Range(facts.intactBytes, facts.fileBytes, DescribeTail(facts, maxRecordBytes));
    return text;
}

std::string ExplainIncomplete(const CheckpointScan& facts) {
    return Paragraph(
               "Known: a crash in the middle of an append leaves exactly this. Such a record was never "
               "committed: it is still on the queue, and a restart cuts its beginning off.") +
           Paragraph(
               "Not known: a last record whose length was damaged would look the same, and that one was "
               "committed. `mqam checkpoint repair " +
               facts.path + "` keeps the bytes that it cuts off.") +
           Paragraph(kNoChecksum);
}

std::string ExplainDamaged(const CheckpointScan& facts) {
    std::string text;
    if (facts.damagedLengthAt != 0) {
        const std::uint64_t turned = facts.resyncOffset - facts.damagedLengthAt - kLengthBytes;
        text = Paragraph("Known: one bit of the record length at " + At(facts.damagedLengthAt) +
                         " is probably wrong. Were the length " + std::to_string(turned) + ", " +
                         CountRecords(facts.resyncRecords) + " from " + At(facts.resyncOffset) +
                         " on would lead exactly to the end of the file.");
    } else if (facts.resyncOffset != 0) {
        text = Paragraph("Known: no crash of the module leaves this, since an append ends the file. " +
                         CountRecords(facts.resyncRecords) + " from " + At(facts.resyncOffset) +
                         " on lead exactly to its end; the length of what stands between " +
                         At(facts.intactBytes) + " and them, one record or more, is lost.");
    } else {
        text = Paragraph(
            "Known: no crash of the module leaves this. Where the next record begins cannot be "
            "computed from such a length, and no whole record that leads to the end of the file "
            "was found behind it.");
    }
    return text +
           Paragraph(
               "Not known: a length before the one that shows can be the wrong one, so that records "
               "read before it are not what was saved.") +
           Paragraph(kNoChecksum) +
           Paragraph(
               "To do: keep a copy of the file; give back an undamaged copy of it. A restart refuses "
               "this one, and no repair is tried: it would guess.");
}

}  // namespace

Integrity CheckIntegrity(const CheckpointScan& facts) {
    if (facts.impossibleLengthAt != 0 || facts.resyncOffset != 0) return Integrity::kDamaged;
    return facts.intactBytes == facts.fileBytes ? Integrity::kIntact : Integrity::kIncomplete;
}

std::string DescribeIntegrity(const CheckpointScan& facts, std::uint64_t maxRecordBytes) {
    if (facts.shape == CheckpointShape::kEmpty) {
        return facts.path + " is intact: it is empty\n" +
               Paragraph("Known: the file is new, or a rewrite was interrupted at its beginning.") +
               Paragraph("Not known: whether it held records that something else removed.");
    }
    if (facts.shape == CheckpointShape::kTornHeader) {
        return facts.path + " is incomplete\n" +
               Range(0, facts.fileBytes, "the beginning of the sequence number, of 4 bytes") +
               Paragraph(
                   "Known: a rewrite that was interrupted in its first write leaves this. No record is "
                   "in the file.");
    }
    switch (CheckIntegrity(facts)) {
        case Integrity::kIntact:
            return facts.path + " is intact\n" + ListRanges(facts, maxRecordBytes) + Paragraph(kNoChecksum);
        case Integrity::kIncomplete:
            return facts.path + " is incomplete\n" + ListRanges(facts, maxRecordBytes) +
                   ExplainIncomplete(facts);
        case Integrity::kDamaged: break;
    }
    return facts.path + " is damaged\n" + ListRanges(facts, maxRecordBytes) + ExplainDamaged(facts);
}

}  // namespace mqam
