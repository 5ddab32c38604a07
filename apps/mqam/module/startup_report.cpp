// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/startup_report.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "mqam/module/host_log.h"

namespace mqam {
namespace {

std::string Trim(const std::string& text) {
    const std::size_t start = text.find_first_not_of(" \r");
    if (start == std::string::npos) return "";
    return text.substr(start, text.find_last_not_of(" \r") - start + 1);
}

// Returns the value without the quotes around it.
std::string Unquote(const std::string& value) {
    if (value.size() >= 2 && value.front() == '\'' && value.back() == '\'') {
        return value.substr(1, value.size() - 2);
    }
    return value;
}

void ReadParameter(const std::string& name, const std::string& value, StartupReport& report) {
    constexpr std::string_view kFileBased = "File-based to pathname ";
    if (name == "Queue Manager Name") report.queueManager = Unquote(value);
    if (name == "Queue Name") report.queue = Unquote(value);
    if (name == "Checkpoint" && value.starts_with(kFileBased)) {
        report.checkpointFile = value.substr(kFileBased.size());
    }
    if (name == "Logging pathname") report.logFile = Unquote(value);
    if (name == "Terminate on duplicate message") report.stopsAtDuplicate = value == "yes";
    if (name == "Queue open") report.opensExclusively = value == "EXCLUSIVE.";
    if (name == "BlockSize") report.maxRecordBytes = std::strtoull(value.c_str(), nullptr, 10);
    if (name == "MQ read wait interval") {
        report.readWait.reset();
        if (value != "indefinite") {
            report.readWait = std::chrono::seconds(std::strtoll(value.c_str(), nullptr, 10));
        }
    }
}

}  // namespace

StartupReport ParseReport(const std::string& text) {
    static const std::string kNumbered = "MQ_ACCESSMODULE: ZBQ";
    static const std::string kHeader = "Parameters in effect:";
    StartupReport report;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(kNumbered)) {
            const std::size_t blank = line.find(' ', kNumbered.size());
            const std::string words = blank == std::string::npos ? "" : Trim(line.substr(blank));
            if (!words.ends_with(kHeader)) report.identification.push_back(words);
            continue;
        }
        line = Trim(line);
        if (line.starts_with('.')) line = Trim(line.substr(1));
        if (line.empty()) continue;
        const std::size_t colon = line.find(": ");
        if (colon == std::string::npos) {
            report.parameters.emplace_back(line, "");
        } else {
            report.parameters.emplace_back(line.substr(0, colon), line.substr(colon + 2));
            ReadParameter(line.substr(0, colon), line.substr(colon + 2), report);
            if (line.size() > kLongestReportedLine) report.truncatedParameter = line.substr(0, colon);
        }
    }
    return report;
}

std::string DescribeTruncation(const StartupReport& report) {
    return "the value of '" + report.truncatedParameter + "' is too long: the module reports at most " +
           std::to_string(kLongestReportedLine) +
           " characters of it, so this program cannot know which file the module uses; use a shorter path";
}

std::string FormatReport(const StartupReport& report, const std::string& indent) {
    std::size_t width = 0;
    for (const auto& [name, value] : report.parameters) {
        if (!value.empty()) width = std::max(width, name.size());
    }
    std::string lines;
    for (const std::string& line : report.identification)
        lines += indent + line + "\n";
    if (!report.identification.empty() && !report.parameters.empty()) lines += "\n";
    for (const auto& [name, value] : report.parameters) {
        lines += indent + name;
        if (!value.empty()) lines += std::string(width - name.size() + 2, ' ') + value;
        lines += "\n";
    }
    return lines;
}

ReturnCode FetchReport(ModuleSession& session, bool wantsKeywordHelp, StartupReport& report) {
    if (wantsKeywordHelp) {
        // The help is only in the text that Open prints, and only before the module knows the host's log. An
        // Open for writing prints it and is refused before it touches anything.
        constexpr std::int16_t kOpenForWriting = 2;
        std::uint32_t unused = 0;
        static_cast<void>(session.Open(kOpenForWriting, unused));
        static_cast<void>(session.TakeNewText());
    }
    void* handle = HostLogHandle();
    const ReturnCode code = session.PutAttribute(
        "ZBQ_HL_LOG_HANDLE", std::string_view(reinterpret_cast<const char*>(&handle), sizeof handle));
    if (code == pmrcOK) report = ParseReport(ReceivedReport());
    return code;
}

}  // namespace mqam
