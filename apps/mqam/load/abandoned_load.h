// SPDX-License-Identifier: Apache-2.0

// Giving up an unfinished load: what is not in its target is saved, then its files are deleted.
#pragma once

#include <functional>
#include <string>

#include "mqam/base/status.h"
#include "mqam/target/restart_state.h"

namespace mqam {

struct AbandonRequest {
    RestartState state;
    std::string restartFile;  ///< empty if the target keeps the state itself
    std::string exportPath;   ///< where the records are saved; empty = next to the target
    /// Shows what has been saved and what would be deleted, in complete lines, and asks.
    std::function<bool(const std::string&)> isConfirmed;
};

/// Gives up the load while no other process uses it. The order: the records of the checkpoint file that are not in the
/// target are saved; the user is asked; the target is cut back to what the state counts; a damaged checkpoint file is
/// kept under another name, any other one is deleted; the state is deleted last. So this can be repeated after a crash.
///   report      out  what is where now, in complete lines
///   isComplete  out  whether every record that is not in the target is saved or on the queue
/// The error is kRefused if the user said no, another process uses the load, or it is not unfinished.
Status AbandonLoad(const AbandonRequest& request, std::string& report, bool& isComplete);

}  // namespace mqam
