// Reading what a checkpoint file holds, piece by piece: header, length, record. The replay, the rewrite in
// the middle of a replay and the inspection of a file all read through these routines, so that they agree on
// what is there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "params/record_buffer.h"

inline constexpr std::size_t kSequenceBytes = 4;

/// How the read of a piece ended, and the bytes that came.
struct PieceRead {
    bool whole;         ///< the whole piece came
    bool atEnd;         ///< it did not, because the file ends
    std::size_t bytes;  ///< how much of the piece came
};

/// Reads the sequence number at the beginning of the file; a piece that is not whole changes its first bytes
/// only. Requires a stream at the beginning of the file.
[[nodiscard]] PieceRead ReadSequence(std::FILE* stream, std::int32_t* sequence);

/// Reads the length of the next record; unchanged but for its first bytes when the piece is not whole.
[[nodiscard]] PieceRead ReadRecordLength(std::FILE* stream, std::uint64_t* length);

/// Reads length bytes of a record.
[[nodiscard]] PieceRead ReadRecordBody(std::FILE* stream, void* record, std::uint64_t length);
