// SPDX-License-Identifier: Apache-2.0

// Lets an operator complete what a crash interrupted in a checkpoint file and its temporary files. Nothing
// that may be the only copy of a record is destroyed: whatever is replaced or cut off is kept under another
// name.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "mqam/base/status.h"
#include "mqam/checkpoint/scan.h"
#include "mqam/checkpoint/start_decision.h"
#include "mqamod.h"

namespace mqam {

/// Returns a name next to the file that is still free: FILE.kept, FILE.kept2 and so on with the suffix ".kept".
[[nodiscard]] std::string FreeName(const std::string& path, const std::string& suffix);

/// Makes one repair, synced to disk. A temporary file is deleted only if the checkpoint file contains its records, and
/// a file is truncated only where its complete records end. On failure nothing is changed, or the change is made and
/// only its sync failed.
Status MakeRepair(const std::string& checkpointPath, const Repair& repair);

/// Describes the repair, for example "rename MQAMtmp.4711 to load.ckpt (...)".
[[nodiscard]] std::string DescribeRepair(const std::string& checkpointPath, const Repair& repair);

struct RepairStep {
    enum class Kind {
        kMake,      ///< makes `repair`
        kSetAside,  ///< renames the checkpoint file, which has no complete record, to `keptPath`
        kKeepTail,  ///< copies the bytes of the checkpoint file after `repair.bytes` to `keptPath`
    };
    Kind kind = Kind::kMake;
    Repair repair = {};
    std::string keptPath;
};

struct RepairPlan {
    std::vector<RepairStep> steps;
    /// Says why something that is not in order cannot be repaired, and what to do. It is empty if everything
    /// is in order after the steps.
    std::string obstacle;
};

/// Plans the repair of the files as they are; changes nothing.
///   stored  the position of the load's last checkpoint if it is known: a temporary file of another checkpoint then
///           does not replace the checkpoint file
[[nodiscard]] RepairPlan PlanRepair(const std::string& checkpointPath,
                                    const std::optional<PositionData>& stored, std::uint64_t maxRecordBytes);

/// Describes the step.
[[nodiscard]] std::string DescribeStep(const std::string& checkpointPath, const RepairStep& step);

/// Takes the step, synced to disk.
Status TakeStep(const std::string& checkpointPath, const RepairStep& step);

}  // namespace mqam
