// SPDX-License-Identifier: Apache-2.0

// Reads what a checkpoint file and its neighbours contain, with the module's own reader. Nothing here changes
// a file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mqam {

/// This is the largest record that the module's BKSZ allows, the limit for a file whose load is unknown.
inline constexpr std::uint64_t kLargestRecordBytes = 16777216;

/// Records after a break in the chain of lengths are searched for only in files up to this size.
inline constexpr std::uint64_t kSearchedBytes = std::uint64_t{64} << 20;

/// The shapes that a checkpoint file can have. A crash in the middle of a rewrite or of an append explains each of
/// them.
enum class CheckpointShape {
    kMissing,
    kEmpty,       ///< 0 bytes: a new file, or one that a rewrite has only truncated
    kTornHeader,  ///< 1 to 3 bytes
    kHeaderOnly,  ///< the sequence number, and no complete record after it (see intactBytes)
    kRecords,     ///< the sequence number and at least one complete record
    kUnreadable,  ///< the file exists but cannot be opened, or not read to its end: see error
};

struct ScannedRecord {
    std::uint64_t offset;  ///< where its length field begins
    std::uint64_t length;  ///< bytes of the record
    std::string head;      ///< its first bytes, at most 32
};

/// One byte is repeated where a record length should be. The module never writes that: a file system shows it
/// where data never reached the disk, above all zeros after a power failure.
struct FillerRun {
    unsigned char byte = 0;
    /// The offset at which the run begins. If it is before intactBytes, the last complete record ends in the
    /// same byte: these bytes can be its own, or the record is incomplete.
    std::uint64_t from = 0;
    std::uint64_t to = 0;  ///< where it ends
};

struct CheckpointScan {
    std::string path;  ///< the file that was read
    CheckpointShape shape = CheckpointShape::kMissing;
    std::int32_t sequence = 0;  ///< with kHeaderOnly and kRecords
    std::vector<ScannedRecord> records;
    std::uint64_t fileBytes = 0;
    /// The offset at which the last complete piece ends. A torn record, or damage, follows.
    std::uint64_t intactBytes = 0;
    /// The offset of the first length field that no record of the load can have (above the largest record), or 0 if
    /// there is none. Nothing can be known about the bytes after such a length.
    std::uint64_t impossibleLengthAt = 0;
    /// The offset of the first length field of 0 after the first record, or 0 if there is none. The module never appends
    /// an empty record; a rewrite during a replay can put one, and only as the first record. Such a length counts as
    /// damage, and so do zeros at the end of the file if no length can begin with as many of them.
    std::uint64_t emptyLengthAt = 0;
    /// The value of the length field at intactBytes if all of its 8 bytes are there, otherwise 0.
    std::uint64_t lengthAfterIntact = 0;
    /// The filler at intactBytes, if there is one. A short run counts only if it leads to the end of the file.
    std::optional<FillerRun> filler;
    /// The lowest offset after the torn or damaged piece from which complete records lead exactly to the end
    /// of the file, or 0 if there is none. An append that a crash cut short ends the file, so such records
    /// prove damage: a record length at or before intactBytes is wrong. Files above kSearchedBytes are not
    /// searched.
    std::uint64_t resyncOffset = 0;
    std::uint64_t resyncRecords = 0;  ///< how many records those are
    /// Those of them that can be separated reliably. If there is more than one way to read the bytes
    /// after the damage, the first record here is one at which all ways meet and inside which none begins.
    std::vector<ScannedRecord> recordsAfter;
    /// The offset of the length field in which flipping a single bit leads to resyncOffset, or 0 if there is none.
    std::uint64_t damagedLengthAt = 0;
    std::string error;  ///< with kUnreadable: the system's message
};

/// Returns whether the file is damaged in a way that no crash of the module explains.
[[nodiscard]] bool IsDamaged(const CheckpointScan& scan);

/// Scans a checkpoint file.
///   maxRecordBytes  the BKSZ of the load; kLargestRecordBytes if it is not known
[[nodiscard]] CheckpointScan ScanCheckpointFile(const std::string& path, std::uint64_t maxRecordBytes);

/// Returns the paths of the temporary checkpoint files (MQAMtmp.<process number>) that the module makes for the
/// checkpoint file, sorted; none if their directory cannot be listed.
[[nodiscard]] std::vector<std::string> FindTemporaryFiles(const std::string& checkpointPath);

/// Scans the file that decides how a load starts: the checkpoint file, or the temporary file that would replace it
/// if the checkpoint file is missing and there is exactly one temporary file.
[[nodiscard]] CheckpointScan ScanForStart(const std::string& checkpointPath,
                                          const std::vector<std::string>& temporaries,
                                          std::uint64_t maxRecordBytes);

/// Returns whether every complete record of a temporary file is also in the checkpoint file, in the same
/// order. It is then a copy that a rewrite of this very file was making. Returns false with an error message
/// if either file cannot be read, and with an empty one if it is no copy.
[[nodiscard]] bool IsCopyOfRecords(const CheckpointScan& temporary, const CheckpointScan& file,
                                   std::string& error);

}  // namespace mqam
