// SPDX-License-Identifier: Apache-2.0

// Owns the last-record buffer, CkPtRecBuf: an 8-byte length word, followed by the bytes of the record that
// was returned to the host last. This is also the layout of a record in the checkpoint file. Init allocates
// the buffer once BKSZ is final, if checkpoints are asked for, and Shut frees it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mqamod {

inline constexpr std::size_t kRecordLengthBytes = 8;

/// Allocates the buffer for records of at most recordBytes, and frees an earlier one. The new buffer is
/// filled with zeros. Returns false, without a buffer, if memory runs out.
[[nodiscard]] bool AllocateRecordBuffer(std::size_t recordBytes);

/// Frees the buffer, if there is one.
void FreeRecordBuffer();

/// Returns whether there is a buffer. The routines below require a buffer.
[[nodiscard]] bool RecordBufferExists();

/// Fills the whole buffer with zeros. A buffer of zeros means that no record has been returned yet.
void ClearRecordBuffer();

/// Copies a record into the buffer.
///   length  in  bytes, at most the recordBytes of AllocateRecordBuffer
void KeepRecord(const void* record, std::uint32_t length);

/// Returns the length of the record in the buffer.
[[nodiscard]] std::uint64_t KeptRecordLength();

/// Returns the record as the checkpoint file stores it, with its length word: KeptRecordLength() +
/// kRecordLengthBytes bytes.
[[nodiscard]] const void* KeptRecordImage();

/// Returns whether the record equals the first length bytes after the length word. If the record in the
/// buffer is shorter, the comparison includes bytes of earlier records; hosts depend on that.
///   length  in  bytes, at most the recordBytes of AllocateRecordBuffer
[[nodiscard]] bool EqualsKeptRecord(const void* record, std::uint32_t length);

}  // namespace mqamod
