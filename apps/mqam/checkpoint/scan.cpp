// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/scan.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "platform/directory.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "recovery/checkpoint_records.h"

namespace mqam {

namespace {

using mqamod::kRecordLengthBytes;
using mqamod::kSequenceBytes;
using mqamod::PieceRead;
using mqamod::ReadRecordBody;
using mqamod::ReadRecordLength;
using mqamod::ReadSequence;

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

void FindResyncOffset(const std::vector<char>& bytes, std::uint64_t maxRecordBytes, CheckpointScan& scan) {
    const std::vector<bool> leadsToEnd = FindChains(bytes, maxRecordBytes);
    std::vector<std::uint64_t> lengthsRead;
    lengthsRead.reserve(scan.records.size() + 1);
    for (const ScannedRecord& record : scan.records)
        lengthsRead.push_back(record.offset);
    lengthsRead.push_back(scan.intactBytes);
    for (const std::uint64_t at : lengthsRead) {
        scan.resyncOffset = FindChainByBit(bytes, at, leadsToEnd);
        if (scan.resyncOffset == 0) continue;
        scan.damagedLengthAt = at;
        break;
    }
    for (auto at = scan.intactBytes + 1; scan.resyncOffset == 0 && at < bytes.size(); ++at) {
        if (leadsToEnd[static_cast<std::size_t>(at)]) scan.resyncOffset = at;
    }
    if (scan.resyncOffset == 0) return;
    for (std::uint64_t at = scan.resyncOffset; at < bytes.size(); ++scan.resyncRecords)
        at += kRecordLengthBytes + LengthAt(bytes, at);
}

// Scans what comes after the complete records; `tailBytes` of it have been read already.
void ScanTail(std::FILE* stream, std::uint64_t tailBytes, std::uint64_t maxRecordBytes,
              CheckpointScan& scan) {
    scan.fileBytes = scan.intactBytes + tailBytes;
    std::vector<char> bytes(65536);
    while (const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), stream))
        scan.fileBytes += got;
    if (std::ferror(stream) != 0 || scan.fileBytes == scan.intactBytes || scan.fileBytes > kSearchedBytes)
        return;
    bytes.resize(static_cast<std::size_t>(scan.fileBytes));
    std::rewind(stream);
    if (std::fread(bytes.data(), 1, bytes.size(), stream) == bytes.size())
        FindResyncOffset(bytes, maxRecordBytes, scan);
}

// Reads records until one is incomplete or has an impossible length. Returns how many bytes of that one were read.
std::uint64_t ScanRecords(std::FILE* stream, std::uint64_t maxRecordBytes, CheckpointScan& scan) {
    std::vector<char> body;
    for (;;) {
        std::uint64_t length = 0;
        const PieceRead lengthRead = ReadRecordLength(stream, length);
        if (!lengthRead.complete) return lengthRead.bytes;
        scan.lengthAfterIntact = length;
        if (length > maxRecordBytes) {
            scan.impossibleLengthAt = scan.intactBytes;
            return kRecordLengthBytes;
        }
        if (body.size() < length) body.resize(static_cast<std::size_t>(length));
        const PieceRead bodyRead = ReadRecordBody(stream, body.data(), length);
        if (!bodyRead.complete) return kRecordLengthBytes + bodyRead.bytes;
        const auto headBytes = std::min<std::size_t>(kHeadBytes, static_cast<std::size_t>(length));
        scan.records.push_back({scan.intactBytes, length, std::string(body.data(), headBytes)});
        scan.intactBytes += kRecordLengthBytes + length;
        scan.lengthAfterIntact = 0;
    }
}

void ScanStream(std::FILE* stream, std::uint64_t maxRecordBytes, CheckpointScan& scan) {
    const PieceRead header = ReadSequence(stream, scan.sequence);
    if (!header.complete) {
        scan.sequence = 0;
        scan.fileBytes = header.bytes;
        scan.shape = header.bytes == 0 ? CheckpointShape::kEmpty : CheckpointShape::kTornHeader;
        return;
    }
    scan.intactBytes = kSequenceBytes;
    const std::uint64_t tailBytes = ScanRecords(stream, maxRecordBytes, scan);
    ScanTail(stream, tailBytes, maxRecordBytes, scan);
    scan.shape = scan.records.empty() ? CheckpointShape::kHeaderOnly : CheckpointShape::kRecords;
}

Stream OpenForReading(const std::string& path) {
    return Stream(std::fopen(path.c_str(), "rb"));
}

bool FailCompare(const std::string& path, std::string& error) {
    error = path + ": " + std::strerror(errno);
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
    CheckpointScan scan;
    scan.path = path;
    // Opening a pipe would wait for a writer.
    if (platform::ProbePath(path) == platform::PathKind::kOther) {
        scan.shape = CheckpointShape::kUnreadable;
        scan.error = "not a file";
        return scan;
    }
    const Stream stream = OpenForReading(path);
    if (stream == nullptr) {
        // Like the module, only this error counts as a missing file.
        if (errno == ENOENT) return scan;
        scan.error = std::strerror(errno);
        scan.shape = CheckpointShape::kUnreadable;
        return scan;
    }
    errno = 0;
    ScanStream(stream.get(), maxRecordBytes, scan);
    if (std::ferror(stream.get()) != 0) {
        scan.error = std::strerror(errno != 0 ? errno : EIO);
        scan.shape = CheckpointShape::kUnreadable;
    }
    return scan;
}

std::vector<std::string> FindTemporaryFiles(const std::string& checkpointPath) {
    constexpr char kPrefix[] = "MQAMtmp.";
    constexpr std::size_t kPrefixBytes = sizeof kPrefix - 1;
    std::vector<std::string> paths;
    std::vector<platform::DirectoryEntry> entries;
    for (const std::string& directory : platform::TemporaryDirectories(checkpointPath)) {
        // A directory that cannot be listed has no entries.
        static_cast<void>(platform::ListDirectory(directory, entries));
        for (const platform::DirectoryEntry& entry : entries) {
            const std::string& name = entry.name;
            if (name.compare(0, kPrefixBytes, kPrefix) != 0 || name.size() == kPrefixBytes) continue;
            if (name.find_first_not_of("0123456789", kPrefixBytes) != std::string::npos) continue;
            paths.push_back(directory + name);
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

CheckpointScan ScanForStart(const std::string& checkpointPath, const std::vector<std::string>& temporaries,
                            std::uint64_t maxRecordBytes) {
    CheckpointScan scan = ScanCheckpointFile(checkpointPath, maxRecordBytes);
    if (scan.shape != CheckpointShape::kMissing || temporaries.size() != 1) return scan;
    return ScanCheckpointFile(temporaries.front(), maxRecordBytes);
}

bool IsCopyOfRecords(const CheckpointScan& temporary, const CheckpointScan& file, std::string& error) {
    error.clear();
    // The record that a rewrite puts first is empty if no record had been returned yet; it has no original.
    const bool emptyInFront = !temporary.records.empty() && temporary.records.front().length == 0;
    const std::size_t first = emptyInFront ? 1 : 0;
    if (temporary.records.size() <= first) return temporary.shape != CheckpointShape::kUnreadable;
    const Stream copy = OpenForReading(temporary.path);
    if (copy == nullptr) return FailCompare(temporary.path, error);
    const Stream original = OpenForReading(file.path);
    if (original == nullptr) return FailCompare(file.path, error);

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
