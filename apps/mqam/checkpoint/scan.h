// What stands in a checkpoint file and beside it, read with the module's own reader and told as it is.
// Nothing here changes a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mqam {

/// The largest record that the module's BKSZ allows: the limit to read a file with when its load is unknown.
inline constexpr std::uint64_t kLargestRecordBytes = 16777216;

/// The shapes that a checkpoint file can have; a crash in the middle of a rewrite or of an append explains
/// each of them.
enum class CheckpointShape {
    kMissing,
    kEmpty,       ///< 0 bytes: new, or a rewrite that got no further than truncating
    kTornHeader,  ///< 1 to 3 bytes
    kHeaderOnly,  ///< the sequence number, and no whole record behind it (see intactBytes)
    kRecords,     ///< the sequence number and at least one whole record
    kUnreadable,  ///< there, but it cannot be opened or read to its end: see reason
};

struct ScannedRecord {
    std::uint64_t offset;  ///< of its length field
    std::uint64_t length;  ///< bytes of the record
    std::string head;      ///< its first bytes, at most 32
};

struct CheckpointScan {
    std::string path;  ///< the file that was looked into
    CheckpointShape shape = CheckpointShape::kMissing;
    std::int32_t sequence = 0;  ///< with kHeaderOnly and kRecords
    std::vector<ScannedRecord> records;
    std::uint64_t fileBytes = 0;
    std::uint64_t intactBytes =
        0;  ///< up to the end of the last whole piece; what lies behind is a torn record
    /// The offset of the first length field that no record of the load can have (above the largest record),
    /// or 0 when there is none. What lies behind such a length cannot be told apart.
    std::uint64_t impossibleLengthAt = 0;
    /// What the length field at intactBytes says, when all its 8 bytes are there; else 0.
    std::uint64_t lengthBehindIntact = 0;
    /// Where whole records are found that lead exactly to the end of the file, though none that was read ends
    /// there; 0 when there is no such place. An append that a crash cut short ends the file, so this tells
    /// damage: a record length at or before intactBytes is wrong. Not looked for in files above 64 MiB.
    std::uint64_t resyncOffset = 0;
    std::uint64_t resyncRecords = 0;  ///< how many they are
    /// The record length of which a single bit, turned back, leads to resyncOffset; 0 when there is none.
    std::uint64_t damagedLengthAt = 0;
    std::string reason;  ///< the system's words, with kUnreadable
};

/// Looks into a checkpoint file.
///   maxRecordBytes  the BKSZ of the load; kLargestRecordBytes when it is not known
[[nodiscard]] CheckpointScan ScanCheckpointFile(const std::string& path, std::uint64_t maxRecordBytes);

/// The temporary checkpoint files (MQAMtmp.<process number>) that the module makes for the checkpoint file,
/// as paths, sorted; none when their folder cannot be listed.
[[nodiscard]] std::vector<std::string> FindTemporaryFiles(const std::string& checkpointPath);

/// The facts that decide a start: those of the checkpoint file; of the temporary file that would take its
/// place when the file is missing and exactly one is there.
[[nodiscard]] CheckpointScan ScanForStart(const std::string& checkpointPath,
                                          const std::vector<std::string>& temporaries,
                                          std::uint64_t maxRecordBytes);

/// Whether every whole record of a temporary file stands in the checkpoint file too, in the same order: then
/// it is a copy that a rewrite of this very file was making. False also when either cannot be read, with the
/// system's words in `reason`.
[[nodiscard]] bool IsCopyOfRecords(const CheckpointScan& temporary, const CheckpointScan& file,
                                   std::string& reason);

}  // namespace mqam
