// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/expected_file_failure.h"

#include <cstring>
#include <optional>

#include "platform/process.h"
#include "tests/failures/checkpoint_look.h"
#include "tests/failures/file_failure_cases.h"
#include "tests/support/expected_error.h"

namespace {

std::string TemporaryName() {
    return kTemporaryFile + std::to_string(platform::CurrentProcessId());
}

bool Starts(const std::string& text, const std::string& begin) {
    return text.rfind(begin, 0) == 0;
}

/// Reconstructs the step of the request from its file calls.
class Steps {
  public:
    explicit Steps(const FileStrike& strike) : calls_(strike.calls) {}

    [[nodiscard]] const std::string& Last() const { return calls_.back(); }
    /// Returns the last call on the file before the failed one, or "".
    [[nodiscard]] std::string Before(const std::string& file) const {
        for (auto call = calls_.rbegin() + 1; call != calls_.rend(); ++call) {
            if (call->find(file) != std::string::npos) return *call;
        }
        return "";
    }
    [[nodiscard]] bool Made(const std::string& begin) const {
        for (auto call = calls_.begin(); call + 1 < calls_.end(); ++call) {
            if (Starts(*call, begin)) return true;
        }
        return false;
    }

  private:
    const std::vector<std::string>& calls_;
};

struct Promise {
    ReturnCode returnCode = pmrcFailure;
    std::optional<ExpectedError> error{};
};

// Takes the place of the return code if the failure has no consequence.
constexpr ReturnCode kUnaffected = -1;

std::string Numbered(int number, const std::string& text) {
    return "MQA0" + std::to_string(number) + ": <" + text + ">";
}

std::string Reason(const FileStrike& strike) {
    return std::strerror(strike.fault.error);
}

Promise Plain(const std::string& function, const std::string& message) {
    return {pmrcFailure, ExpectedError(function, message)};
}

Promise Stream(const FileStrike& strike, const std::string& function, const std::string& message,
               const std::string& call, const std::string& activity) {
    return {pmrcFailure, ExpectedError(function, message).Calling(call).Processing(activity, Reason(strike))};
}

Promise CheckpointOpen(const std::string& request, const FileStrike& strike) {
    const std::string message =
        Numbered(137, "Checkpoint file (ck.dat) open failed. Reason '" + Reason(strike) + "'");
    return Plain(request == "Open" ? "OpenCkPtFile" : "ResetCkptFile", message);
}

// A rewrite writes the header and then the last record. A save determines its offset before it writes.
Promise CheckpointWrite(const FileStrike& strike, const Steps& steps) {
    if (steps.Last() == "write ck.dat 4")
        return Stream(strike, "ResetCkptFile", "checkpoint file header record (seq)", "fwrite", "Checkpoint");
    if (Starts(steps.Before("ck.dat"), "write ck.dat 4"))
        return Stream(strike, "ResetCkptFile", "appending last record read", "fwrite", "Checkpoint");
    return Stream(strike, "PIDMMain", "checkpoint", "fwrite", "Checkpoint");
}

Promise CheckpointRead(const std::string& request, const FileStrike& strike, const Steps& steps) {
    if (request == "SetPos") {
        if (strike.fault.transferred == 0) return Plain("RepositionFile", "empty checkpoint file");
        return Stream(strike, "RepositionFile", "checkpoint sequence", "fread", "Checkpoint");
    }
    const bool replaced = steps.Made("rename ");
    if (replaced && steps.Before("ck.dat") == "open ck.dat rb+")
        return Stream(strike, "ResetCkptFile", "'positioning' read", "fread", "Checkpoint");
    const bool copying = steps.Made("open " + TemporaryName()) && !replaced;
    const char* piece =
        steps.Last() == "read ck.dat 8" ? "checkpoint record length" : "checkpoint record body";
    return Stream(strike, copying ? "ResetCkptFile" : "ReadFromChkPt", piece, "fread", "Checkpoint");
}

Promise ForCheckpoint(const std::string& request, const FileStrike& strike) {
    const Steps steps(strike);
    switch (strike.call) {
        case FileCall::Open: return CheckpointOpen(request, strike);
        case FileCall::Write: return CheckpointWrite(strike, steps);
        case FileCall::Read: return CheckpointRead(request, strike, steps);
        case FileCall::Flush: return Stream(strike, "PIDMMain", "checkpoint", "fflush", "Checkpoint");
        case FileCall::Tell:
            return Stream(strike, strike.gotMessage ? "PIDMMain" : "ReadFromChkPt", "checkpoint", "fgetpos",
                          "Checkpoint");
        case FileCall::Seek:
            return Stream(strike, "PIDMMain", request == "Read" ? "checkpoint" : "reposition", "fsetpos",
                          "Checkpoint");
        case FileCall::Remove:
            if (request == "Close") return {kUnaffected};
            return Plain("ResetCkptFile",
                         Numbered(151, "Temp Checkpoint file (" + TemporaryName() +
                                           ") delete failed. Reason '" + Reason(strike) + "'"));
        default: return {kUnaffected};
    }
}

Promise ForTemporary(const FileStrike& strike) {
    const Steps steps(strike);
    switch (strike.call) {
        case FileCall::Open:
            return {pmrcFailure,
                    ExpectedError("ResetCkptFile",
                                  Numbered(148, "Temp checkpoint (" + TemporaryName() +
                                                    ") open failed. Reason '" + Reason(strike) + "'"))
                        .Calling("fopen")};
        case FileCall::Write: {
            const std::string before = steps.Before(TemporaryName());
            const char* what = "checkpoint";
            if (Starts(before, "open ")) what = "checkpoint file header record (seq)";
            if (before == "write " + TemporaryName() + " 4") what = "prepending last record read";
            return Stream(strike, "ResetCkptFile", what, "fwrite", "Temp");
        }
        case FileCall::Flush: return Stream(strike, "ResetCkptFile", "checkpoint", "fflush", "Temp");
        case FileCall::Rename:
            return Plain("ResetCkptFile",
                         Numbered(150, "Temp Checkpoint file (" + TemporaryName() +
                                           ") rename failed. Reason '" + Reason(strike) + "'"));
        default: return {kUnaffected};
    }
}

Promise ForLog(const FileStrike& strike) {
    switch (strike.call) {
        case FileCall::Open:
            return {pmrcFailure,
                    ExpectedError("OpenLogFile", Numbered(141, "Log file (log.dat) open failed. Reason '" +
                                                                   Reason(strike) + "'"))
                        .Calling(" ")};
        case FileCall::Write:
            if (!strike.tlf) return {pmrcOK, ExpectedError("WriteLogRec", "continuing without Log").Info()};
            return Stream(strike, "WriteLogRec", " ", "fwrite", "Log");
        case FileCall::Flush: return Stream(strike, "WriteLogRec", "after log write", "fflush", "Log");
        default: return {kUnaffected};
    }
}

Promise ForTrace(const FileStrike& strike) {
    if (strike.call != FileCall::Open) return {kUnaffected};
    return Plain("ParseParms",
                 Numbered(132, "Trace file open failed ('trace.txt'). Reason '" + Reason(strike) + "'"));
}

Promise PromiseOf(const std::string& request, const FileStrike& strike) {
    const std::string& file = strike.fault.file;
    // A close or a command that fails has no consequence, because everything important was flushed before.
    // The module does not check a flush of all streams.
    if (strike.call == FileCall::Close || strike.call == FileCall::Command ||
        strike.call == FileCall::FlushAll)
        return {kUnaffected};
    if (file == kCheckpointFile) return ForCheckpoint(request, strike);
    if (file == kMessageLog) return ForLog(strike);
    return file == kTraceFile ? ForTrace(strike) : ForTemporary(strike);
}

}  // namespace

testing::AssertionResult IsUnaffected(const std::string& request, const Outcome& outcome,
                                      const Fault& fault) {
    if (outcome.returnCode != pmrcFailure) return testing::AssertionSuccess();
    const auto tells = [&](const char* text) { return outcome.errorText.find(text) != std::string::npos; };
    if (request == "Read" && tells("MQA0143: <MQCMIT failed")) return testing::AssertionSuccess();
    const bool foundLater = tells("--ERROR: appending last record read--Failing function: fwrite--") ||
                            tells("--ERROR: checkpoint--Failing function: fflush--");
    if (request == "Read" && fault.call == FileCall::FlushAll && foundLater)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << request << " returned 34: " << outcome.errorText;
}

testing::AssertionResult ReturnsAsPromised(const std::string& request, const Outcome& outcome,
                                           const FileStrike& strike) {
    const Promise promise = PromiseOf(request, strike);
    if (promise.returnCode == kUnaffected) return IsUnaffected(request, outcome, strike.fault);
    if (outcome.returnCode != promise.returnCode) {
        return testing::AssertionFailure() << request << " returned " << outcome.returnCode << ", not "
                                           << promise.returnCode << ": " << outcome.errorText;
    }
    return Carries(outcome, *promise.error);
}
