// SPDX-License-Identifier: Apache-2.0

// The checkpoint file as a host sees it between two attempts: read without the module, and repaired before
// Open.
#pragma once

#include <string>
#include <vector>

inline constexpr char kCheckpointFile[] = "ck.dat";
inline constexpr char kMessageLog[] = "log.dat";

struct CheckpointLook {
    bool exists = false;
    std::vector<std::string> records;  ///< complete ones
    std::size_t wholeBytes = 0;        ///< up to the end of the last of them
    std::size_t bytes = 0;
};

CheckpointLook LookAtCheckpoint(const std::string& path);

/// Returns the temporary file that a rewrite left, or an empty string.
std::string LeftTemporaryFile();

/// Does what a host does with the files before Open. Returns whether SetPos can be called, because the file
/// holds a complete record.
///   positionStored   in   if false, an orphaned temporary file is only deleted
bool PrepareCheckpoint(bool positionStored);
