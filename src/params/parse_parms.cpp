// SPDX-License-Identifier: Apache-2.0
#include "params/parse_parms.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "diag/error_text.h"
#include "diag/identification.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "mqi/client_channel.h"
#include "params/check_parm.h"
#include "params/keyword_text.h"
#include "params/parameter_report.h"
#include "params/parm_file.h"
#include "params/record_buffer.h"
#include "params/settings.h"
#include "platform/os.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "ParseParms";

ReturnCode Fail(const char* message) {
    ReportError(Severity::kError, kFunction, message);
    return pmrcFailure;
}

void TraceJobEvent(const char* text) {
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction, text);
}

// -PARMFILE is the only keyword that CheckParm does not know, and the only one whose dash is required.
ReturnCode TakeParmFile(const TokenList& tokens, std::int32_t* index) {
    if (*index + 1 >= tokens.count)
        return Fail(FormatNumbered<Message::kArgumentMissing>(tokens.slots[*index]));
    const char* path = tokens.slots[*index + 1];
    const std::size_t length = std::strlen(path);
    if (length > kMaxPathCharacters) {
        return Fail(FormatNumbered<Message::kParameterFilePathTooLong>(
            "pathname", path, static_cast<int>(length), kMaxPathCharacters));
    }
    SetParmFilePath(path);
    *index += 2;
    return pmrcOK;
}

ReturnCode ReadKeywords(const TokenList& tokens, bool* parmFileGiven) {
    if (tokens.count == 0) return Fail("Empty initialization string");
    std::int32_t index = 0;
    ReturnCode rc = pmrcOK;
    while (index < tokens.count && rc == pmrcOK) {
        UpperCase(tokens.slots[index]);
        if (std::strcmp(tokens.slots[index], "-PARMFILE") == 0) {
            rc = TakeParmFile(tokens, &index);
            *parmFileGiven = true;
        } else {
            rc = CheckParm(tokens.slots, tokens.count, &index);
        }
    }
    return rc;
}

ReturnCode ReadInitString(const char* initString, std::int32_t length, bool* parmFileGiven) {
    if (length <= 0 || initString == nullptr) return Fail("Empty initialization string");
    TokenList tokens;
    ReturnCode rc = pmrcOK;
    switch (Tokenize(initString, static_cast<std::size_t>(length), &tokens)) {
        case Tokenized::kTooMany: rc = Fail("Too many init string parameters"); break;
        case Tokenized::kNoMemory: rc = Fail("memory allocation failed"); break;
        case Tokenized::kDone: rc = ReadKeywords(tokens, parmFileGiven);
    }
    ReleaseTokens(&tokens);
    return rc;
}

ReturnCode CheckAcrossKeywords() {
    Settings& settings = writableSettings;
    if (!settings.qmgrGiven) return Fail(FormatNumbered<Message::kQueueManagerNameMissing>("QMGR"));
    if (!settings.qnmGiven) return Fail(FormatNumbered<Message::kQueueNameMissing>("QNM"));
    if (!settings.LOG) {
        settings.TLF = false;
    } else if (settings.TLF && settings.MqCheckpointMode) {
        return Fail(FormatNumbered<Message::kLogAndMqCheckpoints>("TLF", "CKMQ"));
    }
    if (settings.CKFILE && settings.MqCheckpointMode)
        return Fail(FormatNumbered<Message::kFileAndMqCheckpoints>("CKFILE", "CKMQ"));
    return pmrcOK;
}

// The trace file of an earlier Init stays in use until the new one is open, so that a failure is traced
// there.
ReturnCode OpenTraceFile() {
    const Settings& settings = Setting();
    TraceJobEvent(FormatText("Trace being directed to pathname: '%s'", settings.tracePath));
    std::FILE* file = std::fopen(settings.tracePath, "a");
    if (file == nullptr)
        return Fail(FormatNumbered<Message::kTraceFileOpenFailed>(settings.tracePath, std::strerror(errno)));
    UseTraceFile(file);
    ShowModuleID();
    return pmrcOK;
}

ReturnCode StartTrace() {
    const int level = StoredTraceLevel();
    TraceLine(TraceLevel::kAlways, Severity::kInfo, kFunction, FormatText("Trace Level: %d", level));
    SetTraceLevel(level + 1);
    if (level >= 1) {
        const ReturnCode rc = OpenTraceFile();
        if (rc != pmrcOK) return rc;
    }
    TraceJobEvent("Paramters in effect:");
    TraceJobEvent(FormatText("Trace Level: %d", StoredTraceLevel()));
    return pmrcOK;
}

ReturnCode ResolveClientChannel() {
    constexpr char kFromEnvironment[] = "%s (keyword:%s) was not specified.\n%s";
    const Settings& settings = Setting();
    if (settings.chnlGiven != settings.srvrGiven)
        return Fail(FormatNumbered<Message::kChannelWithoutServer>("CHNL", "SRVR"));
    if (settings.chnlGiven) return pmrcOK;
    SetChannelName("");
    TraceJobEvent(FormatText(kFromEnvironment, "Channel Name", "CHNL",
                             "Channel Name used will be that found in environment variable."));
    SetConnectionName("");
    TraceJobEvent(FormatText(kFromEnvironment, "Server Name", "SRVR",
                             "Server Name used will be that found in environment variable."));
    return pmrcOK;
}

// Writes the report, in which OTENACITY is a number of seconds, and then turns OTENACITY into the number of
// attempts to open the queue.
void ReportAndCountAttempts() {
    Settings& settings = writableSettings;
    settings.OTENACITY = std::max(settings.OTENACITY, settings.OWAIT);
    ReportParametersInEffect();
    settings.OTENACITY /= settings.OWAIT;
}

// Derives the path of the temporary checkpoint file: "MQAMtmp." and the process number, in the directory of
// the checkpoint file.
ReturnCode DeriveTempPath() {
    constexpr char kPrefix[] = "MQAMtmp.";
    Settings& settings = writableSettings;
    const char* path = settings.checkpointPath;
    const char* delimiter = std::strrchr(path, kPathDelimiter);
    const int directoryLength = delimiter == nullptr ? 0 : static_cast<int>(delimiter - path) + 1;
    TraceJobEvent(FormatText("i=%d, PATH_DELIMITER='%c'", directoryLength, kPathDelimiter));

    char processId[16];
    const int processIdLength = std::snprintf(processId, sizeof processId, "%d", CurrentProcessId());
    const int length = directoryLength + static_cast<int>(std::strlen(kPrefix)) + processIdLength;
    if (length > kMaxPathCharacters) {
        return Fail(FormatNumbered<Message::kTemporaryPathTooLong>(length, kMaxPathCharacters));
    }
    std::snprintf(settings.FilePathTemp, sizeof settings.FilePathTemp, "%.*s%s%s", directoryLength, path,
                  kPrefix, processId);
    TraceJobEvent(FormatText("Temporary checkpoint file: '%s'", settings.FilePathTemp));
    return pmrcOK;
}

ReturnCode PrepareCheckpointing() {
    const Settings& settings = Setting();
    if (!settings.CKFILE && !settings.MqCheckpointMode) return pmrcOK;
    const ReturnCode rc = DeriveTempPath();
    if (rc != pmrcOK) return rc;
    if (!AllocateRecordBuffer(static_cast<std::size_t>(settings.BKSZ)))
        return Fail("memory allocation failed");
    return pmrcOK;
}

}  // namespace

ReturnCode ParseParms(const char* initString, std::int32_t length) {
    ResetSettings();
    bool parmFileGiven = false;
    ReturnCode rc = ReadInitString(initString, length, &parmFileGiven);
    if (rc == pmrcOK && parmFileGiven) rc = ReadParmFile();
    if (rc == pmrcOK) rc = CheckAcrossKeywords();
    if (rc == pmrcOK) rc = StartTrace();
    if (rc == pmrcOK) rc = ResolveClientChannel();
    if (rc != pmrcOK) return rc;
    ReportAndCountAttempts();
    return PrepareCheckpointing();
}

}  // namespace mqamod
