#include "mqam/load/attempt_result.h"

#include "mqam/explain/advice.h"

namespace mqam {

bool EndByModule(AttemptResult& outcome, const ModuleSession& session) {
    outcome.moduleFailure = session.LastFailure();
    outcome.end = RecoveryOf(outcome.moduleFailure) == Recovery::kPermanent ? AttemptEnd::kModuleRefuses
                                                                            : AttemptEnd::kModuleFailed;
    return false;
}

bool EndByFile(AttemptResult& outcome, const std::string& words) {
    outcome.end = AttemptEnd::kTargetFailed;
    outcome.targetFailure = words;
    return false;
}

bool EndByTarget(AttemptResult& outcome, const Status& failed) {
    return EndByFile(outcome, failed.Error());
}

bool RefuseAttempt(AttemptResult& outcome, const std::string& words) {
    outcome.end = AttemptEnd::kRefused;
    outcome.refusal = words;
    return false;
}

}  // namespace mqam
