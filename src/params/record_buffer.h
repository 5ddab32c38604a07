// The last-record buffer, CkPtRecBuf: an 8-byte length and the bytes of the last record returned to the host,
// laid out as a record of the checkpoint file. It exists from an Init that asked for checkpointing until
// Shut; it stands with the parameters because Init makes it as soon as BKSZ is final.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr std::size_t kRecordLengthBytes = 8;

/// Allocates the buffer for records of up to recordBytes and sets its length to 0. Frees an earlier one.
/// Returns false, without a buffer, when memory runs out.
[[nodiscard]] bool AllocateRecordBuffer(std::size_t recordBytes);

/// Frees the buffer, if there is one.
void FreeRecordBuffer();

/// Whether there is a buffer. The routines below require it.
[[nodiscard]] bool RecordBufferExists();

/// Fills the whole buffer with zeros: no record.
void ClearRecordBuffer();

/// Makes the record the buffer's.
///   length  in  bytes, at most the recordBytes of AllocateRecordBuffer
void KeepRecord(const void* record, std::uint32_t length);

/// The length of the record kept.
[[nodiscard]] std::uint64_t KeptRecordLength();

/// The length word with the record's bytes behind it: KeptRecordLength() + kRecordLengthBytes bytes to write
/// to the file.
[[nodiscard]] const void* KeptRecordImage();

/// Whether the record equals the first length bytes behind the length word. When the kept record is shorter,
/// bytes of earlier records take part in the comparison, as they always have.
///   length  in  bytes, at most the recordBytes of AllocateRecordBuffer
[[nodiscard]] bool EqualsKeptRecord(const void* record, std::uint32_t length);
