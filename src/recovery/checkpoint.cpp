#include "recovery/checkpoint.h"

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/session.h"
#include "params/settings.h"
#include "recovery/checkpoint_file.h"
#include "recovery/checkpoint_rewrite.h"
#include "recovery/position.h"
#include "recovery/restart.h"

namespace {

struct CheckpointState {
    bool CkPtPending;
    bool CkPtTaken;
};
CheckpointState state;

constexpr char kFunction[] = "PIDMMain";

void TraceJobEvent(const char* text) {
    TraceLine(TraceLevel::JobEvents, Severity::Info, kFunction, text);
}

}  // namespace

ReturnCode GetPosition(const PositionData** position) {
    *position = nullptr;
    if (!Setting().CKFILE && !Setting().MqCheckpointMode) {
        ReportError(Severity::Error, kFunction, "Checkpoint support NOT requested");
        return pmrcFailure;
    }
    if (state.CkPtPending) {
        ReportError(Severity::Warning, kFunction, "Redundant GetPos request tolerated");
        return DoGetPos();
    }
    *position = NextPosition();
    state.CkPtPending = true;
    // 32 bits of the offset are printed, as ever.
    TraceJobEvent(FormatText("CkPtOffset: %d", static_cast<int>(CkPtOffset())));
    TraceJobEvent(FormatText("Checkpoint requested.  Checkpoint sequence: %d", CkPtSeq()));
    TraceJobEvent(FormatText("MsgCount: %d", MsgCount()));
    return pmrcOK;
}

ReturnCode DoGetPos() {
    constexpr char kDoGetPos[] = "DoGetPos";
    TraceLine(TraceLevel::Details, Severity::Info, kDoGetPos, "Entry");
    ReturnCode rc = pmrcNotSupported;
    if (Setting().CKFILE) {
        rc = ResetCkptFile();
        ChooseSyncpoint(MQGMO_SYNCPOINT, MQGMO_SYNCPOINT);
    }
    if (rc == pmrcOK) {
        TraceLine(TraceLevel::JobEvents, Severity::Info, kDoGetPos, "Checkpoint (GetPos) committed");
    } else {
        TraceLine(TraceLevel::JobEvents, Severity::Error, kDoGetPos, "Checkpoint (GetPos) NOT committed");
    }
    // The flush of all streams behind that line has pushed the new file out. A replay's went out before.
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
