#include "apps/mqam/host_log.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstddef>
#include <sstream>

namespace {

constexpr std::size_t kLogEntry = 39;
constexpr std::size_t kTableEntries = 40;

using TableEntry = int (*)(void* handle, int message, int first, int second, ...);

// The module calls with the handle, a message number and two integers, then 5, a pointer to 5 bytes, 5, the
// text and a null pointer.
int ReceiveReport(void* handle, int message, int first, int second, ...);

struct HostLog {
    void* unused[2];
    const TableEntry* functions;  // at byte 16
};
static_assert(offsetof(HostLog, functions) == 16);

constexpr std::array<TableEntry, kTableEntries> MakeTable() {
    std::array<TableEntry, kTableEntries> table{};
    table[kLogEntry] = ReceiveReport;
    return table;
}
constexpr std::array<TableEntry, kTableEntries> kFunctions = MakeTable();

HostLog hostLog = {{nullptr, nullptr}, kFunctions.data()};
std::string& StoredReport() {
    static std::string report;
    return report;
}

int ReceiveReport(void* handle, int message, int /*first*/, int second, ...) {
    constexpr int kStartupReport = 19003;
    if (handle != &hostLog || message != kStartupReport) return 1;
    va_list arguments;
    va_start(arguments, second);
    va_arg(arguments, int);
    va_arg(arguments, char*);
    va_arg(arguments, int);
    const char* text = va_arg(arguments, const char*);
    va_end(arguments);
    if (text == nullptr) return 1;
    StoredReport() = text;
    return 0;
}

std::string Trim(const std::string& text) {
    const std::size_t start = text.find_first_not_of(" \r");
    if (start == std::string::npos) return "";
    return text.substr(start, text.find_last_not_of(" \r") - start + 1);
}

}  // namespace

void* HostLogHandle() {
    return &hostLog;
}

const std::string& ReceivedReport() {
    return StoredReport();
}

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
        }
    }
    return report;
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

std::string FindParameter(const StartupReport& report, const std::string& name) {
    for (const auto& [candidate, value] : report.parameters) {
        if (candidate != name) continue;
        if (value.size() >= 2 && value.front() == '\'' && value.back() == '\'') {
            return value.substr(1, value.size() - 2);
        }
        return value;
    }
    return "";
}
