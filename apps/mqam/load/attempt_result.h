// How one life of a load that can be restarted ended.
#pragma once

#include <string>

#include "mqam/module/module_failure.h"
#include "mqam/module/module_session.h"
#include "mqam/target/target.h"

namespace mqam {

enum class AttemptEnd {
    kLoadDone,  ///< the queue was found empty twice: every message is in the target, the files are cleaned up
    kNothingToDo,    ///< this very load was complete before the command: nothing was touched
    kInputEnded,     ///< another life has to find out whether that was all
    kNoProgress,     ///< the input ended early, and the life before had come as far
    kInterrupted,    ///< stopWanted said so
    kTimeout,        ///< the module's time-out expired
    kRefused,        ///< nothing was started: see refusal
    kModuleFailed,   ///< see moduleFailure: time may heal it
    kModuleRefuses,  ///< see moduleFailure: it stays so until somebody changes something
    kTargetFailed,   ///< the target or another file of the load: see targetFailure
};

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
