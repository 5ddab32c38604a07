// SPDX-License-Identifier: Apache-2.0

// The kinds of targets that a load can be restarted into. A kind is a directory of its own and a row in
// target_kinds.cpp; everything else asks the row.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>

#include "mqam/base/status.h"
#include "mqam/target/record_encoder.h"
#include "mqam/target/target.h"

namespace mqam {

/// Contains what the user asked for, by the options of the load.
struct TargetRequest {
    std::string name;         ///< --to
    std::string restartFile;  ///< --restart-file; empty = not given
    RecordFormat format = RecordFormat::kLines;
    bool formatGiven = false;
    bool force = false;   ///< a new load replaces what the target contains
    bool append = false;  ///< a new load adds to it
    NewlineRule newlines = NewlineRule::kKeep;
};

struct TargetKind {
    /// How a name of this kind begins. Empty for the kind that takes every name that no other kind claims.
    const char* prefix;
    /// How the user writes such a name, for example "sqlite:FILE?table=NAME", and what the target is.
    const char* usage;
    const char* help;
    /// Whether the target itself keeps the restart state: such a load is restartable without --restart-file.
    bool keepsRestartState;
    /// What the place is called in which the restart state is kept, for example "restart file".
    const char* stateNoun;

    /// Refuses options that do not go with this kind.
    Status (*checkOptions)(const TargetRequest& request);
    /// Makes the target; nothing is opened yet. Refuses a name that is not valid.
    Status (*make)(const TargetRequest& request, std::unique_ptr<Target>& target);
    /// Reads the restart state that is kept at `place`, or none if nothing is stored. The place is the name
    /// of the target for a kind that keeps the state itself, otherwise the restart file.
    Status (*readState)(const std::string& place, std::optional<RestartState>& state);
};

/// Every kind of this program, the one without a prefix last.
[[nodiscard]] std::span<const TargetKind* const> AllTargetKinds();

/// Returns the kind of a target's name, or of the place of a restart state.
[[nodiscard]] const TargetKind& FindTargetKind(const std::string& name);

}  // namespace mqam
