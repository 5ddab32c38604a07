#include "apps/mqam/restart_outcome.h"

#include "apps/mqam/advice.h"
#include "apps/mqam/error_text.h"

bool EndByModule(RestartLifeOutcome& outcome, const ModuleSession& session) {
    outcome.moduleFailure = session.LastOutcome();
    ErrorText text;
    const bool staysSo = ParseErrorText(outcome.moduleFailure.text, text) && StaysSo(text);
    outcome.end = staysSo ? RestartLifeEnd::kModuleRefuses : RestartLifeEnd::kModuleFailed;
    return false;
}

bool EndByFile(RestartLifeOutcome& outcome, const std::string& words) {
    outcome.end = RestartLifeEnd::kTargetFailed;
    outcome.targetFailure = words;
    return false;
}

bool EndByTarget(RestartLifeOutcome& outcome, const RestartableTarget& target) {
    return EndByFile(outcome, target.Failure());
}

bool RefuseLife(RestartLifeOutcome& outcome, const std::string& words) {
    outcome.end = RestartLifeEnd::kRefused;
    outcome.refusal = words;
    return false;
}
