// SPDX-License-Identifier: Apache-2.0
#include "entry/requests.h"

#include <cstdio>
#include <cstring>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/module_id.h"
#include "diag/trace.h"
#include "entry/attributes.h"
#include "entry/module_state.h"
#include "mqi/session.h"
#include "params/host_attributes.h"
#include "params/parse_parms.h"
#include "params/record_buffer.h"
#include "params/settings.h"
#include "queue/close.h"
#include "queue/open.h"
#include "queue/read.h"
#include "recovery/checkpoint.h"
#include "recovery/position.h"
#include "recovery/restart.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "PIDMMain";

void TraceJobEvent(const char* text) {
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction, text);
}

}  // namespace

// An Init that fails at the parameters leaves the module initialized: the host must call Shut before the next
// Init. An Init with a wrong version changes nothing but the trace level.
ReturnCode RunInit(void* data) {
    InitBlock& block = *static_cast<InitBlock*>(data);
    if (block.firstVersion != MQAMOD_FIRST_INTERFACE_VERSION ||
        block.secondVersion != MQAMOD_SECOND_INTERFACE_VERSION) {
        return pmrcBadVersion;
    }
    const ReturnCode rc = ParseParms(block.initString, block.initStringLength);
    TraceJobEvent(FormatText("MQGMO structure version: %d", 3));
    (void)std::fflush(nullptr);
    ClearCkPtPending();
    std::memset(block.clearedByInit, 0, sizeof block.clearedByInit);
    SetModuleState(Phase::kInitialized);
    SetPositionUnchangedFlag(false);
    return rc;
}

ReturnCode RunOpen(void* data) {
    OpenBlock& block = *static_cast<OpenBlock*>(data);
    const bool wasOpen = QueueHandle() != MQHO_NONE;
    const ReturnCode rc = OpenQueue(block.openMode, block.pathNameLength);
    // The outputs are stored once the queue is open, even if the checkpoint file could then not be opened.
    if (wasOpen || QueueHandle() == MQHO_NONE) return rc;
    SetPositionUnchangedFlag(true);
    block.maxRecordBytes = static_cast<std::uint32_t>(Setting().BKSZ);
    block.zero0 = 0;
    std::memset(block.zero1, 0, sizeof block.zero1);
    return rc;
}

ReturnCode RunClose(void*) {
    SetPositionUnchangedFlag(false);
    if (OpenCompletionCode() != MQCC_OK) {
        ReportError(Severity::kError, kFunction, "Attempt to close, no Queue Open");
        return pmrcFailure;
    }
    const ReturnCode rc = CloseAll(MQAMOD_STOP_AT_FIRST_FAILURE);
    TraceJobEvent(FormatText("Messages received via MQGET: %ld", static_cast<long>(MsgCount())));
    return rc;
}

ReturnCode RunCloseRewind(void* data) {
    SetPositionUnchangedFlag(false);
    ReportError(Severity::kWarning, kFunction, FormatNumbered<Message::kCloseRewindUnsupported>());
    return RunClose(data);
}

ReturnCode RunRead(void* data) {
    ReadBlock& block = *static_cast<ReadBlock*>(data);
    block.recordLength = 0;
    SetPositionUnchangedFlag(false);
    std::uint32_t recordLength = 0;
    const ReturnCode rc = ReadRecord(block.recordBuffer, recordLength);
    block.recordLength = recordLength;
    return rc;
}

ReturnCode RunWrite(void*) {
    SetPositionUnchangedFlag(false);
    return pmrcNotSupported;
}

ReturnCode RunGetPos(void* data) {
    SetPositionUnchangedFlag(false);
    const PositionData* position = nullptr;
    const ReturnCode rc = GetPosition(position);
    if (position != nullptr) {
        PositionBlock& block = *static_cast<PositionBlock*>(data);
        block.position = position;
        block.positionLength = MQAMOD_POSITION_BYTES;
    }
    return rc;
}

ReturnCode RunSetPos(void* data) {
    const PositionBlock& block = *static_cast<const PositionBlock*>(data);
    const ReturnCode rc = SetPosition(block.position, block.positionLength);
    if (rc == pmrcOK) SetPositionUnchangedFlag(false);
    return rc;
}

ReturnCode RunShut(void* data) {
    const ReturnCode rc = CloseAll(static_cast<const ShutBlock*>(data)->closeMode);
    FreeRecordBuffer();
    FreeErrorText();
    SetModuleState(Phase::kLoaded);
    SetPreserveRestartInfo(false);
    return rc;
}

ReturnCode RunId(void* data) {
    IdBlock& block = *static_cast<IdBlock*>(data);
    std::memcpy(block.identification, kModuleId, sizeof kModuleId);
    std::memcpy(block.version, kCodeVersion, sizeof kCodeVersion);
    std::memset(block.zero, 0, sizeof block.zero);
    return pmrcOK;
}

ReturnCode RunGetAttribute(void* data) {
    return GetAttribute(*static_cast<const AttributeBlock*>(data));
}

ReturnCode RunPutAttribute(void* data) {
    return PutAttribute(*static_cast<const AttributeBlock*>(data));
}

}  // namespace mqamod
