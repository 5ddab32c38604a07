// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/scan.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "mqam/checkpoint/damage.h"
#include "platform/directory.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/stream.h"
#include "recovery/checkpoint_records.h"

namespace mqam {

namespace {

using mqamod::kRecordLengthBytes;
using mqamod::kSequenceBytes;
using mqamod::PieceRead;
using mqamod::ReadRecordBody;
using mqamod::ReadRecordLength;
using mqamod::ReadSequence;

using platform::Stream;

// Scans what comes after the complete records; `tailBytes` of it have been read already.
void ScanTail(std::FILE* stream, std::uint64_t tailBytes, std::uint64_t maxRecordBytes,
              CheckpointScan& scan) {
    scan.fileBytes = scan.intactBytes + tailBytes;
    std::vector<char> bytes(65536);
    while (const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), stream))
        scan.fileBytes += got;
    if (std::ferror(stream) != 0 || scan.fileBytes == scan.intactBytes) return;
    FindFiller(stream, scan);
    if (scan.fileBytes > kSearchedBytes) return;
    bytes.resize(static_cast<std::size_t>(scan.fileBytes));
    std::rewind(stream);
    if (std::fread(bytes.data(), 1, bytes.size(), stream) == bytes.size())
        FindRecordsAfterDamage(bytes, maxRecordBytes, scan);
}

// Returns whether a length of at least 1 can begin with `bytes` bytes of 0.
bool CanBePossibleLength(std::size_t bytes, std::uint64_t maxRecordBytes) {
    return bytes < kRecordLengthBytes && std::uint64_t{1} << (8 * bytes) <= maxRecordBytes;
}

// Reads records until one is incomplete or has a length that no record can have. Returns how many bytes of that one were read.
std::uint64_t ScanRecords(std::FILE* stream, std::uint64_t maxRecordBytes, CheckpointScan& scan) {
    std::vector<char> body;
    for (;;) {
        std::uint64_t length = 0;
        const PieceRead lengthRead = ReadRecordLength(stream, length);
        if (length == 0 && scan.intactBytes != kSequenceBytes &&
            !CanBePossibleLength(lengthRead.bytes, maxRecordBytes)) {
            scan.emptyLengthAt = scan.intactBytes;
            return lengthRead.bytes;
        }
        if (!lengthRead.complete) return lengthRead.bytes;
        scan.lengthAfterIntact = length;
        if (length > maxRecordBytes) {
            scan.impossibleLengthAt = scan.intactBytes;
            return kRecordLengthBytes;
        }
        if (body.size() < length) body.resize(static_cast<std::size_t>(length));
        const PieceRead bodyRead = ReadRecordBody(stream, body.data(), length);
        if (!bodyRead.complete) return kRecordLengthBytes + bodyRead.bytes;
        scan.records.push_back(MakeScannedRecord(scan.intactBytes, length, body.data()));
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

bool IsDamaged(const CheckpointScan& scan) {
    return scan.impossibleLengthAt != 0 || scan.emptyLengthAt != 0 || scan.resyncOffset != 0 ||
           HasNoSequence(scan);
}

CheckpointScan ScanCheckpointFile(const std::string& path, std::uint64_t maxRecordBytes) {
    CheckpointScan scan;
    scan.path = path;
    // Opening a pipe would wait for someone to write to it.
    if (platform::ProbePath(path) == platform::PathKind::kOther) {
        scan.shape = CheckpointShape::kUnreadable;
        scan.error = "not a file";
        return scan;
    }
    const Stream stream = OpenForReading(path);
    if (stream == nullptr) {
        // Only this error counts as a missing file, as it does in the module.
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
    // If no record had been returned yet, the record that a rewrite puts first is empty and has no original.
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
