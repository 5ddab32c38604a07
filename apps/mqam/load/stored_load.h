// A checkpoint file in the light of the restart information of its load.
#pragma once

#include <cstdint>
#include <string>

#include "mqam/target/restart_state.h"

namespace mqam {

/// Reads the restart information of the unfinished load that the checkpoint file belongs to. Returns false
/// with the reason: it is missing, damaged, of another load, or its load is complete.
///   restartFile  the restart file, or the name of a SQLite target
[[nodiscard]] bool ReadStateOfLoad(const std::string& restartFile, const std::string& checkpointPath,
                                   RestartState& state, std::string& reason);

/// Returns the state's complaint about the record that a restart would be given first, or an empty string: it
/// must be the last one loaded.
///   maxRecordBytes  the BKSZ of the load
[[nodiscard]] std::string FindForeignRecord(const std::string& checkpointPath, const RestartState& state,
                                            std::uint64_t maxRecordBytes);

}  // namespace mqam
