// SPDX-License-Identifier: Apache-2.0

// Shows what the files of a load contain, derived from their bytes and independently of the module.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

inline constexpr char kCheckpointFile[] = "ck.dat";
inline constexpr char kTemporaryPrefix[] = "MQAMtmp.";
inline constexpr char kMessageLog[] = "log.dat";

/// Maps the names of the checkpoint file and of the temporary files to their contents.
using RestartFiles = std::map<std::string, std::string>;
RestartFiles LookAtRestartFiles();
/// Writes these files to the current directory and deletes every other checkpoint file or temporary file.
void PutRestartFiles(const RestartFiles& files);
/// Returns the names of the temporary files among them.
std::vector<std::string> TemporaryFiles(const RestartFiles& files);

struct CheckpointPicture {
    bool hasHeader = false;
    std::int32_t sequence = 0;
    std::vector<std::size_t> offsets;  ///< where the complete records begin
    std::size_t wholeBytes = 0;        ///< bytes up to the end of the last complete record, or of the header
};

CheckpointPicture PictureOf(const std::string& bytes);
