// SPDX-License-Identifier: Apache-2.0

// What the files of a load contain, worked out from their bytes and independently of the module.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

inline constexpr char kCheckpointFile[] = "ck.dat";
inline constexpr char kTemporaryPrefix[] = "MQAMtmp.";
inline constexpr char kMessageLog[] = "log.dat";

/// The checkpoint file and the temporary ones, by name.
using RestartFiles = std::map<std::string, std::string>;
RestartFiles LookAtRestartFiles();
/// Makes the current directory contain these files and no others of their kind.
void PutRestartFiles(const RestartFiles& files);
/// Returns the names of the temporary files among them.
std::vector<std::string> TemporaryFiles(const RestartFiles& files);

struct CheckpointPicture {
    bool hasHeader = false;
    std::int32_t sequence = 0;
    std::vector<std::size_t> offsets;  ///< of the complete records
    std::size_t wholeBytes = 0;        ///< up to the end of the last of them, or of the header
};

CheckpointPicture PictureOf(const std::string& bytes);
