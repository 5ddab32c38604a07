#include "recovery/restart.h"

#include <cstdio>
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
#include "recovery/checkpoint_records.h"
#include "recovery/position.h"

namespace {

bool replayFromCkPt;  // written only here

constexpr char kMain[] = "PIDMMain";

ReturnCode Fail(const char* function, const char* message) {
    ReportError(Severity::Error, function, message);
    return pmrcFailure;
}

ReturnCode FailStream(const char* function, const char* message, const char* failingCall,
                      const char* reason) {
    ReportStreamError(Severity::Error, function, message, failingCall, Activity::Checkpoint, reason);
    return pmrcFailure;
}

// A read that brought fewer bytes than it should: the counts in the trace, the call and its reason in the
// error text.
ReturnCode FailRead(const char* function, std::uint64_t expected, std::size_t got, const char* what) {
    const char* reason = StreamReason(CkPtFileStream());
    TraceLine(TraceLevel::JobEvents, Severity::Error, function,
              FormatNumbered<Message::kShortRead>(static_cast<int>(expected), static_cast<int>(got)));
    return FailStream(function, what, "fread", reason);
}

// The host recorded a position whose checkpoint was never carried out: the file still belongs to the previous
// one and holds the records since then. Replay starts at the place that the position names.
ReturnCode SeekToPosition(const PositionData& position) {
    TraceLine(TraceLevel::JobEvents, Severity::Info, kMain,
              FormatText("Repositioning file to sequence: %d", position.CkPtSeq));
    SetCkPtOffset(position.CkPtOffset);
    TraceLine(TraceLevel::JobEvents, Severity::Info, kMain,
              FormatText("CkPtOffset: %d", static_cast<int>(position.CkPtOffset)));
    if (SetStreamPosition(CkPtFileStream(), position.CkPtOffset)) return pmrcOK;
    const char* reason = StreamReason(CkPtFileStream());
    // Prepared and shown nowhere, as ever: what is reported is the activity.
    FormatNumbered<Message::kRepositionFailed>();
    return FailStream(kMain, "reposition", "fsetpos", reason);
}

ReturnCode GoBackTo(const PositionData& position) {
    ReturnCode rc = pmrcOK;
    if (position.CkPtSeq == CkPtSeq() && CkPtPending()) {
        rc = DoGetPos();
        if (rc != pmrcOK) return rc;
    }
    ChooseSyncpoint(MQGMO_SYNCPOINT, MQGMO_SYNCPOINT);
    if (Setting().MqCheckpointMode) {
        rc = BackOutMQ();
        SetCkPtSeq(position.CkPtSeq);
    }
    if (Setting().CKFILE) rc = RepositionFile();
    if (rc != pmrcOK) return rc;
    if (position.CkPtSeq < CkPtSeq()) return Fail(kMain, "requested sequence prior to checkpoint file");
    if (position.CkPtSeq > CkPtSeq()) return SeekToPosition(position);
    return pmrcOK;
}

}  // namespace

ReturnCode SetPosition(const void* position, std::uint32_t length) {
    if (!Setting().CKFILE && !Setting().MqCheckpointMode)
        return Fail(kMain, "Checkpoint support NOT requested");
    if (length != MQAMOD_POSITION_BYTES) return Fail(kMain, "incorrect position data length");
    PositionData requested;
    std::memcpy(&requested, position, sizeof requested);

    // One less: the last record before the checkpoint comes again.
    SetMsgCount(requested.CkPtMsgCount);
    if (requested.CkPtMsgCount != 0) UncountMessage();
    TraceLine(TraceLevel::JobEvents, Severity::Info, kMain,
              FormatText("Reposition requested. Requested sequence: %d", requested.CkPtSeq));
    const ReturnCode rc = GoBackTo(requested);
    if (rc != pmrcOK) return rc;
    ClearCkPtPending();
    replayFromCkPt = true;
    return pmrcOK;
}

ReturnCode RepositionFile() {
    constexpr char kFunction[] = "RepositionFile";
    TraceLine(TraceLevel::JobEvents, Severity::Info, kFunction, "Backing out via rewind of checkpoint file");
    std::FILE* stream = CkPtFileStream();
    if (stream == nullptr) return Fail(kFunction, "empty checkpoint file");
    std::rewind(stream);
    std::int32_t sequence = CkPtSeq();
    const PieceRead read = ReadSequence(stream, &sequence);
    const char* reason = StreamReason(stream);
    SetCkPtSeq(sequence);
    if (read.whole) {
        TraceLine(TraceLevel::JobEvents, Severity::Info, kFunction,
                  FormatText("Checkpoint file sequence: %d", CkPtSeq()));
        return pmrcOK;
    }
    TraceLine(
        TraceLevel::JobEvents, Severity::Error, kFunction,
        FormatNumbered<Message::kShortRead>(static_cast<int>(sizeof sequence), static_cast<int>(read.bytes)));
    if (read.bytes == 0) return Fail(kFunction, "empty checkpoint file");
    return FailStream(kFunction, "checkpoint sequence", "fread", reason);
}

ReturnCode ReadFromChkPt(void* buffer, std::uint32_t* length) {
    constexpr char kFunction[] = "ReadFromChkPt";
    if (!Setting().CKFILE) return pmrcNotSupported;
    std::FILE* stream = CkPtFileStream();
    if (stream == nullptr) {
        ReportError(Severity::Error, kFunction, "checkpoint", "fgetpos");
        return pmrcFailure;
    }
    std::int64_t offset = 0;
    if (!GetStreamPosition(stream, &offset)) {
        return FailStream(kFunction, "checkpoint", "fgetpos", StreamReason(stream));
    }
    SetCkPtOffset(offset);

    std::uint64_t recordLength = 0;
    const PieceRead lengthRead = ReadRecordLength(stream, &recordLength);
    if (!lengthRead.whole) {
        if (!lengthRead.atEnd)
            return FailRead(kFunction, sizeof recordLength, lengthRead.bytes, "checkpoint record length");
        TraceLine(TraceLevel::JobEvents, Severity::Info, kFunction, "EOF on Checkpoint file");
        replayFromCkPt = false;
        return pmrcOK;
    }
    const char* reason = StreamReason(stream);
    TraceLine(TraceLevel::IoEvents, Severity::Info, kFunction,
              FormatText("Checkpoint record length: %d", static_cast<int>(recordLength)));
    if (recordLength > static_cast<std::uint64_t>(Setting().BKSZ)) {
        TraceLine(
            TraceLevel::JobEvents, Severity::Error, kFunction,
            FormatNumbered<Message::kRecordLengthInvalid>(static_cast<int>(recordLength), Setting().BKSZ));
        return FailStream(kFunction, "checkpoint record length", nullptr, reason);
    }
    const PieceRead bodyRead = ReadRecordBody(stream, buffer, recordLength);
    if (!bodyRead.whole) return FailRead(kFunction, recordLength, bodyRead.bytes, "checkpoint record body");
    *length = static_cast<std::uint32_t>(recordLength);
    return pmrcOK;
}

bool ReplayFromCkPt() {
    return replayFromCkPt;
}

void ClearReplayFromCkPt() {
    replayFromCkPt = false;
}
