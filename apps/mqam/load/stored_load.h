// SPDX-License-Identifier: Apache-2.0

// Reads what is stored about the load that a checkpoint file belongs to, for the commands that show and
// repair such files.
#pragma once

#include <cstdint>
#include <string>

#include "mqam/base/status.h"
#include "mqam/target/restart_state.h"

namespace mqam {

/// Reads the restart information of the unfinished load that the checkpoint file belongs to. It is an error if the
/// information is missing or damaged, if it belongs to another load, or if its load is complete.
///   place  the restart file, or the name of a target that keeps its state itself
Status ReadStateOfLoad(const std::string& place, const std::string& checkpointPath, RestartState& state);

/// Checks the record that a restart would read first: it must be the last one loaded.
///   maxRecordBytes  the BKSZ of the load
Status CheckFirstRecord(const std::string& checkpointPath, const RestartState& state,
                        std::uint64_t maxRecordBytes);

}  // namespace mqam
