// SPDX-License-Identifier: Apache-2.0
#include "recovery/checkpoint.h"

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/session.h"
#include "params/settings.h"
#include "recovery/checkpoint_file.h"
#include "recovery/checkpoint_rewrite.h"
#include "recovery/position.h"
#include "recovery/replay.h"

namespace mqamod {

namespace {

struct CheckpointState {
    // Says whether a position was handed out whose checkpoint has not been carried out yet. DoGetPos, a
    // successful SetPos and Init clear this.
    bool CkPtPending;
    // Says whether a checkpoint was ever carried out or failed. Nothing clears this, so a later load in the
    // same process saves and commits from its first record on.
    bool CkPtTaken;
};
CheckpointState state;

constexpr char kFunction[] = "PIDMMain";

void TraceJobEvent(const char* text) {
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction, text);
}

}  // namespace

ReturnCode GetPosition(const PositionData*& position) {
    position = nullptr;
    if (!Setting().CKFILE && !Setting().MqCheckpointMode) {
        ReportError(Severity::kError, kFunction, "Checkpoint support NOT requested");
        return pmrcFailure;
    }
    if (state.CkPtPending) {
        ReportError(Severity::kWarning, kFunction, "Redundant GetPos request tolerated");
        return DoGetPos();
    }
    position = NextPosition();
    state.CkPtPending = true;
    // Only 32 bits of the offset are printed: the text of this line is fixed.
    TraceJobEvent(FormatText("CkPtOffset: %d", static_cast<int>(CkPtOffset())));
    TraceJobEvent(FormatText("Checkpoint requested.  Checkpoint sequence: %d", CkPtSeq()));
    TraceJobEvent(FormatText("MsgCount: %d", MsgCount()));
    return pmrcOK;
}

ReturnCode DoGetPos() {
    constexpr char kDoGetPos[] = "DoGetPos";
    TraceLine(TraceLevel::kDetails, Severity::kInfo, kDoGetPos, "Entry");
    ReturnCode rc = pmrcNotSupported;
    if (Setting().CKFILE) {
        rc = ResetCkptFile();
        ChooseSyncpoint(MQGMO_SYNCPOINT, MQGMO_SYNCPOINT);
    }
    if (rc == pmrcOK) {
        TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kDoGetPos, "Checkpoint (GetPos) committed");
    } else {
        TraceLine(TraceLevel::kJobEvents, Severity::kError, kDoGetPos, "Checkpoint (GetPos) NOT committed");
    }
    // Outside a replay, ResetCkptFile has not flushed what it wrote. The record reaches the operating system
    // because a trace statement, like the one above, flushes all streams whatever the trace level. Do not
    // remove or move that statement, and do not flush the stream here: the order of the calls on the file is
    // part of the contract. NoteLostBytes looks for an error of that flush, which nothing else reports.
    // During a replay ResetCkptFile has itself flushed what it wrote.
    if (!ReplayFromCkPt()) NoteLostBytes();
    state.CkPtPending = false;
    state.CkPtTaken = true;
    return rc;
}

bool CkPtPending() {
    return state.CkPtPending;
}

void ClearCkPtPending() {
    state.CkPtPending = false;
}

bool CkPtTaken() {
    return state.CkPtTaken;
}

}  // namespace mqamod
