// SPDX-License-Identifier: Apache-2.0
#include "recovery/replay.h"

#include <cstdio>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "params/settings.h"
#include "platform/os.h"
#include "recovery/checkpoint_file.h"
#include "recovery/checkpoint_records.h"
#include "recovery/position.h"

namespace mqamod {

namespace {

struct ReplayState {
    // Says whether records come from the checkpoint file. A successful SetPos sets this. The Read that meets
    // the end of the file clears it, and so does an Open that opens the queue. Close and Shut leave it.
    bool ReplayFromCkPt;
};
ReplayState state;

constexpr char kReadFunction[] = "ReadFromChkPt";

ReplayRead Fail(const char* message, const char* failingCall, const char* reason) {
    ReportStreamError(Severity::kError, kReadFunction, message, failingCall, Activity::kCheckpoint, reason);
    return ReplayRead::kFailed;
}

// Reports a read that returned fewer bytes than expected: the counts go to the trace, the call and its reason
// to the error text.
ReplayRead FailShortRead(std::uint64_t expected, std::size_t got, const char* what) {
    const char* reason = StreamReason(CkPtFileStream());
    TraceLine(TraceLevel::kJobEvents, Severity::kError, kReadFunction,
              FormatNumbered<Message::kShortRead>(static_cast<int>(expected), static_cast<int>(got)));
    return Fail(what, "fread", reason);
}

}  // namespace

bool ReplayFromCkPt() {
    return state.ReplayFromCkPt;
}

void BeginReplay() {
    state.ReplayFromCkPt = true;
}

void EndReplay() {
    state.ReplayFromCkPt = false;
}

ReturnCode RepositionFile() {
    constexpr char kFunction[] = "RepositionFile";
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
              "Backing out via rewind of checkpoint file");
    std::FILE* stream = CkPtFileStream();
    if (stream == nullptr) {
        ReportError(Severity::kError, kFunction, "empty checkpoint file");
        return pmrcFailure;
    }
    std::rewind(stream);
    NoteCkPtFileRead();
    std::int32_t sequence = CkPtSeq();
    const PieceRead read = ReadSequence(stream, sequence);
    const char* reason = StreamReason(stream);
    SetCkPtSeq(sequence);
    if (read.complete) {
        TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
                  FormatText("Checkpoint file sequence: %d", CkPtSeq()));
        return pmrcOK;
    }
    TraceLine(
        TraceLevel::kJobEvents, Severity::kError, kFunction,
        FormatNumbered<Message::kShortRead>(static_cast<int>(sizeof sequence), static_cast<int>(read.bytes)));
    if (read.bytes == 0) {
        ReportError(Severity::kError, kFunction, "empty checkpoint file");
    } else {
        ReportStreamError(Severity::kError, kFunction, "checkpoint sequence", "fread", Activity::kCheckpoint,
                          reason);
    }
    return pmrcFailure;
}

ReplayRead ReadFromChkPt(void* buffer, std::uint32_t& length) {
    if (!Setting().CKFILE) return ReplayRead::kNotSupported;
    std::FILE* stream = CkPtFileStream();
    if (stream == nullptr) {
        ReportError(Severity::kError, kReadFunction, "checkpoint", "fgetpos");
        return ReplayRead::kFailed;
    }
    std::int64_t offset = 0;
    if (!GetStreamPosition(stream, offset)) return Fail("checkpoint", "fgetpos", StreamReason(stream));
    SetCkPtOffset(offset);

    NoteCkPtFileRead();
    std::uint64_t recordLength = 0;
    const PieceRead lengthRead = ReadRecordLength(stream, recordLength);
    if (!lengthRead.complete) {
        if (!lengthRead.atEnd)
            return FailShortRead(sizeof recordLength, lengthRead.bytes, "checkpoint record length");
        TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kReadFunction, "EOF on Checkpoint file");
        EndReplay();
        return ReplayRead::kEndOfReplay;
    }
    const char* reason = StreamReason(stream);
    TraceLine(TraceLevel::kIoEvents, Severity::kInfo, kReadFunction,
              FormatText("Checkpoint record length: %d", static_cast<int>(recordLength)));
    if (recordLength > static_cast<std::uint64_t>(Setting().BKSZ)) {
        TraceLine(
            TraceLevel::kJobEvents, Severity::kError, kReadFunction,
            FormatNumbered<Message::kRecordLengthInvalid>(static_cast<int>(recordLength), Setting().BKSZ));
        return Fail("checkpoint record length", nullptr, reason);
    }
    const PieceRead bodyRead = ReadRecordBody(stream, buffer, recordLength);
    if (!bodyRead.complete) return FailShortRead(recordLength, bodyRead.bytes, "checkpoint record body");
    length = static_cast<std::uint32_t>(recordLength);
    return ReplayRead::kRecord;
}

}  // namespace mqamod
