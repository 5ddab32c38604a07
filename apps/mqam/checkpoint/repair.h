// Completing what a crash interrupted in a checkpoint file and its temporary files, by hand. Nothing that may
// be the only copy of a record is destroyed: what gives way is kept under another name.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mqam/checkpoint/scan.h"
#include "mqam/checkpoint/start_decision.h"
#include "mqamod.h"

namespace mqam {

struct RepairStep {
    enum class Kind {
        kMake,      ///< `repair`
        kSetAside,  ///< the checkpoint file, which holds no whole record, gets the name `keptPath`
        kKeepTail,  ///< the bytes of the checkpoint file behind `repair.bytes` are copied to `keptPath`
    };
    Kind kind = Kind::kMake;
    Repair repair = {};
    std::string keptPath;
};

struct RepairPlan {
    std::vector<RepairStep> steps;
    /// Why something that is not in order cannot be repaired, and what to do; empty when the steps leave all
    /// in order.
    std::string obstacle;
};

/// Plans from the files as they are; changes nothing.
///   stored  the position of the load's last checkpoint, when it is known: a temporary file of another
///           checkpoint is then not put in the file's place
[[nodiscard]] RepairPlan PlanRepair(const std::string& checkpointPath,
                                    const std::optional<PositionData>& stored, std::uint64_t maxRecordBytes);

/// The step in words.
[[nodiscard]] std::string DescribeStep(const std::string& checkpointPath, const RepairStep& step);

/// Carries the step out, synced to the medium. Returns false with the reason in words.
[[nodiscard]] bool TakeStep(const std::string& checkpointPath, const RepairStep& step, std::string& reason);

}  // namespace mqam
