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

namespace {

struct CkPtFileState {
    std::FILE* CkPtFileStream;
    bool lostBytes;      // bytes written to the stream never reached the file; until it is closed
    int lostError;       // why, as errno said
    bool FreshCkPtFile;  // the file has been released once: no Open looks for one. Never cleared
    bool preserved;      // whether the last close kept the file; survives Shut
};
CkPtFileState state;

// The stream's buffer: large enough that a record of usual size reaches the file in one write.
char streamBuffer[65536];

constexpr char kOpenFunction[] = "OpenCkPtFile";

ReturnCode FailOpen(const char* function, const char* reason) {
    ReportError(Severity::Error, function,
                FormatNumbered<Message::kCheckpointOpenFailed>(Setting().checkpointPath, reason));
    return pmrcFailure;
}

// Saving a message failed: it goes back to the queue. The outcome of the back-out is secondary to the failure
// reported.
ReturnCode FailSave(const char* failingCall) {
    if (state.CkPtFileStream != nullptr) {
        ReportStreamError(Severity::Error, "PIDMMain", "checkpoint", failingCall, Activity::Checkpoint,
                          StreamReason(state.CkPtFileStream));
    } else {
        ReportError(Severity::Error, "PIDMMain", "checkpoint", failingCall);
    }
    (void)BackOutMQ();
    return pmrcFailure;
}

// MQ-based checkpointing takes the room for one record at once, to learn early of a disk that is full.
ReturnCode ProbeDiskSpace() {
    const std::size_t bytes = static_cast<std::size_t>(Setting().BKSZ) + kRecordLengthBytes;
    // What only fills the stream's buffer has taken no room.
    const bool written = std::fwrite(KeptRecordImage(), 1, bytes, state.CkPtFileStream) == bytes;
    if (written && std::fflush(state.CkPtFileStream) == 0) return pmrcOK;
    const char* reason = StreamReason(state.CkPtFileStream);
    ReportStreamError(Severity::Error, kOpenFunction, FormatNumbered<Message::kCheckpointDiskFull>(),
                      "fwrite", Activity::Checkpoint, reason);
    FreeRecordBuffer();
    return pmrcFailure;
}

}  // namespace

ReturnCode OpenCkPtFile() {
    if (!Setting().CKFILE && !Setting().MqCheckpointMode) return pmrcOK;
    if (!RecordBufferExists()) {
        ReportError(Severity::Error, kOpenFunction, "memory allocation failed");
        return pmrcFailure;
    }
    const char* path = Setting().checkpointPath;
    TraceLine(TraceLevel::Always, Severity::Info, kOpenFunction,
              FormatText("Checkpoint/restart via pathname: '%s'", path));

    bool forRecovery = false;
    if (!state.FreshCkPtFile) {
        if (std::FILE* probe = std::fopen(path, "rb")) {
            TraceLine(TraceLevel::Always, Severity::Info, kOpenFunction,
                      "Checkpoint pathname exists, will be used for recovery");
            forRecovery = true;
            (void)std::fclose(probe);
        } else if (errno != ENOENT) {
            // A file that cannot be looked at may well be there: starting a new one could destroy it.
            return FailOpen(kOpenFunction, std::strerror(errno));
        }
    }
    const ReturnCode rc = ReopenCkPtFile(forRecovery ? "rb+" : "wb+", kOpenFunction);
    if (rc != pmrcOK) return rc;
    TraceLine(TraceLevel::JobEvents, Severity::Info, kOpenFunction,
              FormatText("Checkpoint file ('%s') open successful", path));
    ClearRecordBuffer();
    if (Setting().MqCheckpointMode && !forRecovery) return ProbeDiskSpace();
    return pmrcOK;
}

ReturnCode SaveRecord(const void* record, std::uint32_t length) {
    std::int64_t offset = 0;
    if (RecordBufferExists()) KeepRecord(record, length);
    if (state.CkPtFileStream == nullptr || !GetStreamPosition(state.CkPtFileStream, &offset)) {
        return FailSave("fgetpos");
    }
    SetCkPtOffset(offset);

    if (state.lostBytes) {
        errno = state.lostError;
        return FailSave("fflush");
    }
    const std::size_t bytes = length + kRecordLengthBytes;
    const bool written = std::fwrite(KeptRecordImage(), 1, bytes, state.CkPtFileStream) == bytes;
    if (written && std::fflush(state.CkPtFileStream) == 0) return pmrcOK;
    NoteLostBytes();
    return FailSave(written ? "fflush" : "fwrite");
}

// The stream's own mark does not last: going back to a position takes it off, and reads leave the same one.
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
        TraceLine(TraceLevel::JobEvents, Severity::Info, kFunction,
                  FormatText("Preserving checkpoint file ('%s').", path));
        state.preserved = true;
        return;
    }
    TraceLine(TraceLevel::JobEvents, Severity::Info, kFunction,
              FormatText("Deleting checkpoint file ('%s').", path));
    if (DeleteByCommand(path) == -1) {
        TraceLine(
            TraceLevel::JobEvents, Severity::Warning, kFunction,
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
    (void)std::setvbuf(state.CkPtFileStream, streamBuffer, _IOFBF, sizeof streamBuffer);
    return pmrcOK;
}

void DropCkPtFileStream() {
    if (state.CkPtFileStream != nullptr) (void)std::fclose(state.CkPtFileStream);
    state.CkPtFileStream = nullptr;
    state.lostBytes = false;
}
