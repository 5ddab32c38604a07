// SPDX-License-Identifier: Apache-2.0
#include "recovery/message_log.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "params/host_attributes.h"
#include "params/settings.h"
#include "platform/assert.h"
#include "platform/os.h"

namespace mqamod {

namespace {

struct LogState {
    // Open sets this. Close and Shut clear it, and so do the next Open and a failed write that ends the
    // logging.
    std::FILE* stream;
    // Says whether the last CloseLogFile kept the file. A CloseLogFile that deletes the file clears this.
    bool preserved;
};
LogState log;

ReturnCode FailOpen(const char* reason) {
    ReportError(Severity::kError, "OpenLogFile",
                FormatNumbered<Message::kLogOpenFailed>(Setting().logPath, reason), " ");
    return pmrcFailure;
}

void TraceRecord(const void* record, std::uint32_t length) {
    constexpr std::uint32_t kTracedBytes = 40;
    if (!TraceAdmits(TraceLevel::kIoBuffers)) return;
    const std::uint32_t traced = std::min(length, kTracedBytes);
    TraceLine(TraceLevel::kIoBuffers, Severity::kInfo, "WriteLogRec",
              FormatText("Logging %d byte record.", static_cast<int>(length)));
    FormatText("beginning %d chars: ", static_cast<int>(traced));
    TraceLine(TraceLevel::kIoBuffers, Severity::kInfo, "WriteLogRec", AppendBytes(record, traced));
}

// A failed write ends the load or, if TLF allows it, only the logging.
ReturnCode HandleShortWrite() {
    const Severity severity = Setting().TLF ? Severity::kError : Severity::kWarning;
    ReportStreamError(severity, "WriteLogRec", " ", "fwrite", Activity::kLog, StreamReason(log.stream));
    if (Setting().TLF) return pmrcFailure;
    DropLogStream();
    StopLogging();
    ReportError(Severity::kInfo, "WriteLogRec", "continuing without Log");
    return pmrcOK;
}

}  // namespace

ReturnCode OpenLogFile() {
    const char* path = Setting().logPath;
    const char* text = "Log file exists, will append";
    const char* mode = "rb+";
    if (std::FILE* probe = std::fopen(path, "rb")) {
        (void)std::fclose(probe);
    } else if (errno == ENOENT) {
        text = "Log file doen't exists, will create";
        mode = "wb+";
    } else {
        return FailOpen(std::strerror(errno));
    }
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, "OpenLogFile", text);

    log.stream = std::fopen(path, mode);
    if (log.stream == nullptr) return FailOpen(std::strerror(errno));
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, "OpenLogFile", "Log opened");
    return pmrcOK;
}

ReturnCode WriteLogRec(const void* record, std::uint32_t length) {
    MQAMOD_ASSERT(LogIsOpen());
    TraceRecord(record, length);
    if (std::fwrite(record, 1, length, log.stream) != length) return HandleShortWrite();
    if (std::fflush(log.stream) == 0) return pmrcOK;
    ReportStreamError(Severity::kError, "WriteLogRec", "after log write", "fflush", Activity::kLog,
                      StreamReason(log.stream));
    return pmrcFailure;
}

void CloseLogFile() {
    constexpr char kFunction[] = "CloseLogFile";
    const char* path = Setting().logPath;
    DropLogStream();
    if (PreserveRestartInfo()) {
        TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
                  FormatText("Preserving log file ('%s').", path));
        log.preserved = true;
        return;
    }
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
              FormatText("Deleting log file ('%s').", path));
    if (DeleteByCommand(path) == -1) {
        TraceLine(TraceLevel::kJobEvents, Severity::kWarning, kFunction,
                  FormatText("Unable to delete log file (%s). Reason '%s'", path, std::strerror(errno)));
    }
    log.preserved = false;
}

bool LogIsOpen() {
    return log.stream != nullptr;
}

bool LogPreserved() {
    return log.preserved;
}

void DropLogStream() {
    if (log.stream != nullptr) (void)std::fclose(log.stream);
    log.stream = nullptr;
}

}  // namespace mqamod
