// SPDX-License-Identifier: Apache-2.0
#include "queue/close.h"

#include <cstdio>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/session.h"
#include "params/settings.h"
#include "queue/open.h"
#include "recovery/checkpoint_file.h"
#include "recovery/message_log.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "CloseAll";

void TraceJobEvent(const char* text) {
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction, text);
}

void CloseLog() {
    if (LogIsOpen()) {
        TraceJobEvent("closing Log");
        CloseLogFile();
    } else if (LogPreserved()) {
        CloseLogFile();
    }
}

ReturnCode CloseQueue() {
    if (QueueHandle() == MQHO_NONE) return pmrcOK;
    TraceJobEvent("closing MQ named Q");
    MQHOBJ handle = QueueHandle();
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    MQCLOSE(ConnectionHandle(), &handle, MQCO_NONE, &compCode, &reason);
    SetQueueHandle(MQHO_NONE);
    if (compCode == MQCC_OK) return pmrcOK;
    char queue[sizeof(MQOD::ObjectName) + 1];
    std::snprintf(queue, sizeof queue, "%.*s", static_cast<int>(sizeof(MQOD::ObjectName)),
                  OpenedObjectName());
    ReportError(Severity::kError, kFunction,
                FormatNumbered<Message::kQueueCloseFailed>(queue, static_cast<long>(reason)));
    return pmrcFailure;
}

ReturnCode Disconnect() {
    if (ConnectionHandle() == 0) return pmrcOK;
    TraceJobEvent("closing MQ Q Manager");
    MQHCONN handle = ConnectionHandle();
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    MQDISC(&handle, &compCode, &reason);
    SetConnectionHandle(0);
    if (compCode == MQCC_OK) return pmrcOK;
    ReportError(compCode == MQCC_WARNING ? Severity::kWarning : Severity::kError, kFunction,
                FormatNumbered<Message::kDisconnectFailed>(Setting().QMGR, static_cast<long>(reason)));
    return pmrcFailure;
}

}  // namespace

ReturnCode CloseAll(std::uint16_t mode) {
    CloseLog();
    ReturnCode rc = CloseQueue();
    if (rc != pmrcOK && mode == MQAMOD_STOP_AT_FIRST_FAILURE) return rc;
    rc = Disconnect();
    if (rc != pmrcOK && mode == MQAMOD_STOP_AT_FIRST_FAILURE) return rc;
    ReleaseCkPtFile();
    return pmrcOK;
}

}  // namespace mqamod
