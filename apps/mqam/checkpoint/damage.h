// SPDX-License-Identifier: Apache-2.0

// Finds out what can be known about a checkpoint file from the place on where the chain of its lengths
// breaks: what fills the bytes there, where complete records begin again, and how many records are lost at
// most.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "mqam/checkpoint/scan.h"

namespace mqam {

/// Disks and file systems lose whole sectors, whose size is a multiple of this.
inline constexpr std::uint64_t kSectorBytes = 512;

/// Makes the entry of a record whose bytes are at `body`.
[[nodiscard]] ScannedRecord MakeScannedRecord(std::uint64_t offset, std::uint64_t length, const char* body);

/// Returns whether the file has the sequence number 0. No checkpoint has that number, so the header never reached the
/// disk.
[[nodiscard]] bool HasNoSequence(const CheckpointScan& scan);

/// Looks for filler at intactBytes and sets `scan.filler`. Requires records, intactBytes and fileBytes of `scan`. A
/// read error leaves `scan.filler` empty.
void FindFiller(std::FILE* stream, CheckpointScan& scan);

/// Looks for complete records after the place where the chain of lengths breaks, and sets resyncOffset,
/// resyncRecords, recordsAfter and damagedLengthAt of `scan`.
///
/// A place counts if the lengths from there lead exactly to the end of the file, without an empty record. Data can
/// look like that by chance, so there may be several ways to read the same bytes. A record is separated reliably if
/// every way that begins before it comes to its beginning, and none begins inside it; every record after it is too.
///   bytes  the whole file
void FindRecordsAfterDamage(const std::vector<char>& bytes, std::uint64_t maxRecordBytes,
                            CheckpointScan& scan);

/// Describes what a damaged file has lost.
struct Loss {
    std::uint64_t from = 0;  ///< the range of bytes in which records cannot be read
    std::uint64_t to = 0;
    std::uint64_t recordsMax = 0;  ///< the most records that can have been in that range
    std::uint64_t recordsLikely =
        0;  ///< the number if they were as long as the intact ones; 0 if none is intact
    /// The last complete record before the range also ends in the filler, so it may be incomplete.
    bool lastRecordIsDoubtful = false;
};

/// Returns the loss of a damaged file; all members are 0 if only the sequence number is damaged. Records that the file
/// system cut off the end of the file as well cannot be counted.
[[nodiscard]] Loss EstimateLoss(const CheckpointScan& scan);

/// Formats the loss, for example "at most 9 records are lost (4 if they were as long as the intact ones)".
[[nodiscard]] std::string DescribeLoss(const Loss& loss);

/// Names the filler, for example "zeros" or "bytes FF".
[[nodiscard]] std::string NameFiller(const FillerRun& filler);

}  // namespace mqam
