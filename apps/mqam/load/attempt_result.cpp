// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/attempt_result.h"

#include "mqam/explain/advice.h"

namespace mqam {

bool EndByModule(AttemptResult& result, const ModuleSession& session) {
    result.moduleFailure = session.LastFailure();
    result.end = RecoveryOf(result.moduleFailure) == Recovery::kPermanent ? AttemptEnd::kModuleRefuses
                                                                          : AttemptEnd::kModuleFailed;
    if (IsWrongOption(result.moduleFailure)) result.end = AttemptEnd::kRefused;
    return false;
}

bool EndByFile(AttemptResult& result, const std::string& error) {
    result.end = AttemptEnd::kTargetFailed;
    result.error = Status::Transient(error);
    return false;
}

bool EndByTarget(AttemptResult& result, const Status& failed) {
    result.end = AttemptEnd::kTargetFailed;
    result.error = failed;
    return false;
}

bool RefuseAttempt(AttemptResult& result, const std::string& error) {
    result.end = AttemptEnd::kRefused;
    result.error = Status::Refused(error);
    return false;
}

}  // namespace mqam
