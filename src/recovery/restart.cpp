// SPDX-License-Identifier: Apache-2.0
#include "recovery/restart.h"

#include <cstring>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/session.h"
#include "params/settings.h"
#include "platform/os.h"
#include "recovery/back_out.h"
#include "recovery/checkpoint.h"
#include "recovery/checkpoint_file.h"
#include "recovery/position.h"
#include "recovery/replay.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "PIDMMain";

ReturnCode Fail(const char* message) {
    ReportError(Severity::kError, kFunction, message);
    return pmrcFailure;
}

// Moves the stream to the place that the position names, where the replay starts. The checkpoint of this
// position was never carried out, so the file still belongs to the previous checkpoint and contains the
// records since then.
ReturnCode SeekToPosition(const PositionData& position) {
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
              FormatText("Repositioning file to sequence: %d", position.CkPtSeq));
    SetCkPtOffset(position.CkPtOffset);
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
              FormatText("CkPtOffset: %d", static_cast<int>(position.CkPtOffset)));
    if (SetStreamPosition(CkPtFileStream(), position.CkPtOffset)) return pmrcOK;
    const char* reason = StreamReason(CkPtFileStream());
    // This message only becomes the message text. The error that is reported is "reposition".
    FormatNumbered<Message::kRepositionFailed>();
    ReportStreamError(Severity::kError, kFunction, "reposition", "fsetpos", Activity::kCheckpoint, reason);
    return pmrcFailure;
}

ReturnCode GoBackTo(const PositionData& position) {
    const std::int32_t RequestedSeq = position.CkPtSeq;
    ReturnCode rc = pmrcOK;
    if (RequestedSeq == CkPtSeq() && CkPtPending()) {
        rc = DoGetPos();
        if (rc != pmrcOK) return rc;
    }
    ChooseSyncpoint(MQGMO_SYNCPOINT, MQGMO_SYNCPOINT);
    if (Setting().MqCheckpointMode) {
        rc = BackOutMQ();
        SetCkPtSeq(RequestedSeq);
    }
    if (Setting().CKFILE) rc = RepositionFile();
    if (rc != pmrcOK) return rc;
    if (RequestedSeq < CkPtSeq()) return Fail("requested sequence prior to checkpoint file");
    if (RequestedSeq > CkPtSeq()) return SeekToPosition(position);
    return pmrcOK;
}

}  // namespace

ReturnCode SetPosition(const void* position, std::uint32_t length) {
    if (!Setting().CKFILE && !Setting().MqCheckpointMode) return Fail("Checkpoint support NOT requested");
    if (length != MQAMOD_POSITION_BYTES) return Fail("incorrect position data length");
    PositionData requested;
    std::memcpy(&requested, position, sizeof requested);

    ResumeMsgCount(requested.CkPtMsgCount);
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
              FormatText("Reposition requested. Requested sequence: %d", requested.CkPtSeq));
    const ReturnCode rc = GoBackTo(requested);
    if (rc != pmrcOK) return rc;
    ClearCkPtPending();
    BeginReplay();
    return pmrcOK;
}

}  // namespace mqamod
