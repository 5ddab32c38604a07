// SPDX-License-Identifier: Apache-2.0
#include "recovery/checkpoint_rewrite.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "params/record_buffer.h"
#include "params/settings.h"
#include "platform/os.h"
#include "recovery/checkpoint_file.h"
#include "recovery/checkpoint_records.h"
#include "recovery/position.h"
#include "recovery/replay.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "ResetCkptFile";

ReturnCode Fail(const char* message, const char* failingCall = nullptr) {
    ReportError(Severity::kError, kFunction, message, failingCall);
    return pmrcFailure;
}

// Reports a write or read that moved fewer bytes than expected: the counts go to the trace, the call and its
// reason to the error text.
template <Message kMessage>
ReturnCode FailCount(std::size_t expected, std::size_t moved, const char* what, const char* failingCall,
                     std::FILE* stream, Activity activity) {
    const char* reason = StreamReason(stream);
    TraceLine(TraceLevel::kJobEvents, Severity::kError, kFunction,
              FormatNumbered<kMessage>(static_cast<int>(expected), static_cast<int>(moved)));
    ReportStreamError(Severity::kError, kFunction, what, failingCall, activity, reason);
    return pmrcFailure;
}

// Writes nothing after a flush that failed unnoticed and lost bytes: a record in the place of the lost header
// would be read as a header.
ReturnCode WriteBytes(std::FILE* stream, Activity activity, const void* bytes, std::size_t count,
                      const char* what) {
    const std::size_t written = std::ferror(stream) == 0 ? std::fwrite(bytes, 1, count, stream) : 0;
    if (written == count) return pmrcOK;
    return FailCount<Message::kShortWrite>(count, written, what, "fwrite", stream, activity);
}

ReturnCode WriteHeader(std::FILE* stream, Activity activity) {
    const std::int32_t sequence = CkPtSeq();
    static_assert(sizeof sequence == kSequenceBytes);
    return WriteBytes(stream, activity, &sequence, sizeof sequence, "checkpoint file header record (seq)");
}

std::size_t KeptRecordBytes() {
    return static_cast<std::size_t>(KeptRecordLength()) + kRecordLengthBytes;
}

// Truncates the file and begins it again. Every record in it has been delivered.
ReturnCode TruncateAndRewrite() {
    ReturnCode rc = ReopenCkPtFile("wb+", kFunction);
    if (rc != pmrcOK) return rc;
    rc = WriteHeader(CkPtFileStream(), Activity::kCheckpoint);
    if (rc != pmrcOK) return rc;
    // This trace statement flushes all streams, and with them the header. If that flush fails, the next
    // WriteBytes notices it. Do not remove the statement, and do not flush the stream here: the order of the
    // calls on the file is part of the contract.
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
              FormatText("Checkpoint file starting checkpoint sequence %d", CkPtSeq()));
    if (KeptRecordLength() == 0) return pmrcOK;
    return WriteBytes(CkPtFileStream(), Activity::kCheckpoint, KeptRecordImage(), KeptRecordBytes(),
                      "appending last record read");
}

// Copies the records after the position of the stream, each through the scratch area: the last-record buffer
// must not change, since the next checkpoint and the duplicate test need it.
ReturnCode CopyRecords(std::FILE* from, std::FILE* to, char* scratch) {
    while (true) {
        std::uint64_t length = 0;
        const PieceRead lengthRead = ReadRecordLength(from, length);
        if (!lengthRead.complete) {
            if (lengthRead.atEnd) return pmrcOK;
            return FailCount<Message::kShortRead>(sizeof length, lengthRead.bytes, "checkpoint record length",
                                                  "fread", from, Activity::kCheckpoint);
        }
        // The replay would refuse this length, and the scratch area has no room for it.
        if (length > static_cast<std::uint64_t>(Setting().BKSZ)) {
            const char* reason = StreamReason(from);
            TraceLine(
                TraceLevel::kJobEvents, Severity::kError, kFunction,
                FormatNumbered<Message::kRecordLengthInvalid>(static_cast<int>(length), Setting().BKSZ));
            ReportStreamError(Severity::kError, kFunction, "checkpoint record length", nullptr,
                              Activity::kCheckpoint, reason);
            return pmrcFailure;
        }
        std::memcpy(scratch, &length, sizeof length);
        const PieceRead bodyRead = ReadRecordBody(from, scratch + sizeof length, length);
        if (!bodyRead.complete) {
            return FailCount<Message::kShortRead>(length, bodyRead.bytes, "checkpoint record body", "fread",
                                                  from, Activity::kCheckpoint);
        }
        const ReturnCode rc = WriteBytes(to, Activity::kTemp, scratch, sizeof length + length, "checkpoint");
        if (rc != pmrcOK) return rc;
    }
}

ReturnCode WriteTempFile(std::FILE* temp) {
    ReturnCode rc = WriteHeader(temp, Activity::kTemp);
    if (rc != pmrcOK) return rc;
    rc = WriteBytes(temp, Activity::kTemp, KeptRecordImage(), KeptRecordBytes(),
                    "prepending last record read");
    if (rc != pmrcOK) return rc;
    char* scratch =
        static_cast<char*>(std::malloc(static_cast<std::size_t>(Setting().BKSZ) + kRecordLengthBytes));
    if (scratch == nullptr) return Fail("memory allocation failed");
    rc = CopyRecords(CkPtFileStream(), temp, scratch);
    std::free(scratch);
    return rc;
}

// Flushes the temporary file. It is about to become the only copy, so all of it must reach the operating
// system before the checkpoint file is deleted.
ReturnCode FlushTempFile(std::FILE* temp) {
    if (std::fflush(temp) == 0 && std::ferror(temp) == 0) return pmrcOK;
    const char* reason = StreamReason(temp);
    ReportStreamError(Severity::kError, kFunction, "checkpoint", "fflush", Activity::kTemp, reason);
    return pmrcFailure;
}

// Replaces the checkpoint file with the temporary file. This uses file calls and not the command processor:
// its rename command refuses a new name that contains a directory, and would do so after the checkpoint file
// was deleted.
ReturnCode ReplaceCkPtFile() {
    const char* temp = Setting().FilePathTemp;
    const char* path = Setting().checkpointPath;
    if (std::remove(path) != 0 && errno != ENOENT)
        return Fail(FormatNumbered<Message::kCheckpointDeleteFailed>(temp, std::strerror(errno)));
    if (std::rename(temp, path) != 0)
        return Fail(FormatNumbered<Message::kTemporaryFileRenameFailed>(temp, std::strerror(errno)));
    return ReopenCkPtFile("rb+", kFunction);
}

// Moves the stream past the header and the prepended record. The bytes are read to verify that they exist.
ReturnCode SkipDelivered(std::size_t bytes) {
    NoteCkPtFileRead();
    char skipped[4096];
    std::size_t done = 0;
    while (done < bytes) {
        const std::size_t wanted = bytes - done < sizeof skipped ? bytes - done : sizeof skipped;
        const std::size_t got = std::fread(skipped, 1, wanted, CkPtFileStream());
        done += got;
        if (got < wanted) {
            return FailCount<Message::kShortRead>(bytes, done, "'positioning' read", "fread",
                                                  CkPtFileStream(), Activity::kCheckpoint);
        }
    }
    return pmrcOK;
}

// Rewrites the file through the temporary file, because the records after the position of the stream have not
// been delivered yet and must survive.
ReturnCode RewriteDuringReplay() {
    const char* temp = Setting().FilePathTemp;
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction, FormatText("FilePathTemp '%s'", temp));
    std::FILE* TempFileStream = std::fopen(temp, "w+b");
    if (TempFileStream == nullptr)
        return Fail(FormatNumbered<Message::kTemporaryFileOpenFailed>(temp, std::strerror(errno)), "fopen");

    ReturnCode rc = WriteTempFile(TempFileStream);
    if (rc == pmrcOK) rc = FlushTempFile(TempFileStream);
    (void)std::fclose(TempFileStream);
    if (rc != pmrcOK) return rc;

    DropCkPtFileStream();
    rc = ReplaceCkPtFile();
    if (rc != pmrcOK) return rc;
    return SkipDelivered(kSequenceBytes + KeptRecordBytes());
}

}  // namespace

ReturnCode ResetCkptFile() {
    if (CkPtFileStream() == nullptr) return Fail("empty checkpoint file");
    // A Shut that failed at the queue leaves the file open, and a failed Init after it allocates no buffer.
    if (!RecordBufferExists()) return Fail("memory allocation failed");
    return ReplayFromCkPt() ? RewriteDuringReplay() : TruncateAndRewrite();
}

}  // namespace mqamod
