// SPDX-License-Identifier: Apache-2.0
#include "diag/report_texts.h"

#include <cstdio>
#include <cstring>
#include <ctime>

namespace mqamod {

namespace {

constexpr std::size_t kReportBytes = 8192;

// Holds the report in both forms. Only the routines of this file write it.
struct ReportState {
    char console[kReportBytes];  // empty when the module is loaded; never cleared
    char hostLog[kReportBytes];  // empty when the module is loaded; never cleared
    char hostLogLine[4096];      // scratch space: the host-log line being built
    std::tm time;                // local time of the most recent ReadReportTime; never cleared
};
ReportState state;

void Append(char (&text)[kReportBytes], const char* line) {
    const std::size_t used = std::strlen(text);
    const std::size_t length = std::strlen(line);
    if (length < kReportBytes - used) std::memcpy(text + used, line, length + 1);
}

}  // namespace

const char* ConsoleReportText() {
    return state.console;
}

const char* HostLogReportText() {
    return state.hostLog;
}

void SaveConsoleLine(const char* line) {
    const std::size_t used = std::strlen(state.console);
    const std::size_t length = std::strlen(line);
    if (length + 1 >= kReportBytes - used) return;
    std::memcpy(state.console + used, line, length);
    std::memcpy(state.console + used + length, "\n", 2);
}

void ReadReportTime() {
    const std::time_t now = std::time(nullptr);
    const std::tm* local = std::localtime(&now);
    state.time = local != nullptr ? *local : std::tm{};
}

void AddNumberedLine(int number, const char* text) {
    char line[2048 + 32];
    std::snprintf(line, sizeof line, "**** %02d:%02d:%02d MQA%05d %s", state.time.tm_hour, state.time.tm_min,
                  state.time.tm_sec, number, text);
    SaveConsoleLine(line);
    std::snprintf(state.hostLogLine, sizeof state.hostLogLine, "MQ_ACCESSMODULE: ZBQ%05d %s\n", number, text);
    Append(state.hostLog, state.hostLogLine);
}

void AddParameterLine(const char* text) {
    char line[1024 + 32];
    std::snprintf(line, sizeof line, "     .        %s\n", text);
    Append(state.console, line);
    std::snprintf(state.hostLogLine, sizeof state.hostLogLine, "     .           %s\n", text);
    Append(state.hostLog, state.hostLogLine);
}

}  // namespace mqamod
