// SPDX-License-Identifier: Apache-2.0

// Runs the command of a restartable load: it reads what is stored, starts a worker for each attempt, and
// retries after a failure if the user asked for that.
#pragma once

#include <cstdint>

#include "mqam/target/target.h"

namespace mqam {

enum class RestartPolicy {
    kAuto,   ///< resume an unfinished load, otherwise begin a new one
    kNever,  ///< refuse if a load is unfinished
    kOnly,   ///< refuse if no load is unfinished
};

struct SupervisorSettings {
    RestartPolicy restart = RestartPolicy::kAuto;
    std::uint64_t retryForSeconds = 0;  ///< 0 = do not retry
    bool quiet = false;
    bool acceptsLoss =
        false;  ///< the first attempt may continue without records that are lost, if the user agrees
};

/// Runs the load to its end, or as far as it gets. Reads the state of `target` between two attempts. Returns the exit
/// code; everything has been reported.
[[nodiscard]] int SuperviseLoad(const SupervisorSettings& settings, Target& target);

}  // namespace mqam
