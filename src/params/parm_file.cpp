// SPDX-License-Identifier: Apache-2.0
#include "params/parm_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "diag/error_text.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "params/check_parm.h"
#include "params/keyword_text.h"
#include "params/settings.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "ReadParmFile";
constexpr int kLineBytes = 512;

// Holds the path of the file. Only SetParmFilePath writes it.
struct ParmFileState {
    char path[kPathBytes];  // empty when the module is loaded; replaced by each Init with -PARMFILE
};
ParmFileState state;

ReturnCode Fail(const char* message) {
    ReportError(Severity::kError, kFunction, message);
    return pmrcFailure;
}

ReturnCode ReadLine(const char* line) {
    if (line[0] == '#') return pmrcOK;
    TokenList tokens;
    ReturnCode rc = pmrcOK;
    switch (Tokenize(line, std::strlen(line), &tokens)) {
        case Tokenized::kTooMany: rc = Fail("Too many parameters"); break;
        case Tokenized::kNoMemory: rc = Fail("memory allocation failed"); break;
        case Tokenized::kDone:
            // The help promises that empty lines are ignored.
            if (tokens.count > 0) {
                std::int32_t index = 0;
                rc = CheckParm(tokens.slots, tokens.count, &index);
            }
    }
    ReleaseTokens(&tokens);
    return rc;
}

ReturnCode ReadLines(std::FILE* file) {
    char line[kLineBytes];
    while (std::fgets(line, sizeof line, file) != nullptr) {
        const ReturnCode rc = ReadLine(line);
        if (rc != pmrcOK) return rc;
    }
    if (std::feof(file) != 0) return pmrcOK;
    ReportStreamError(Severity::kError, kFunction, FormatNumbered<Message::kParameterFileReadFailed>(),
                      "fgets", Activity::kParameter, "parameter");
    return pmrcFailure;
}

}  // namespace

void SetParmFilePath(const char* path) {
    std::snprintf(state.path, sizeof state.path, "%s", path);
}

ReturnCode ReadParmFile() {
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, kFunction,
              FormatText("Opening parameter file name: '%s'", state.path));
    std::FILE* file = std::fopen(state.path, "r");
    if (file == nullptr) return Fail(FormatNumbered<Message::kParameterFileOpenFailed>(std::strerror(errno)));
    const ReturnCode rc = ReadLines(file);
    (void)std::fclose(file);
    return rc;
}

}  // namespace mqamod
