// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/probe_command.h"

#include <cstdlib>
#include <map>
#include <sstream>

#include "mqam/base/exit_codes.h"
#include "mqam/cli/parameter_file.h"
#include "mqam/explain/mq_reasons.h"
#include "mqam/explain/text_match.h"
#include "platform/environment.h"

namespace mqam {

namespace {

constexpr std::int64_t kDefaultRecordBytes = 1048576;
constexpr std::int64_t kLargestMaxRecord = 16777216;
constexpr MQLONG kNoMessage = 2033;

// Returns the keywords of an initialization string with their first values.
std::map<std::string, std::string> ReadKeywords(const std::string& initString) {
    std::map<std::string, std::string> values;
    std::istringstream words(initString);
    for (std::string word; words >> word;) {
        const std::string keyword = ToUpper(word.substr(word.front() == '-' ? 1 : 0));
        for (const KeywordOption& row : AllKeywordOptions()) {
            if (keyword != row.keyword) continue;
            values[keyword] = "";
            for (int i = 0; i < row.values && words >> word; ++i) {
                if (i == 0) values[keyword] = word;
            }
        }
    }
    return values;
}

std::string DescribeReason(MQLONG code) {
    const MqReason* reason = FindMqReason(code);
    std::string line = "  reason    " + std::to_string(code);
    if (reason == nullptr) return line + "\n";
    return line + " " + reason->name + ": " + reason->meaning + "\n  next      " + reason->action + "\n";
}

std::string DescribeLongMessage(const ProbeRequest& request, const ProbeResult& result) {
    if (result.longBytes < 0) {
        return "  length    no message on the queue is longer than " +
               std::to_string(request.maxRecordBytes) + " bytes now; run the same command again\n";
    }
    const std::string bytes = std::to_string(result.longBytes);
    const std::string length =
        "  length    the message has " + bytes + " bytes; its identifier is " + result.longMessageId + "\n";
    if (result.longBytes > kLargestMaxRecord) {
        return length + "  next      No load can take a message of more than " +
               std::to_string(kLargestMaxRecord) + " bytes; take it off the queue with another program\n";
    }
    return length + "  next      Run the same command with --max-record " + bytes + "\n";
}

std::string DescribeLibrary(const ProbeResult& result) {
    if (result.libraryFailure.empty())
        return "  tried     an MQ library can be loaded now; run the same command again\n";
    const std::string path = platform::ReadEnvironment("MQAMOD_MQ_LIBRARY");
    return "  tried     " + result.libraryFailure + "\n" +
           (path.empty() ? ""
                         : "  because   the environment variable MQAMOD_MQ_LIBRARY is set to " + path + "\n");
}

std::string DescribeEarlyEnd(const ProbeResult& result) {
    if (result.step == ProbeStep::kBrowse && result.reason == kNoMessage)
        return "  found     the queue is empty now\n";
    if (result.step != ProbeStep::kDone) return DescribeReason(result.reason);
    if (result.firstBytes == 0) {
        return "  found     the next message on the queue is empty, and will end the next load early as well\n";
    }
    return "  found     the queue can be read and is not empty; run the same command again to load the rest\n";
}

}  // namespace

ProbeRequest MakeProbeRequest(ProbeKind kind, const std::string& initString) {
    std::map<std::string, std::string> values = ReadKeywords(initString);
    ParameterFile file;
    if (!values["PARMFILE"].empty() && ReadParameterFile(values["PARMFILE"], file).IsOk()) {
        for (const ParameterLine& line : file.lines)
            values[line.keyword] = line.values.empty() ? "" : line.values.front();
    }
    ProbeRequest request = {values["QMGR"], values["QNM"], values["CHNL"], values["SRVR"]};
    request.maxRecordBytes = std::atoll(values["BKSZ"].c_str());
    if (request.maxRecordBytes == 0) request.maxRecordBytes = kDefaultRecordBytes;
    if (kind == ProbeKind::kOpen) {
        request.open = values.contains("MQEX") ? ProbeOpen::kAsExclusiveLoad : ProbeOpen::kAsLoad;
    }
    return request;
}

std::string DescribeProbe(ProbeKind kind, const ProbeRequest& request, const ProbeResult& result) {
    if (kind == ProbeKind::kLibrary) return DescribeLibrary(result);
    if (kind == ProbeKind::kEarlyEnd) return DescribeEarlyEnd(result);
    const bool isOpen = result.step != ProbeStep::kConnect && result.step != ProbeStep::kOpen;
    if (!isOpen) return DescribeReason(result.reason);
    if (kind == ProbeKind::kLongMessage) return DescribeLongMessage(request, result);
    return "  reason    it is gone: the queue can be opened now; run the same command again\n";
}

int RunProbe(const LoadOptions& options) {
    std::string initString;
    const Status composed = ComposeInitString(options.module, initString);
    if (!composed.IsOk()) return kExitNotStarted;
    if (IsProtected(options)) initString += " -MQEX";
    const auto kind = static_cast<ProbeKind>(options.probe);
    const ProbeRequest request = MakeProbeRequest(kind, initString);
    PrintMessage(DescribeProbe(kind, request, ProbeQueue(request)));
    return kExitDone;
}

}  // namespace mqam
