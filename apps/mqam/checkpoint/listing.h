// SPDX-License-Identifier: Apache-2.0

// Prints a checkpoint file as `mqam checkpoint show` does.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "mqam/checkpoint/scan.h"
#include "mqamod.h"

namespace mqam {

/// Says how many records to list from the beginning, and how many from the end.
struct ListedRecords {
    std::size_t first = 10;
    std::size_t last = 10;
};

/// Describes the file, for example "load.ckpt: 25 bytes, checkpoint 5, 2 records (5 bytes of data)", and what
/// is torn or damaged.
[[nodiscard]] std::string SummarizeScan(const CheckpointScan& scan);

/// Lists the records, a line each: offset, length, the first bytes in hexadecimal and as text. One line takes
/// the place of the records that are not listed.
[[nodiscard]] std::string ListRecords(const CheckpointScan& scan, const ListedRecords& listed);

/// Describes what a restart would do with the files as they are, in complete lines.
///   stored          the position of the load's last checkpoint; none if it has not stored one yet
///   maxRecordBytes  the BKSZ of the load
///   isRefused       out  whether the restart would be refused
[[nodiscard]] std::string DescribeRestart(const std::string& checkpointPath,
                                          const std::optional<PositionData>& stored,
                                          std::uint64_t maxRecordBytes, bool& isRefused);

}  // namespace mqam
