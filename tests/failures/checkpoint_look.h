// SPDX-License-Identifier: Apache-2.0

// Reads the checkpoint file without the module, as a host does between two attempts, and repairs it before
// Open.
#pragma once

#include <string>
#include <vector>

inline constexpr char kCheckpointFile[] = "ck.dat";
inline constexpr char kMessageLog[] = "log.dat";

struct CheckpointLook {
    bool exists = false;
    std::vector<std::string> records;  ///< the complete records
    std::size_t wholeBytes = 0;        ///< bytes up to the end of the last complete record
    std::size_t bytes = 0;
};

CheckpointLook LookAtCheckpoint(const std::string& path);

/// Returns the temporary file that a rewrite left, or an empty string.
std::string LeftTemporaryFile();

/// Does what a host does with the files before Open. Returns whether SetPos can be called, because the file
/// contains a complete record.
///   positionStored   in   if false, an orphaned temporary file is only deleted
bool PrepareCheckpoint(bool positionStored);
