// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/damage.h"

#include <algorithm>
#include <cstring>

#include "mqam/base/progress.h"
#include "platform/file.h"
#include "recovery/checkpoint_records.h"

namespace mqam {

namespace {

using mqamod::kRecordLengthBytes;
using mqamod::kSequenceBytes;

constexpr std::size_t kHeadBytes = 32;

// A shorter run inside the file can be data that a wrong length uncovered.
constexpr std::uint64_t kShortestFillerBytes = 64;

std::uint64_t LengthAt(const std::vector<char>& bytes, std::uint64_t at) {
    std::uint64_t length = 0;
    std::memcpy(&length, bytes.data() + at, sizeof length);
    return length;
}

std::uint64_t NextAfter(const std::vector<char>& bytes, std::uint64_t at) {
    return at + kRecordLengthBytes + LengthAt(bytes, at);
}

// Finds the offsets from which complete records lead exactly to the end. Records of length 0 prove nothing: a run of
// zeros would look like them.
std::vector<bool> FindChains(const std::vector<char>& bytes, std::uint64_t maxRecordBytes) {
    std::vector<bool> leadsToEnd(bytes.size() + 1);
    leadsToEnd[bytes.size()] = true;
    for (std::size_t at = bytes.size(); at-- > kSequenceBytes;) {
        const std::size_t left = bytes.size() - at;
        if (left <= kRecordLengthBytes) continue;
        const std::uint64_t length = LengthAt(bytes, at);
        if (length == 0 || length > maxRecordBytes || length > left - kRecordLengthBytes) continue;
        leadsToEnd[at] = leadsToEnd[at + kRecordLengthBytes + static_cast<std::size_t>(length)];
    }
    return leadsToEnd;
}

// Flips each bit of the length field at `at` and returns the lowest offset from which complete records lead to the end
// of the file, or 0 if there is none.
std::uint64_t FindChainByBit(const std::vector<char>& bytes, std::uint64_t at,
                             const std::vector<bool>& leadsToEnd) {
    if (at + kRecordLengthBytes > bytes.size()) return 0;
    std::uint64_t first = 0;
    for (unsigned bit = 0; bit < 64; ++bit) {
        const std::uint64_t flipped = LengthAt(bytes, at) ^ std::uint64_t{1} << bit;
        if (flipped >= bytes.size()) continue;
        const std::uint64_t next = at + kRecordLengthBytes + flipped;
        if (next >= bytes.size() || !leadsToEnd[static_cast<std::size_t>(next)]) continue;
        if (first == 0 || next < first) first = next;
    }
    return first;
}

// Tries a single flipped bit in each length that was read, from the last one on: after a wrong length the
// chain soon breaks, and an earlier length can lead to a record by chance.
void FindFlippedBit(const std::vector<char>& bytes, const std::vector<bool>& leadsToEnd,
                    CheckpointScan& scan) {
    std::uint64_t at = scan.intactBytes;
    for (std::size_t record = scan.records.size();; at = scan.records[--record].offset) {
        scan.resyncOffset = FindChainByBit(bytes, at, leadsToEnd);
        if (scan.resyncOffset != 0) {
            scan.damagedLengthAt = at;
            return;
        }
        if (record == 0) return;
    }
}

// Collects the records from the first one that is separated reliably.
void CollectRecordsAfter(const std::vector<char>& bytes, const std::vector<bool>& leadsToEnd,
                         CheckpointScan& scan) {
    // This is the farthest end of a record of another way that begins before the record at hand. A way that
    // jumps over the beginning of that record contradicts it.
    std::uint64_t farthest = 0;
    const auto noteOthers = [&](std::uint64_t from, std::uint64_t to) {
        bool found = false;
        for (std::uint64_t other = from; other < to; ++other) {
            if (!leadsToEnd[static_cast<std::size_t>(other)]) continue;
            farthest = std::max(farthest, NextAfter(bytes, other));
            found = true;
        }
        return found;
    };
    noteOthers(scan.damagedLengthAt != 0 ? scan.damagedLengthAt + 1 : scan.intactBytes + 1,
               scan.resyncOffset);
    std::uint64_t at = scan.resyncOffset;
    while (at < bytes.size()) {
        const std::uint64_t next = NextAfter(bytes, at);
        const bool isContradicted = farthest > at;
        if (!noteOthers(at + 1, next) && !isContradicted) break;
        at = next;
    }
    for (; at < bytes.size(); at = NextAfter(bytes, at)) {
        scan.recordsAfter.push_back(
            MakeScannedRecord(at, LengthAt(bytes, at), bytes.data() + at + kRecordLengthBytes));
    }
}

// Returns where the run of `byte` that begins at `from` ends.
std::uint64_t FindRunEnd(std::FILE* stream, std::uint64_t from, unsigned char byte) {
    char piece[16384];
    if (!platform::MoveStreamTo(stream, from)) return from;
    for (;;) {
        const std::size_t got = std::fread(piece, 1, sizeof piece, stream);
        const auto* const other = std::find_if(
            piece, piece + got, [byte](char c) { return static_cast<unsigned char>(c) != byte; });
        from += static_cast<std::uint64_t>(other - piece);
        if (got == 0 || other != piece + got) return from;
    }
}

// Returns where the run of `byte` that ends at `to` begins, at `floor` at the earliest.
std::uint64_t FindRunBegin(std::FILE* stream, std::uint64_t floor, std::uint64_t to, unsigned char byte) {
    char piece[16384];
    while (to > floor) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(to - floor, sizeof piece));
        if (!platform::MoveStreamTo(stream, to - wanted)) return to;
        if (std::fread(piece, 1, wanted, stream) != wanted) return to;
        for (std::size_t i = wanted; i > 0; --i, --to) {
            if (static_cast<unsigned char>(piece[i - 1]) != byte) return to;
        }
    }
    return to;
}

}  // namespace

ScannedRecord MakeScannedRecord(std::uint64_t offset, std::uint64_t length, const char* body) {
    return {offset, length,
            std::string(body, std::min<std::size_t>(kHeadBytes, static_cast<std::size_t>(length)))};
}

bool HasNoSequence(const CheckpointScan& scan) {
    return scan.fileBytes >= kSequenceBytes && scan.sequence == 0 &&
           (scan.shape == CheckpointShape::kHeaderOnly || scan.shape == CheckpointShape::kRecords);
}

void FindFiller(std::FILE* stream, CheckpointScan& scan) {
    if (scan.emptyLengthAt == 0 && scan.impossibleLengthAt == 0) return;
    if (!platform::MoveStreamTo(stream, scan.intactBytes)) return;
    const int first = std::fgetc(stream);
    if (first == EOF) return;
    const auto byte = static_cast<unsigned char>(first);
    FillerRun run;
    run.byte = byte;
    run.to = FindRunEnd(stream, scan.intactBytes, byte);
    const std::uint64_t runBytes = run.to - scan.intactBytes;
    const bool isLong = runBytes >= kShortestFillerBytes;
    const bool endsFile = run.to == scan.fileBytes && (byte == 0 || runBytes >= kRecordLengthBytes);
    if (!isLong && !endsFile) return;
    const std::uint64_t floor =
        scan.records.empty() ? scan.intactBytes : scan.records.back().offset + kRecordLengthBytes;
    run.from = FindRunBegin(stream, floor, scan.intactBytes, byte);
    if (std::ferror(stream) == 0) scan.filler = run;
}

void FindRecordsAfterDamage(const std::vector<char>& bytes, std::uint64_t maxRecordBytes,
                            CheckpointScan& scan) {
    const std::vector<bool> leadsToEnd = FindChains(bytes, maxRecordBytes);
    // Filler is not a wrong length, so no bit of one is flipped.
    if (!scan.filler) FindFlippedBit(bytes, leadsToEnd, scan);
    for (auto at = scan.intactBytes + 1; scan.resyncOffset == 0 && at < bytes.size(); ++at) {
        if (leadsToEnd[static_cast<std::size_t>(at)]) scan.resyncOffset = at;
    }
    if (scan.resyncOffset == 0) return;
    for (std::uint64_t at = scan.resyncOffset; at < bytes.size(); ++scan.resyncRecords)
        at = NextAfter(bytes, at);
    CollectRecordsAfter(bytes, leadsToEnd, scan);
}

Loss EstimateLoss(const CheckpointScan& scan) {
    Loss loss;
    if (!IsDamaged(scan) || (scan.intactBytes == scan.fileBytes && scan.damagedLengthAt == 0)) return loss;
    loss.from =
        scan.damagedLengthAt != 0 ? std::min(scan.damagedLengthAt, scan.intactBytes) : scan.intactBytes;
    loss.to = scan.recordsAfter.empty() ? scan.fileBytes : scan.recordsAfter.front().offset;
    loss.lastRecordIsDoubtful = scan.filler && scan.filler->from < scan.intactBytes;
    // A record of the queue has at least one byte.
    loss.recordsMax = (loss.to - loss.from) / (kRecordLengthBytes + 1) + (loss.lastRecordIsDoubtful ? 1 : 0);
    std::uint64_t intactRecords = 0;
    for (const ScannedRecord& record : scan.records)
        intactRecords += record.offset < loss.from ? 1 : 0;
    if (intactRecords != 0) {
        const std::uint64_t meanBytes =
            std::max<std::uint64_t>((loss.from - kSequenceBytes) / intactRecords, 1);
        loss.recordsLikely = std::min((loss.to - loss.from + meanBytes / 2) / meanBytes, loss.recordsMax);
    }
    return loss;
}

std::string DescribeLoss(const Loss& loss) {
    if (loss.recordsMax == 0) return "no complete record can have been in these bytes";
    std::string text =
        "at most " + FormatRecords(loss.recordsMax) + (loss.recordsMax == 1 ? " is" : " are") + " lost";
    if (loss.recordsLikely != 0 && loss.recordsLikely != loss.recordsMax) {
        text += " (" + FormatCount(loss.recordsLikely) + " if they were as long as the intact ones)";
    }
    return text;
}

std::string NameFiller(const FillerRun& filler) {
    if (filler.byte == 0) return "zeros";
    char name[16];
    std::snprintf(name, sizeof name, "bytes %02X", static_cast<unsigned>(filler.byte));
    return name;
}

}  // namespace mqam
