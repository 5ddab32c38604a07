// SPDX-License-Identifier: Apache-2.0
#include "queue/open.h"

#include <cstring>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/binding.h"
#include "mqi/client_channel.h"
#include "mqi/session.h"
#include "params/host_attributes.h"
#include "params/settings.h"
#include "platform/os.h"
#include "queue/read.h"
#include "recovery/checkpoint_file.h"
#include "recovery/message_log.h"
#include "recovery/position.h"
#include "recovery/replay.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "PIDMMain";

struct OpenState {
    // This contains IBM's defaults with the name of the queue. Each Open that connects sets it again; nothing
    // clears it, since Close takes the name for its message from here.
    MQOD descriptor;
    // This is the completion code of the most recent MQOPEN, or MQCC_OK before any. Nothing clears it: Close
    // acts on it.
    MQLONG compCode;
};
OpenState state = {MqodDefault(), MQCC_OK};

void TraceJobEvent(const char* text, Severity severity = Severity::kInfo) {
    TraceLine(TraceLevel::kJobEvents, severity, kFunction, text);
}

ReturnCode Fail(const char* message) {
    ReportError(Severity::kError, kFunction, message);
    return pmrcFailure;
}

// Traces what explains a failed connect better than its reason code.
void TraceConnectFailure(const char* qmgr, MQLONG reason) {
    if (const char* failure = MqLibraryFailure()) TraceJobEvent(failure, Severity::kWarning);
    if (reason == MQRC_Q_MGR_NAME_ERROR) {
        TraceJobEvent(FormatNumbered<Message::kConnectUnknownManager>(qmgr, static_cast<long>(reason)),
                      Severity::kError);
    } else if (reason == MQRC_Q_MGR_NOT_AVAILABLE) {
        TraceJobEvent(FormatNumbered<Message::kConnectManagerDown>(qmgr, static_cast<long>(reason)),
                      Severity::kError);
    }
}

ReturnCode Connect() {
    const Settings& settings = Setting();
    MQCNO options = MqcnoDefault();
    options.Version = MQCNO_VERSION_2;
    options.ClientConnPtr = settings.chnlGiven && settings.srvrGiven ? ClientChannel() : nullptr;

    MQCHAR qmgr[sizeof settings.QMGR];
    std::memcpy(qmgr, settings.QMGR, sizeof qmgr);
    MQHCONN handle = ConnectionHandle();
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    MQCONNX(qmgr, &options, &handle, &compCode, &reason);
    if (compCode != MQCC_OK) {
        TraceConnectFailure(settings.QMGR, reason);
        return Fail(FormatText("Error received from MQCONNX : %ld", static_cast<long>(reason)));
    }
    SetConnectionHandle(handle);
    TraceJobEvent(FormatText("Queue Manager open"));
    return pmrcOK;
}

// Reports that the queue could not be opened. For a reason without a message of its own, whatever the message
// text contains is reported: as a rule "Queue Manager open".
ReturnCode FailAttempts(MQLONG reason) {
    const Settings& settings = Setting();
    if (reason == MQRC_OBJECT_IN_USE && settings.MQEX) {
        FormatNumbered<Message::kQueueInUse>(settings.QNM, static_cast<long>(reason));
    } else if (reason == MQRC_UNKNOWN_OBJECT_NAME) {
        FormatNumbered<Message::kQueueUnknown>(settings.QNM, static_cast<long>(reason));
    }
    return Fail(MessageText());
}

ReturnCode OpenWithRetry() {
    const Settings& settings = Setting();
    state.descriptor = MqodDefault();
    std::memset(state.descriptor.ObjectName, 0, sizeof state.descriptor.ObjectName);
    std::memcpy(state.descriptor.ObjectName, settings.QNM, sizeof state.descriptor.ObjectName);
    const MQLONG options =
        (settings.MQEX ? MQOO_INPUT_EXCLUSIVE : MQOO_INPUT_AS_Q_DEF) + MQOO_FAIL_IF_QUIESCING;

    std::uint32_t attempts = 0;
    while (true) {
        MQHOBJ handle = MQHO_NONE;
        MQLONG reason = MQRC_NONE;
        MQOPEN(ConnectionHandle(), &state.descriptor, options, &handle, &state.compCode, &reason);
        if (state.compCode == MQCC_WARNING) {
            ReportError(Severity::kWarning, kFunction,
                        FormatNumbered<Message::kQueueOpenWarning>(settings.QNM, static_cast<long>(reason)));
        }
        ++attempts;
        // OWAIT is in seconds, but the pause is OWAIT milliseconds: hosts rely on opens that fail fast.
        if (state.compCode != MQCC_OK && attempts < settings.OTENACITY) SleepMilliseconds(settings.OWAIT);
        if (state.compCode != MQCC_FAILED) {
            SetQueueHandle(handle);
            return pmrcOK;
        }
        if (attempts >= settings.OTENACITY) return FailAttempts(reason);
    }
}

void ResetReadState() {
    const Settings& settings = Setting();
    ChooseSyncpoint(settings.TLF ? MQGMO_SYNCPOINT : MQGMO_NO_SYNCPOINT, MQGMO_NO_SYNCPOINT);
    EndReplay();
    ResetPosition();
    SetKeepPrevious(settings.CKFILE || settings.MqCheckpointMode);
    SetGenEofFlag(false);
}

}  // namespace

ReturnCode OpenQueue(std::int16_t openMode, std::uint16_t pathNameLength) {
    if (QueueHandle() != MQHO_NONE) {
        FormatNumbered<Message::kQueueAlreadyOpen>();
        return Fail("Access Module limited to 1 open Queue");
    }
    if (openMode != 1) return Fail("Access Module is read only");
    if (pathNameLength > 0) {
        TraceJobEvent("Ignoring unnecessary pathname specification at open", Severity::kWarning);
    }
    // A failed Open may have left the log open.
    DropLogStream();

    ReturnCode rc = pmrcOK;
    if (Setting().LOG) rc = OpenLogFile();
    if (rc == pmrcOK) rc = Connect();
    if (rc == pmrcOK) rc = OpenWithRetry();
    if (rc != pmrcOK) return rc;
    TraceJobEvent("Queue open");
    ResetReadState();
    // A failed Close may have left the checkpoint file open. It is dropped only here, because after one of
    // the failures above a later CloseAll must still keep or delete the file.
    DropCkPtFileStream();
    return OpenCkPtFile();
}

MQLONG OpenCompletionCode() {
    return state.compCode;
}

const MQCHAR* OpenedObjectName() {
    return state.descriptor.ObjectName;
}

}  // namespace mqamod
