// How one life of a load that can be restarted ended.
#pragma once

#include <string>

#include "mqam/load/exit_table.h"
#include "mqam/module/module_failure.h"
#include "mqam/module/module_session.h"
#include "mqam/target/target.h"

namespace mqam {

struct AttemptResult {
    AttemptEnd end = AttemptEnd::kRefused;
    RestartState state;  ///< as last stored
    ModuleFailure moduleFailure;
    std::string targetFailure;
    std::string refusal;
};

// Each notes the end and its reason, and returns false.

/// Of the session's last request.
bool EndByModule(AttemptResult& outcome, const ModuleSession& session);
/// Of another file than the target; `words` name it.
bool EndByFile(AttemptResult& outcome, const std::string& words);
/// By a call of the target that failed after records were put.
bool EndByTarget(AttemptResult& outcome, const Status& failed);
bool RefuseAttempt(AttemptResult& outcome, const std::string& words);

}  // namespace mqam
