#include "mqam/checkpoint/scan.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "platform/disk_changes.h"
#include "platform/platform.h"
#include "recovery/checkpoint_records.h"

namespace mqam {

namespace {

constexpr std::size_t kHeadBytes = 32;
constexpr std::size_t kSearchedBytes = std::size_t{64} << 20;

struct CloseStream {
    void operator()(std::FILE* stream) const { (void)std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

std::uint64_t LengthAt(const std::vector<char>& bytes, std::uint64_t at) {
    std::uint64_t length = 0;
    std::memcpy(&length, bytes.data() + at, sizeof length);
    return length;
}

// The places from which whole records lead exactly to the end. Records of length 0 are no evidence: a run of
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

// Tries each bit of the length at an offset: the first place, of those it then leads to, where a chain of one
// record at least begins; 0 when there is none.
std::uint64_t FindChainByBit(const std::vector<char>& bytes, std::uint64_t at,
                             const std::vector<bool>& leadsToEnd) {
    if (at + kRecordLengthBytes > bytes.size()) return 0;
    std::uint64_t first = 0;
    for (unsigned bit = 0; bit < 64; ++bit) {
        const std::uint64_t turned = LengthAt(bytes, at) ^ std::uint64_t{1} << bit;
        if (turned >= bytes.size()) continue;
        const std::uint64_t next = at + kRecordLengthBytes + turned;
        if (next >= bytes.size() || !leadsToEnd[static_cast<std::size_t>(next)]) continue;
        if (first == 0 || next < first) first = next;
    }
    return first;
}

void FindRecordsAgain(const std::vector<char>& bytes, std::uint64_t maxRecordBytes, CheckpointScan& facts) {
    const std::vector<bool> leadsToEnd = FindChains(bytes, maxRecordBytes);
    std::vector<std::uint64_t> lengthsRead;
    lengthsRead.reserve(facts.records.size() + 1);
    for (const ScannedRecord& record : facts.records)
        lengthsRead.push_back(record.offset);
    lengthsRead.push_back(facts.intactBytes);
    for (const std::uint64_t at : lengthsRead) {
        facts.resyncOffset = FindChainByBit(bytes, at, leadsToEnd);
        if (facts.resyncOffset == 0) continue;
        facts.damagedLengthAt = at;
        break;
    }
    for (auto at = facts.intactBytes + 1; facts.resyncOffset == 0 && at < bytes.size(); ++at) {
        if (leadsToEnd[static_cast<std::size_t>(at)]) facts.resyncOffset = at;
    }
    if (facts.resyncOffset == 0) return;
    for (std::uint64_t at = facts.resyncOffset; at < bytes.size(); ++facts.resyncRecords)
        at += kRecordLengthBytes + LengthAt(bytes, at);
}

// Takes in what lies behind the whole records, of which `tailBytes` have been read.
void InspectTail(std::FILE* stream, std::uint64_t tailBytes, std::uint64_t maxRecordBytes,
                 CheckpointScan& facts) {
    facts.fileBytes = facts.intactBytes + tailBytes;
    std::vector<char> bytes(65536);
    while (const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), stream))
        facts.fileBytes += got;
    if (std::ferror(stream) != 0 || facts.fileBytes == facts.intactBytes || facts.fileBytes > kSearchedBytes)
        return;
    bytes.resize(static_cast<std::size_t>(facts.fileBytes));
    std::rewind(stream);
    if (std::fread(bytes.data(), 1, bytes.size(), stream) == bytes.size())
        FindRecordsAgain(bytes, maxRecordBytes, facts);
}

// Reads record by record until one is not whole. Returns the bytes that came of that one.
std::uint64_t InspectRecords(std::FILE* stream, std::uint64_t maxRecordBytes, CheckpointScan& facts) {
    std::vector<char> body;
    for (;;) {
        std::uint64_t length = 0;
        const PieceRead lengthRead = ReadRecordLength(stream, &length);
        if (!lengthRead.whole) return lengthRead.bytes;
        facts.lengthBehindIntact = length;
        if (length > maxRecordBytes) {
            facts.impossibleLengthAt = facts.intactBytes;
            return kRecordLengthBytes;
        }
        if (body.size() < length) body.resize(static_cast<std::size_t>(length));
        const PieceRead bodyRead = ReadRecordBody(stream, body.data(), length);
        if (!bodyRead.whole) return kRecordLengthBytes + bodyRead.bytes;
        const auto headBytes = std::min<std::size_t>(kHeadBytes, static_cast<std::size_t>(length));
        facts.records.push_back({facts.intactBytes, length, std::string(body.data(), headBytes)});
        facts.intactBytes += kRecordLengthBytes + length;
        facts.lengthBehindIntact = 0;
    }
}

void InspectStream(std::FILE* stream, std::uint64_t maxRecordBytes, CheckpointScan& facts) {
    const PieceRead header = ReadSequence(stream, &facts.sequence);
    if (!header.whole) {
        facts.sequence = 0;
        facts.fileBytes = header.bytes;
        facts.shape = header.bytes == 0 ? CheckpointShape::kEmpty : CheckpointShape::kTornHeader;
        return;
    }
    facts.intactBytes = kSequenceBytes;
    const std::uint64_t tailBytes = InspectRecords(stream, maxRecordBytes, facts);
    InspectTail(stream, tailBytes, maxRecordBytes, facts);
    facts.shape = facts.records.empty() ? CheckpointShape::kHeaderOnly : CheckpointShape::kRecords;
}

Stream OpenForReading(const std::string& path) {
    return Stream(std::fopen(path.c_str(), "rb"));
}

bool FailCompare(const std::string& path, std::string& reason) {
    reason = path + ": " + std::strerror(errno);
    return false;
}

// Compares `bytes` bytes at two offsets.
bool SameBytes(std::FILE* left, std::uint64_t leftAt, std::FILE* right, std::uint64_t rightAt,
               std::uint64_t bytes) {
    if (!platform::MoveStreamTo(left, leftAt) || !platform::MoveStreamTo(right, rightAt)) return false;
    char leftPiece[16384];
    char rightPiece[16384];
    while (bytes > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, sizeof leftPiece));
        if (std::fread(leftPiece, 1, wanted, left) != wanted) return false;
        if (std::fread(rightPiece, 1, wanted, right) != wanted) return false;
        if (std::memcmp(leftPiece, rightPiece, wanted) != 0) return false;
        bytes -= wanted;
    }
    return true;
}

}  // namespace

CheckpointScan ScanCheckpointFile(const std::string& path, std::uint64_t maxRecordBytes) {
    CheckpointScan facts;
    facts.path = path;
    // A pipe would be waited for.
    if (platform::ProbePath(path) == platform::PathKind::kOther) {
        facts.shape = CheckpointShape::kUnreadable;
        facts.reason = "not a file";
        return facts;
    }
    const Stream stream = OpenForReading(path);
    if (stream == nullptr) {
        // The module, too, takes this one reason alone for a file that is not there.
        if (errno == ENOENT) return facts;
        facts.reason = std::strerror(errno);
        facts.shape = CheckpointShape::kUnreadable;
        return facts;
    }
    errno = 0;
    InspectStream(stream.get(), maxRecordBytes, facts);
    if (std::ferror(stream.get()) != 0) {
        facts.reason = std::strerror(errno != 0 ? errno : EIO);
        facts.shape = CheckpointShape::kUnreadable;
    }
    return facts;
}

std::vector<std::string> FindTemporaryFiles(const std::string& checkpointPath) {
    constexpr char kPrefix[] = "MQAMtmp.";
    constexpr std::size_t kPrefixBytes = sizeof kPrefix - 1;
    std::vector<std::string> paths;
    for (const std::string& folder : platform::TemporaryDirectories(checkpointPath)) {
        for (const std::string& name : platform::ListDirectory(folder)) {
            if (name.compare(0, kPrefixBytes, kPrefix) != 0 || name.size() == kPrefixBytes) continue;
            if (name.find_first_not_of("0123456789", kPrefixBytes) != std::string::npos) continue;
            paths.push_back(folder + name);
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

CheckpointScan ScanForStart(const std::string& checkpointPath, const std::vector<std::string>& temporaries,
                            std::uint64_t maxRecordBytes) {
    CheckpointScan facts = ScanCheckpointFile(checkpointPath, maxRecordBytes);
    if (facts.shape != CheckpointShape::kMissing || temporaries.size() != 1) return facts;
    return ScanCheckpointFile(temporaries.front(), maxRecordBytes);
}

bool IsCopyOfRecords(const CheckpointScan& temporary, const CheckpointScan& file, std::string& reason) {
    reason.clear();
    // The record that a rewrite puts in front is empty when none had been returned: nothing to look for.
    const bool emptyInFront = !temporary.records.empty() && temporary.records.front().length == 0;
    const std::size_t first = emptyInFront ? 1 : 0;
    if (temporary.records.size() <= first) return temporary.shape != CheckpointShape::kUnreadable;
    const Stream copy = OpenForReading(temporary.path);
    if (copy == nullptr) return FailCompare(temporary.path, reason);
    const Stream original = OpenForReading(file.path);
    if (original == nullptr) return FailCompare(file.path, reason);

    const ScannedRecord& wanted = temporary.records[first];
    const std::uint64_t bytes = temporary.intactBytes - wanted.offset;
    for (const ScannedRecord& record : file.records) {
        if (record.length != wanted.length || record.head != wanted.head) continue;
        if (file.intactBytes - record.offset < bytes) break;
        if (SameBytes(copy.get(), wanted.offset, original.get(), record.offset, bytes)) return true;
    }
    return false;
}

}  // namespace mqam
