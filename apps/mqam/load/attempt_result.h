// SPDX-License-Identifier: Apache-2.0

// Records how one attempt of a restartable load ended.
#pragma once

#include <string>

#include "mqam/base/status.h"
#include "mqam/load/exit_table.h"
#include "mqam/module/module_failure.h"
#include "mqam/module/module_session.h"
#include "mqam/target/target.h"

namespace mqam {

struct AttemptResult {
    AttemptEnd end = AttemptEnd::kRefused;
    RestartState state;  ///< as last stored
    ModuleFailure moduleFailure;
    /// With kRefused and kTargetFailed. OK with kRefused if the module refuses an option: moduleFailure has the error then.
    Status error;
};

// Each of these records how the attempt ended, and returns false.

/// The module failed: the session's last request says how.
bool EndByModule(AttemptResult& result, const ModuleSession& session);
/// A file of the load other than the target failed; `error` names it.
bool EndByFile(AttemptResult& result, const std::string& error);
/// A call of the target failed.
bool EndByTarget(AttemptResult& result, const Status& failed);
/// Nothing was started; `error` says why and what to do.
bool RefuseAttempt(AttemptResult& result, const std::string& error);

}  // namespace mqam
