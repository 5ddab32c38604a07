// SPDX-License-Identifier: Apache-2.0

// What a checkpoint file and its neighbours contain, read with the module's own reader. Nothing here changes a
// file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mqam {

/// The largest record that the module's BKSZ allows: the limit for reading a file whose load is unknown.
inline constexpr std::uint64_t kLargestRecordBytes = 16777216;

/// The shapes that a checkpoint file can have. A crash in the middle of a rewrite or of an append explains each of
/// them.
enum class CheckpointShape {
    kMissing,
    kEmpty,       ///< 0 bytes: a new file, or a rewrite that got no further than truncating it
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

struct CheckpointScan {
    std::string path;  ///< the file that was read
    CheckpointShape shape = CheckpointShape::kMissing;
    std::int32_t sequence = 0;  ///< with kHeaderOnly and kRecords
    std::vector<ScannedRecord> records;
    std::uint64_t fileBytes = 0;
    /// Where the last complete piece ends; what follows is a torn record, or damage.
    std::uint64_t intactBytes = 0;
    /// The offset of the first length field that no record of the load can have (above the largest record), or 0 if
    /// there is none. Nothing can be known about the bytes after such a length.
    std::uint64_t impossibleLengthAt = 0;
    /// The value of the length field at intactBytes if all of its 8 bytes are there, else 0.
    std::uint64_t lengthAfterIntact = 0;
    /// The lowest offset after the torn or damaged piece from which complete records lead exactly to the end of the
    /// file, or 0 if there is none. An append that a crash cut short ends the file, so such records prove damage: a
    /// record length at or before intactBytes is wrong. Not searched for in files above 64 MiB.
    std::uint64_t resyncOffset = 0;
    std::uint64_t resyncRecords = 0;  ///< how many records those are
    /// The offset of the length field in which flipping a single bit leads to resyncOffset, or 0 if there is none.
    std::uint64_t damagedLengthAt = 0;
    std::string error;  ///< with kUnreadable: the system's message
};

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

/// Returns whether every complete record of a temporary file is in the checkpoint file too, in the same order: then it
/// is a copy that a rewrite of this very file was making. Returns false with an error message if either file cannot
/// be read, and with an empty one if it is no copy.
[[nodiscard]] bool IsCopyOfRecords(const CheckpointScan& temporary, const CheckpointScan& file,
                                   std::string& error);

}  // namespace mqam
