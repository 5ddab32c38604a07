// SPDX-License-Identifier: Apache-2.0
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
#include "recovery/replay.h"

namespace mqamod {

namespace {

struct ReadState {
    // Says whether each record returned is kept in the last-record buffer. Each Open that opens the queue
    // sets or clears this; Close and Shut do not.
    bool KeepPreviousFlag;
};
ReadState state;

constexpr char kFunction[] = "PIDMMain";

void TraceJobEvent(Severity severity, const char* text) {
    TraceLine(TraceLevel::kJobEvents, severity, kFunction, text);
}

ReturnCode FailGet(const char* message) {
    ReportError(Severity::kError, kFunction, message, "MQGET");
    return pmrcFailure;
}

bool IsMessage(const GetOutcome& outcome) {
    return outcome.compCode == MQCC_OK && outcome.dataLength > 0;
}

// Says why an MQGET without a message ends the input.
enum class InputEnd { kNone, kEmptyQueue, kSyncpointLimit };

// An MQGET that failed without data counts as the end of the input whatever its reason: hosts rely on that.
InputEnd FindInputEnd(const GetOutcome& outcome) {
    if (outcome.reason == MQRC_SYNCPOINT_LIMIT_REACHED) return InputEnd::kSyncpointLimit;
    if (outcome.reason != MQRC_NO_MSG_AVAILABLE && outcome.dataLength != 0) return InputEnd::kNone;
    return InputEnd::kEmptyQueue;
}

void TraceInputEnd(InputEnd end) {
    if (end == InputEnd::kEmptyQueue) TraceJobEvent(Severity::kInfo, "EOF from MQGET");
    if (end == InputEnd::kSyncpointLimit) {
        TraceJobEvent(Severity::kWarning,
                      "Checkpoint capacity exceeded. No more messages can be handled within current "
                      "unit of work.  Returning EOF.");
    }
}

// Classifies the last MQGET: pmrcOK for a message, pmrcEOF for an end of the input, pmrcFailure otherwise.
ReturnCode ClassifyGet(const GetOutcome& outcome) {
    if (IsMessage(outcome)) {
        // A length beyond the buffer is an error even if the completion code is OK.
        if (outcome.dataLength > Setting().BKSZ)
            return FailGet(FormatNumbered<Message::kMessageTooLong>(Setting().BKSZ));
        return pmrcOK;
    }
    const InputEnd end = FindInputEnd(outcome);
    TraceInputEnd(end);
    if (end != InputEnd::kNone) return pmrcEOF;
    if (outcome.reason == MQRC_TRUNCATED_MSG_FAILED)
        return FailGet(FormatNumbered<Message::kMessageTooLong>(Setting().BKSZ));
    return FailGet(FormatNumbered<Message::kGetFailed>(static_cast<long>(outcome.reason)));
}

// Classifies how the wait ended: pmrcOK if ClassifyGet is to classify the outcome of MQGET, otherwise the
// result of the Read.
ReturnCode ClassifyWait(const GetResult& got) {
    if (got.end == GetEnd::kTimedOut) {
        TraceJobEvent(Severity::kWarning, "Expiration of TimeOut Value");
        return pmrcTimeout;
    }
    if (got.end == GetEnd::kEofRequested) {
        // No MQGET was made, so the outcome is left over from an earlier Read. An end of the input is traced
        // again; a message or a failure is ignored.
        if (!IsMessage(got.outcome)) TraceInputEnd(FindInputEnd(got.outcome));
        return pmrcEOF;
    }
    if (got.end == GetEnd::kReadWaitOver && got.outcome.compCode == MQCC_OK) {
        // The clock jumped forward, so no MQGET was made. The outcome is the message of an earlier Read,
        // which must not be returned again.
        TraceInputEnd(InputEnd::kEmptyQueue);
        return pmrcEOF;
    }
    return pmrcOK;
}

// Returns whether a message that was backed out before ends the input because it equals the previous record.
// The comparison takes the length of the message even if the previous record is shorter. Without
// checkpointing there is no previous record.
bool EndsInputAsDuplicate(const void* record, std::uint32_t length, MQLONG backoutCount) {
    if (backoutCount <= 0) return false;
    TraceJobEvent(Severity::kWarning,
                  FormatText("Potential duplicate message found (BackoutCount: %d).", backoutCount));
    if (!RecordBufferExists() || !EqualsKeptRecord(record, length)) return false;
    TraceJobEvent(Severity::kWarning, "Message identical to previous.");
    if (Setting().TDM) {
        TraceJobEvent(Severity::kWarning, "Generating EOF per request (keyword TDM: yes)");
        return true;
    }
    TraceJobEvent(Severity::kInfo, "Returning message and continuing (keyword TDM: no)");
    return false;
}

ReturnCode CommitMessage() {
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    MQCMIT(ConnectionHandle(), &compCode, &reason);
    if (compCode == MQCC_OK) return pmrcOK;
    ReportError(compCode == MQCC_WARNING ? Severity::kWarning : Severity::kError, kFunction,
                FormatNumbered<Message::kCommitFailed>(static_cast<long>(reason)));
    return pmrcFailure;
}

void KeepAsPrevious(const void* record, std::uint32_t length) {
    if (state.KeepPreviousFlag && RecordBufferExists()) KeepRecord(record, length);
}

ReturnCode ReadFromQueue(void* buffer, std::uint32_t& length) {
    const GetResult got = GetMessage(buffer);
    ReturnCode rc = ClassifyWait(got);
    if (rc == pmrcOK) rc = ClassifyGet(got.outcome);
    if (rc != pmrcOK) return rc;

    const auto messageLength = static_cast<std::uint32_t>(got.outcome.dataLength);
    if (EndsInputAsDuplicate(buffer, messageLength, got.backoutCount)) return pmrcEOF;
    const bool savesRecord = Setting().CKFILE && CkPtTaken();
    if (savesRecord) {
        rc = SaveRecord(buffer, messageLength);
        if (rc == pmrcOK) rc = CommitMessage();
        if (rc != pmrcOK) return rc;
    }
    if (Setting().LOG) rc = WriteLogRec(buffer, messageLength);
    if (rc != pmrcOK) return rc;
    // SaveRecord has kept the record already.
    if (!savesRecord) KeepAsPrevious(buffer, messageLength);
    length = messageLength;
    return pmrcOK;
}

// Reads from the checkpoint file or, if the replay is at its end, from the queue.
ReturnCode ReadFromReplay(void* buffer, std::uint32_t& length) {
    const ReplayRead read = ReadFromChkPt(buffer, length);
    if (read == ReplayRead::kEndOfReplay) return ReadFromQueue(buffer, length);
    if (read == ReplayRead::kNotSupported) return pmrcNotSupported;
    if (read == ReplayRead::kFailed) return pmrcFailure;
    KeepAsPrevious(buffer, length);
    return pmrcOK;
}

void TraceRecord(const void* record, std::uint32_t length) {
    constexpr std::uint32_t kTracedBytes = 20;
    if (!TraceAdmits(TraceLevel::kIoBuffers)) return;
    FormatText("message length: %d, begins: ", static_cast<int>(length));
    TraceLine(TraceLevel::kIoBuffers, Severity::kInfo, kFunction,
              AppendBytes(record, std::min(length, kTracedBytes)));
}

}  // namespace

ReturnCode ReadRecord(void* buffer, std::uint32_t& length) {
    length = 0;
    if (QueueHandle() == MQHO_NONE) {
        ReportError(Severity::kError, kFunction,
                    FormatNumbered<Message::kReadWithoutQueue>(Setting().QMGR, Setting().QNM));
        return pmrcFailure;
    }
    ReturnCode rc = pmrcOK;
    if (CkPtPending()) rc = DoGetPos();
    if (rc == pmrcOK) rc = ReplayFromCkPt() ? ReadFromReplay(buffer, length) : ReadFromQueue(buffer, length);
    if (rc != pmrcOK) return rc;

    CountMessage();
    if (Setting().MqCheckpointMode) EndReplay();
    TraceRecord(buffer, length);
    return pmrcOK;
}

void SetKeepPrevious(bool keep) {
    state.KeepPreviousFlag = keep;
}

}  // namespace mqamod
