// SPDX-License-Identifier: Apache-2.0
#include "recovery/back_out.h"

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/session.h"

namespace mqamod {

ReturnCode BackOutMQ() {
    constexpr char kFunction[] = "BackOutMQ";
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction, "Backing out MQ transactions via MQBACK");
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    MQBACK(ConnectionHandle(), &compCode, &reason);
    if (compCode == MQCC_OK) return pmrcOK;
    ReportError(compCode == MQCC_WARNING ? Severity::kWarning : Severity::kError, kFunction,
                FormatNumbered<Message::kBackOutFailed>(static_cast<long>(reason)));
    return pmrcFailure;
}

}  // namespace mqamod
