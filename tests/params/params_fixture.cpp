// SPDX-License-Identifier: Apache-2.0
#include "tests/params/params_fixture.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tests/support/output_capture.h"

std::string Required(const std::string& keywords) {
    return std::string(kRequired) + " " + keywords;
}

ExpectedError KeywordError(const std::string& message) {
    return {"CheckParm", message};
}

ExpectedError ParametersError(const std::string& message) {
    return {"ParseParms", message};
}

ExpectedError ParameterFileError(const std::string& message) {
    return {"ReadParmFile", message};
}

std::string Cut(const std::string& message) {
    return message.substr(0, 1023);
}

std::string ReasonNotOpened(const std::string& path, const char* mode) {
    std::FILE* file = std::fopen(path.c_str(), mode);
    const int error = errno;
    if (file == nullptr) return std::strerror(error);
    std::fclose(file);
    ADD_FAILURE() << "can be opened: " << path;
    return "";
}

std::vector<std::string> ParamsFixture::TraceOfInit(const std::string& keywords) {
    trace.Skip();
    const Outcome outcome = Init(Required("-TRCL 1 trace.txt " + keywords));
    EXPECT_TRUE(Succeeds(outcome));
    const std::vector<std::string> lines = trace.NewLines();
    const auto heading = std::find(lines.begin(), lines.end(), "ParseParms(info): Paramters in effect:");
    const auto end = std::find(lines.begin(), lines.end(), "PIDMMain(info): MQGMO structure version: 3");
    if (heading == lines.end() || end == lines.end()) {
        ADD_FAILURE() << "the trace has no report";
        return {};
    }
    return {heading + 1, end};
}

std::vector<std::string> ParamsFixture::ReportOfInit(const std::string& keywords) {
    std::vector<std::string> lines = TraceOfInit(keywords);
    const auto first = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("ParseParms(info): Queue Name: ") == 0;
    });
    lines.erase(lines.begin(), first);
    const auto end = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("ParseParms(info): Channel name: ") == 0;
    });
    lines.erase(end, lines.end());
    return lines;
}

void ParamsFixture::LeaveTraceOpen() {
    ASSERT_TRUE(Succeeds(Init(Required("-TRCL 1 trace.txt"))));
    StartOver();
    trace.Skip();
}

std::string ParamsFixture::PrintedAtOpen() {
    OutputCapture capture("printed.txt");
    static_cast<void>(Open());
    return capture.Finish();
}
