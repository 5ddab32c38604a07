// A checkpoint file as `mqam checkpoint show` prints it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mqam/checkpoint/scan.h"
#include "mqamod.h"

namespace mqam {

/// Which records to list: so many from the beginning and so many from the end.
struct ListedRecords {
    std::size_t first = 10;
    std::size_t last = 10;
};

/// "load.ckpt: 25 bytes, checkpoint 5, 2 records (5 bytes of data)", with what is torn or damaged.
[[nodiscard]] std::string SummarizeScan(const CheckpointScan& facts);

/// The records, a line each: offset, length, the first bytes in hexadecimal and as text. One line stands for
/// those left out.
[[nodiscard]] std::string ListRecords(const CheckpointScan& facts, const ListedRecords& listed);

/// What a restart would do with the files as they are: whole lines.
///   stored          the position of the load's last checkpoint; none when it has not stored one yet
///   maxRecordBytes  the BKSZ of the load
///   isRefused       out  whether it would refuse to go on
[[nodiscard]] std::string DescribeRestart(const std::string& checkpointPath,
                                          const std::optional<PositionData>& stored,
                                          std::uint64_t maxRecordBytes, bool& isRefused);

}  // namespace mqam
