// Whether a checkpoint file is intact, to the byte, and what about that can be known at all.
#pragma once

#include <string>

#include "mqam/checkpoint/scan.h"

namespace mqam {

enum class Integrity {
    kIntact,
    kIncomplete,  ///< as a crash in the middle of a write leaves it
    kDamaged,     ///< as no crash leaves it
};

/// Requires a file that could be read.
[[nodiscard]] Integrity CheckIntegrity(const CheckpointScan& facts);

/// The verdict, what each range of bytes is, and what cannot be known: whole lines.
///   maxRecordBytes  the limit with which the file was looked into
[[nodiscard]] std::string DescribeIntegrity(const CheckpointScan& facts, std::uint64_t maxRecordBytes);

}  // namespace mqam
