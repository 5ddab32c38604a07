// SPDX-License-Identifier: Apache-2.0

// Reads a checkpoint file piece by piece: header, length, record. The replay, the rewrite during a replay and
// the programs that inspect a file all use these routines, so that they agree on what a file contains.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "params/record_buffer.h"

namespace mqamod {

inline constexpr std::size_t kSequenceBytes = 4;

/// Says how the read of a piece ended.
struct PieceRead {
    bool complete;      ///< all bytes of the piece were read
    bool atEnd;         ///< the piece is incomplete because the file ends
    std::size_t bytes;  ///< number of bytes that were read
};

/// Reads the sequence number. An incomplete piece changes only the first bytes of `sequence`. Requires a
/// stream at the beginning of the file.
[[nodiscard]] PieceRead ReadSequence(std::FILE* stream, std::int32_t& sequence);

/// Reads the length of the next record. An incomplete piece changes only the first bytes of `length`.
[[nodiscard]] PieceRead ReadRecordLength(std::FILE* stream, std::uint64_t& length);

/// Reads `length` bytes of a record.
[[nodiscard]] PieceRead ReadRecordBody(std::FILE* stream, void* record, std::uint64_t length);

}  // namespace mqamod
