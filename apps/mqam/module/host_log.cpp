// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/host_log.h"

#include <array>
#include <cstdarg>
#include <cstddef>
#include <string>

namespace mqam {

namespace {

constexpr std::size_t kLogEntry = 39;
constexpr std::size_t kTableEntries = 40;

using TableEntry = int (*)(void* handle, int message, int first, int second, ...);

// The module passes these arguments: the handle, a message number, two integers, 5, a pointer to 5 bytes, 5,
// the text and a null pointer.
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

}  // namespace

void* HostLogHandle() {
    return &hostLog;
}

const std::string& ReceivedReport() {
    return StoredReport();
}

}  // namespace mqam
