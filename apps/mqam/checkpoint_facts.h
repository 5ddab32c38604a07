// What stands in a checkpoint file and beside it, read with the module's own reader and told as it is.
// Nothing here changes a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The shapes that a checkpoint file can have; a crash in the middle of a rewrite or of an append explains
/// each of them.
enum class CheckpointShape {
    kMissing,
    kEmpty,       ///< 0 bytes: new, or a rewrite that got no further than truncating
    kTornHeader,  ///< 1 to 3 bytes
    kHeaderOnly,  ///< the sequence number, and no whole record behind it (see intactBytes)
    kRecords,     ///< the sequence number and at least one whole record
    kUnreadable,  ///< there, but it cannot be opened or read: see reason
};

struct RecordFact {
    std::uint64_t offset;  ///< of its length field
    std::uint64_t length;  ///< bytes of the record
    std::string head;      ///< its first bytes, at most 32
};

struct CheckpointFacts {
    CheckpointShape shape = CheckpointShape::kMissing;
    std::int32_t sequence = 0;  ///< with kHeaderOnly and kRecords
    std::vector<RecordFact> records;
    std::uint64_t fileBytes = 0;
    std::uint64_t intactBytes =
        0;  ///< up to the end of the last whole piece; what lies behind is a torn record
    /// The first length field that no record of this module can have (above the largest record), or 0 when
    /// there is none. What lies behind such a length cannot be told apart.
    std::uint64_t impossibleLengthAt = 0;
    std::string reason;  ///< the system's words, with kUnreadable
};

/// Looks into a checkpoint file.
///   maxRecordBytes  the BKSZ of the load; 16777216, the module's own limit, when it is not known
[[nodiscard]] CheckpointFacts InspectCheckpointFile(const std::string& path, std::uint64_t maxRecordBytes);

/// The temporary checkpoint files (MQAMtmp.<process number>) in the folder of the checkpoint file, sorted by
/// name.
[[nodiscard]] std::vector<std::string> FindTemporaryFiles(const std::string& checkpointPath);
