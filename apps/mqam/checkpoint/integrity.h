// SPDX-License-Identifier: Apache-2.0

// Checks to the byte whether a checkpoint file is intact, and says what of that can be known at all.
#pragma once

#include <string>

#include "mqam/checkpoint/scan.h"

namespace mqam {

enum class Integrity {
    kIntact,
    kIncomplete,  ///< as a crash in the middle of a write leaves the file
    kDamaged,     ///< as no crash leaves it
};

/// Returns the verdict on a file, which must be one that could be read.
[[nodiscard]] Integrity CheckIntegrity(const CheckpointScan& scan);

/// Returns the verdict, what each range of bytes is, and what cannot be known, as complete lines.
///   maxRecordBytes  the limit with which the file was scanned
[[nodiscard]] std::string DescribeIntegrity(const CheckpointScan& scan, std::uint64_t maxRecordBytes);

}  // namespace mqam
