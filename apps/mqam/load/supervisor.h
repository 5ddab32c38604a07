// The command of a load that can be restarted: it looks what was stored, starts a worker for each life, and
// goes on after a failure when the user asked for that.
#pragma once

#include <cstdint>

#include "mqam/target/target.h"

namespace mqam {

enum class RestartPolicy {
    kAuto,   ///< resume an unfinished load, else begin a new one
    kNever,  ///< refuse if a load is unfinished
    kOnly,   ///< refuse if no load is unfinished
};

struct SupervisorSettings {
    RestartPolicy restart = RestartPolicy::kAuto;
    std::uint64_t retryForSeconds = 0;  ///< 0 = do not retry
    bool quiet = false;
};

/// Runs the load to its end, or as far as it comes. `target` is used to look at the state between two lives.
/// Returns the exit code; everything has been told.
[[nodiscard]] int SuperviseLoad(const SupervisorSettings& settings, Target& target);

}  // namespace mqam
