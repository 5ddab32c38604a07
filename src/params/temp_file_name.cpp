#include "params/temp_file_name.h"

#include <cstdio>
#include <cstring>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "platform/os.h"

namespace {

constexpr char kFunction[] = "ParseParms";
constexpr char kPrefix[] = "MQAMtmp.";

}  // namespace

ReturnCode BuildTempFileName(const char* checkpointPath, char (&name)[kPathBytes]) {
    const char* delimiter = std::strrchr(checkpointPath, kPathDelimiter);
    const int folderLength = delimiter == nullptr ? 0 : static_cast<int>(delimiter - checkpointPath) + 1;
    TraceLine(TraceLevel::JobEvents, Severity::Info, kFunction,
              FormatText("i=%d, PATH_DELIMITER='%c'", folderLength, kPathDelimiter));

    char processId[16];
    const int processIdLength = std::snprintf(processId, sizeof processId, "%d", CurrentProcessId());
    const int length = folderLength + static_cast<int>(std::strlen(kPrefix)) + processIdLength;
    if (length > kMaxPathCharacters) {
        ReportError(Severity::Error, kFunction,
                    FormatNumbered<Message::kTemporaryPathTooLong>(length, kMaxPathCharacters));
        return pmrcFailure;
    }
    std::snprintf(name, sizeof name, "%.*s%s%s", folderLength, checkpointPath, kPrefix, processId);
    TraceLine(TraceLevel::JobEvents, Severity::Info, kFunction,
              FormatText("Temporary checkpoint file: '%s'", name));
    return pmrcOK;
}
