// SPDX-License-Identifier: Apache-2.0
#include "recovery/checkpoint_file.h"

#include <cerrno>
#include <cstring>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "params/host_attributes.h"
#include "params/record_buffer.h"
#include "params/settings.h"
#include "platform/os.h"
#include "recovery/back_out.h"
#include "recovery/position.h"

namespace mqamod {

namespace {

struct CkPtFileState {
    // Open sets this. The release at Close and Shut clears it, and so does a rewrite that failed while the
    // file was closed. It survives a Shut that failed at the queue, until the next Open that opens the queue.
    std::FILE* CkPtFileStream;
    // Says whether bytes written to the stream were lost before they reached the file. Closing the stream
    // clears this.
    bool lostBytes;
    // This is the errno of the call that lost the bytes. It is meaningless unless lostBytes is set.
    int lostError;
    // Says whether the stream has been read since it was opened or SaveRecord positioned it. NoteCkPtFileRead
    // sets this; SaveRecord clears it once it has positioned the stream, and so does closing the stream.
    bool wasRead;
    // Says whether the file was ever released. If so, Open does not look for an existing file but creates an
    // empty one. Every Close or Shut that reaches the checkpoint file sets this, even if none was open.
    // Nothing clears it.
    bool FreshCkPtFile;
    // Says whether the last release kept the file. A release that deletes the file clears this.
    bool preserved;
    // This buffer of the stream is large enough that a record of usual size reaches the file in one write.
    char streamBuffer[65536];
};
CkPtFileState state;

constexpr char kOpenFunction[] = "OpenCkPtFile";

ReturnCode FailOpen(const char* function, const char* reason) {
    ReportError(Severity::kError, function,
                FormatNumbered<Message::kCheckpointOpenFailed>(Setting().checkpointPath, reason));
    return pmrcFailure;
}

// Reports that a message could not be saved, and backs it out.
//   error  the errno of the failing call
ReturnCode FailSave(const char* failingCall, int error) {
    if (state.CkPtFileStream != nullptr) {
        ReportStreamError(Severity::kError, "PIDMMain", "checkpoint", failingCall, Activity::kCheckpoint,
                          StreamReason(state.CkPtFileStream, error));
    } else {
        ReportError(Severity::kError, "PIDMMain", "checkpoint", failingCall);
    }
    // The failure that has been reported matters more than one of the back-out.
    (void)BackOutMQ();
    return pmrcFailure;
}

// Positions the stream if it was read, as C requires before a write. Without this the record may end up in
// the buffer that was read ahead and never reach the file, although every call succeeds.
bool PrepareToWrite(std::int64_t offset) {
    if (!state.wasRead) return true;
    if (!SetStreamPosition(state.CkPtFileStream, offset)) return false;
    state.wasRead = false;
    return true;
}

// With MQ-based checkpoints, writes one record now so that a full disk is noticed at Open.
ReturnCode ProbeDiskSpace() {
    const std::size_t bytes = static_cast<std::size_t>(Setting().BKSZ) + kRecordLengthBytes;
    // Without the flush the record would only fill the buffer of the stream.
    const bool written = std::fwrite(KeptRecordImage(), 1, bytes, state.CkPtFileStream) == bytes;
    if (written && std::fflush(state.CkPtFileStream) == 0) return pmrcOK;
    const char* reason = StreamReason(state.CkPtFileStream);
    ReportStreamError(Severity::kError, kOpenFunction, FormatNumbered<Message::kCheckpointDiskFull>(),
                      "fwrite", Activity::kCheckpoint, reason);
    FreeRecordBuffer();
    return pmrcFailure;
}

}  // namespace

ReturnCode OpenCkPtFile() {
    if (!Setting().CKFILE && !Setting().MqCheckpointMode) return pmrcOK;
    if (!RecordBufferExists()) {
        ReportError(Severity::kError, kOpenFunction, "memory allocation failed");
        return pmrcFailure;
    }
    const char* path = Setting().checkpointPath;
    TraceLine(TraceLevel::kAlways, Severity::kInfo, kOpenFunction,
              FormatText("Checkpoint/restart via pathname: '%s'", path));

    bool forRecovery = false;
    if (!state.FreshCkPtFile) {
        if (std::FILE* probe = std::fopen(path, "rb")) {
            TraceLine(TraceLevel::kAlways, Severity::kInfo, kOpenFunction,
                      "Checkpoint pathname exists, will be used for recovery");
            forRecovery = true;
            (void)std::fclose(probe);
        } else if (errno != ENOENT) {
            // The file may exist although it cannot be opened, and creating a new one could destroy it.
            return FailOpen(kOpenFunction, std::strerror(errno));
        }
    }
    const ReturnCode rc = ReopenCkPtFile(forRecovery ? "rb+" : "wb+", kOpenFunction);
    if (rc != pmrcOK) return rc;
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kOpenFunction,
              FormatText("Checkpoint file ('%s') open successful", path));
    ClearRecordBuffer();
    if (Setting().MqCheckpointMode && !forRecovery) return ProbeDiskSpace();
    return pmrcOK;
}

ReturnCode SaveRecord(const void* record, std::uint32_t length) {
    std::int64_t offset = 0;
    if (RecordBufferExists()) KeepRecord(record, length);
    if (state.CkPtFileStream == nullptr || !GetStreamPosition(state.CkPtFileStream, offset)) {
        return FailSave("fgetpos", errno);
    }
    SetCkPtOffset(offset);

    if (state.lostBytes) return FailSave("fflush", state.lostError);
    if (!PrepareToWrite(offset)) return FailSave("fsetpos", errno);
    const std::size_t bytes = length + kRecordLengthBytes;
    const bool written = std::fwrite(KeptRecordImage(), 1, bytes, state.CkPtFileStream) == bytes;
    if (written && std::fflush(state.CkPtFileStream) == 0) return pmrcOK;
    const int error = errno;
    NoteLostBytes();
    return FailSave(written ? "fflush" : "fwrite", error);
}

// The stream's error indicator cannot replace lostBytes: repositioning the stream clears it, and a failed
// read sets it too.
void NoteLostBytes() {
    if (state.CkPtFileStream == nullptr || std::ferror(state.CkPtFileStream) == 0) return;
    state.lostBytes = true;
    state.lostError = errno;
}

void ReleaseCkPtFile() {
    constexpr char kFunction[] = "CloseAll";
    const bool wasOpen = state.CkPtFileStream != nullptr;
    DropCkPtFileStream();
    state.FreshCkPtFile = true;
    if (!wasOpen && !state.preserved) return;

    const char* path = Setting().checkpointPath;
    if (PreserveRestartInfo()) {
        TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
                  FormatText("Preserving checkpoint file ('%s').", path));
        state.preserved = true;
        return;
    }
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
              FormatText("Deleting checkpoint file ('%s').", path));
    if (DeleteByCommand(path) == -1) {
        TraceLine(
            TraceLevel::kJobEvents, Severity::kWarning, kFunction,
            FormatText("Unable to delete checkpoint file (%s). Reason '%s'", path, std::strerror(errno)));
    }
    state.preserved = false;
}

std::FILE* CkPtFileStream() {
    return state.CkPtFileStream;
}

ReturnCode ReopenCkPtFile(const char* mode, const char* function) {
    DropCkPtFileStream();
    state.CkPtFileStream = std::fopen(Setting().checkpointPath, mode);
    if (state.CkPtFileStream == nullptr) return FailOpen(function, std::strerror(errno));
    (void)std::setvbuf(state.CkPtFileStream, state.streamBuffer, _IOFBF, sizeof state.streamBuffer);
    return pmrcOK;
}

void DropCkPtFileStream() {
    if (state.CkPtFileStream != nullptr) (void)std::fclose(state.CkPtFileStream);
    state.CkPtFileStream = nullptr;
    state.lostBytes = false;
    state.wasRead = false;
}

void NoteCkPtFileRead() {
    state.wasRead = true;
}

}  // namespace mqamod
