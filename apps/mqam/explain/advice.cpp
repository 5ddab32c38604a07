// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/advice.h"

#include <algorithm>

#include "mqam/explain/code_tables.h"
#include "mqam/explain/module_messages.h"
#include "mqam/explain/mq_reasons.h"
#include "mqam/explain/sentences.h"

namespace mqam {

namespace {

// Each of these messages is reported for a single MQ reason (2042 and 2085), so its advice replaces that of
// the reason.
constexpr int kMessagesOfOneReason[] = {157, 158};

bool DecidesIt(Recovery recovery) {
    return recovery == Recovery::kPermanent || recovery == Recovery::kTransient;
}

}  // namespace

Recovery RecoveryOf(const ModuleFailure& failure) {
    const ReturnCodeRow* code = FindReturnCode(failure.code);
    if (code != nullptr && DecidesIt(code->recovery)) return code->recovery;
    ErrorText error;
    if (!ParseErrorText(failure.text, error)) return Recovery::kTransient;
    const ModuleMessage* message = FindModuleMessage(error);
    if (message != nullptr && DecidesIt(message->recovery)) return message->recovery;
    const MqReason* reason = FindMqReason(error.mqReason);
    if (reason != nullptr && DecidesIt(reason->recovery)) return reason->recovery;
    return Recovery::kTransient;
}

bool IsWrongOption(const ModuleFailure& failure) {
    const bool readsOptions = failure.request == "Init" || failure.request.starts_with("PutAttribute");
    return readsOptions && failure.code != pmrcOK && RecoveryOf(failure) == Recovery::kPermanent;
}

std::string FindFact(const ErrorText& error) {
    if (const MqReason* reason = FindMqReason(error.mqReason)) return reason->meaning;
    if (const ModuleMessage* message = FindModuleMessage(error))
        return MakeClause(FirstSentence(message->cause));
    return error.message;
}

std::vector<std::string> FindAdvice(const ErrorText& error) {
    std::vector<std::string> advice;
    if (const ModuleMessage* message = FindModuleMessage(error)) advice.emplace_back(message->action);
    const bool isCovered =
        std::ranges::find(kMessagesOfOneReason, error.messageNumber) != std::end(kMessagesOfOneReason);
    const MqReason* reason = FindMqReason(error.mqReason);
    if (reason != nullptr && !isCovered) advice.emplace_back(reason->action);
    return advice;
}

}  // namespace mqam
