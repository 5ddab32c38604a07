// The checkpoint file as a host sees it between two lives: read without the module, and put right before
// Open.
#pragma once

#include <string>
#include <vector>

inline constexpr char kCheckpointFile[] = "ck.dat";
inline constexpr char kMessageLog[] = "log.dat";

struct CheckpointLook {
    bool exists = false;
    std::vector<std::string> records;  ///< whole ones
    std::size_t wholeBytes = 0;        ///< up to the end of the last of them
    std::size_t bytes = 0;
};

CheckpointLook LookAtCheckpoint(const std::string& path);

/// The temporary file that a rewrite left behind, or the empty string.
std::string LeftTemporaryFile();

/// What a host does with the files before Open. Returns whether a position can be given to SetPos: the file
/// holds a whole record.
///   positionStored   in   without one an orphaned temporary file is only deleted
bool PrepareCheckpoint(bool positionStored);
