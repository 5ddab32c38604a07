// What a load that can be restarted owes the disk once every message is in its target.
#pragma once

#include <string>

#include "mqam/target/target.h"

namespace mqam {

/// Stores that a load is finished once more, so that it is on the medium whatever became of the life that
/// first did so; then deletes its checkpoint file and log, and stores that it is complete. The target is
/// locked. Returns false with the reason in words.
[[nodiscard]] bool CleanUpFinishedLoad(Target& target, RestartState& state, std::string& reason);

}  // namespace mqam
