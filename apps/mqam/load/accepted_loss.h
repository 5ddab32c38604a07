// SPDX-License-Identifier: Apache-2.0

// Continuing a load whose checkpoint file is damaged or missing, without the records that are lost.
//
// What can be read is exported and the damaged file is copied before anything changes. Then one rename replaces the
// checkpoint file by one that contains the last record loaded and every record that is not loaded yet and can be read.
// From then on the load resumes as after any crash. If this process is killed before the rename, the next one finds the
// damaged file again.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mqam/base/status.h"
#include "mqam/checkpoint/scan.h"
#include "mqam/load/record_export.h"
#include "mqam/target/target.h"

namespace mqam {

/// Returns the suffix with the time, which distinguishes the names of several losses: ".kept-20261122-021503".
[[nodiscard]] std::string DatedSuffix(const char* suffix);

struct AcceptedLoss {
    std::string checkpointFile;
    std::int32_t sequence = 0;     ///< of the stored checkpoint
    std::vector<char> lastRecord;  ///< the last record loaded; empty if the stored checkpoint has none
    ExportPlan everything;         ///< every record of the file that can be read
    ExportPlan unloaded;           ///< those that are not loaded yet
    bool fileExists = false;
    std::string exportPath;  ///< where the records are saved; empty if there are none
    std::string keptPath;    ///< where the file is copied; empty if there is none
    std::string question;    ///< what is lost, kept and continued with, in numbers and complete lines
};

/// Plans how to continue a load that was refused, changing nothing. The error is kRefused if a loss of this kind cannot be
/// accepted: the file is another load's, or it cannot be known which of its records are loaded.
///   scan                    of the checkpoint file
///   state                   with a position
///   checkpointEveryRecords  the interval of the load, 0 if it is by time
Status PlanAcceptedLoss(const CheckpointScan& scan, const std::vector<std::string>& temporaries,
                        const RestartState& state, std::uint64_t checkpointEveryRecords, Target& target,
                        AcceptedLoss& loss);

/// Carries out the plan. On failure the checkpoint file is as it was.
Status AcceptLoss(const AcceptedLoss& loss);

}  // namespace mqam
