#include "queue/read.h"

#include <algorithm>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/session.h"
#include "params/record_buffer.h"
#include "params/settings.h"
#include "queue/get_message.h"
#include "recovery/checkpoint.h"
#include "recovery/checkpoint_file.h"
#include "recovery/message_log.h"
#include "recovery/position.h"
#include "recovery/restart.h"

namespace {

bool keepPreviousFlag;  // set or cleared by each Open; survives Close and Shut

constexpr char kFunction[] = "PIDMMain";

void TraceJobEvent(Severity severity, const char* text) {
    TraceLine(TraceLevel::JobEvents, severity, kFunction, text);
}

ReturnCode FailGet(const char* message) {
    ReportError(Severity::Error, kFunction, message, "MQGET");
    return pmrcFailure;
}

bool IsMessage(const GetOutcome& outcome) {
    return outcome.compCode == MQCC_OK && outcome.dataLength > 0;
}

void TellEmptyQueue() {
    TraceJobEvent(Severity::Info, "EOF from MQGET");
}

// Whether an outcome without a message ends the input; if so, tells which end it is. A failure that brought
// no data does, whatever its reason: hosts know it as the end.
bool TellEnd(const GetOutcome& outcome) {
    if (outcome.reason == MQRC_SYNCPOINT_LIMIT_REACHED) {
        TraceJobEvent(Severity::Warning,
                      "Checkpoint capacity exceeded. No more messages can be handled within current "
                      "unit of work.  Returning EOF.");
        return true;
    }
    if (outcome.reason != MQRC_NO_MSG_AVAILABLE && outcome.dataLength != 0) return false;
    TellEmptyQueue();
    return true;
}

// Whatever stands in the outcome is that of an earlier get: an end is told again, a message is not returned
// and a failure not reported a second time.
ReturnCode ClassifyEofRequest(const GetOutcome& outcome) {
    if (!IsMessage(outcome)) (void)TellEnd(outcome);
    return pmrcEOF;
}

// Tells a message (pmrcOK) from the ends and failures of MQGET.
ReturnCode ClassifyGet(const GetOutcome& outcome) {
    if (IsMessage(outcome)) {
        // More than the buffer holds is no message, whatever the completion code says.
        if (outcome.dataLength > Setting().BKSZ)
            return FailGet(FormatNumbered<Message::kMessageTooLong>(Setting().BKSZ));
        return pmrcOK;
    }
    if (TellEnd(outcome)) return pmrcEOF;
    if (outcome.reason == MQRC_TRUNCATED_MSG_FAILED)
        return FailGet(FormatNumbered<Message::kMessageTooLong>(Setting().BKSZ));
    return FailGet(FormatNumbered<Message::kGetFailed>(static_cast<long>(outcome.reason)));
}

// A message that was got and backed out before may have been returned already. It is compared with the record
// kept, also when that record is shorter; without checkpointing no record is kept and nothing is identical.
ReturnCode CheckDuplicate(const void* record, std::uint32_t length) {
    const MQLONG backoutCount = LastBackoutCount();
    if (backoutCount <= 0) return pmrcOK;
    TraceJobEvent(Severity::Warning,
                  FormatText("Potential duplicate message found (BackoutCount: %d).", backoutCount));
    if (!RecordBufferExists() || !EqualsKeptRecord(record, length)) return pmrcOK;
    TraceJobEvent(Severity::Warning, "Message identical to previous.");
    if (Setting().TDM) {
        TraceJobEvent(Severity::Warning, "Generating EOF per request (keyword TDM: yes)");
        return pmrcEOF;
    }
    TraceJobEvent(Severity::Info, "Returning message and continuing (keyword TDM: no)");
    return pmrcOK;
}

ReturnCode CommitMessage() {
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    MQCMIT(ConnectionHandle(), &compCode, &reason);
    if (compCode == MQCC_OK) return pmrcOK;
    ReportError(compCode == MQCC_WARNING ? Severity::Warning : Severity::Error, kFunction,
                FormatNumbered<Message::kCommitFailed>(static_cast<long>(reason)));
    return pmrcFailure;
}

// Returns the next message; *kept tells that it has become the last record already, on its way into the
// checkpoint file.
ReturnCode ReadFromQueue(void* buffer, std::uint32_t* length, bool* kept) {
    const GetEnd end = GetMessage(buffer);
    if (end == GetEnd::TimedOut) {
        TraceJobEvent(Severity::Warning, "Expiration of TimeOut Value");
        return pmrcTimeout;
    }
    const GetOutcome& outcome = LastGet();
    if (end == GetEnd::EofRequested) return ClassifyEofRequest(outcome);
    // When the clock jumped no message was asked for, and the outcome is that of an earlier read: its record
    // must not be returned a second time.
    if (end == GetEnd::ReadWaitOver && outcome.compCode == MQCC_OK) {
        TellEmptyQueue();
        return pmrcEOF;
    }
    ReturnCode rc = ClassifyGet(outcome);
    if (rc != pmrcOK) return rc;

    const auto messageLength = static_cast<std::uint32_t>(outcome.dataLength);
    rc = CheckDuplicate(buffer, messageLength);
    if (rc != pmrcOK) return rc;
    if (Setting().CKFILE && CkPtTaken()) {
        rc = SaveRecord(buffer, messageLength);
        if (rc == pmrcOK) rc = CommitMessage();
        if (rc != pmrcOK) return rc;
        *kept = true;
    }
    if (Setting().LOG) rc = WriteLogRec(buffer, messageLength);
    if (rc == pmrcOK) *length = messageLength;
    return rc;
}

void TraceRecord(const void* record, std::uint32_t length) {
    constexpr std::uint32_t kTracedBytes = 20;
    if (!TraceAdmits(TraceLevel::IoBuffers)) return;
    FormatText("message length: %d, begins: ", static_cast<int>(length));
    TraceLine(TraceLevel::IoBuffers, Severity::Info, kFunction,
              AppendBytes(record, std::min(length, kTracedBytes)));
}

}  // namespace

ReturnCode ReadRecord(void* buffer, std::uint32_t* length) {
    *length = 0;
    if (QueueHandle() == MQHO_NONE) {
        ReportError(Severity::Error, kFunction,
                    FormatNumbered<Message::kReadWithoutQueue>(Setting().QMGR, Setting().QNM));
        return pmrcFailure;
    }
    ReturnCode rc = pmrcOK;
    if (CkPtPending()) rc = DoGetPos();
    if (rc == pmrcOK && ReplayFromCkPt()) rc = ReadFromChkPt(buffer, length);
    // The read that meets the end of the replay goes on to the queue.
    bool kept = false;
    if (rc == pmrcOK && !ReplayFromCkPt()) rc = ReadFromQueue(buffer, length, &kept);
    if (rc != pmrcOK) return rc;

    CountMessage();
    if (keepPreviousFlag && RecordBufferExists() && !kept) KeepRecord(buffer, *length);
    if (Setting().MqCheckpointMode) ClearReplayFromCkPt();
    TraceRecord(buffer, *length);
    return pmrcOK;
}

void KeepPrevious(bool keep) {
    keepPreviousFlag = keep;
}
