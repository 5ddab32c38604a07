// SPDX-License-Identifier: Apache-2.0
#include "mqam/base/progress.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <iterator>
#include <mutex>
#include <thread>

#include "platform/terminal.h"

namespace mqam {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kLivePause = std::chrono::milliseconds(200);
constexpr auto kPlainPause = std::chrono::seconds(5);

// Holds the state of the printing. While the thread runs, `lock` guards it.
struct Printer {
    std::mutex lock;
    std::condition_variable stop;
    std::thread thread;
    bool stopping = false;
    ProgressStyle style = ProgressStyle::kNone;
    const ProgressCounters* counters = nullptr;
    Clock::time_point start;
    std::size_t liveWidth = 0;  // characters of the live line on the screen
};

Printer& ThePrinter() {
    static Printer printer;
    return printer;
}

void WipeLiveLine(Printer& printer) {
    if (printer.liveWidth == 0) return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(printer.liveWidth), "");
    printer.liveWidth = 0;
}

void PrintNow(Printer& printer) {
    const double seconds = std::chrono::duration<double>(Clock::now() - printer.start).count();
    const std::string text = FormatProgress(*printer.counters, seconds);
    if (printer.style == ProgressStyle::kPlainLines) {
        std::fprintf(stderr, "mqam: %s\n", text.c_str());
    } else {
        WipeLiveLine(printer);
        const std::string shown = FitLine(text, platform::StandardErrorColumns());
        std::fputs(shown.c_str(), stderr);
        printer.liveWidth = shown.size();
    }
    std::fflush(stderr);
}

void PrintUntilStopped() {
    Printer& printer = ThePrinter();
    std::unique_lock<std::mutex> guard(printer.lock);
    const auto pause = printer.style == ProgressStyle::kLiveLine
                           ? std::chrono::duration_cast<Clock::duration>(kLivePause)
                           : std::chrono::duration_cast<Clock::duration>(kPlainPause);
    while (!printer.stop.wait_for(guard, pause, [&printer] { return printer.stopping; }))
        PrintNow(printer);
}

}  // namespace

void StartProgress(ProgressStyle style, const ProgressCounters& counters) {
    if (style == ProgressStyle::kNone) return;
    Printer& printer = ThePrinter();
    printer.style = style;
    printer.counters = &counters;
    printer.start = Clock::now();
    printer.stopping = false;
    printer.thread = std::thread(PrintUntilStopped);
}

void StopProgress() {
    Printer& printer = ThePrinter();
    if (!printer.thread.joinable()) return;
    {
        const std::lock_guard<std::mutex> guard(printer.lock);
        printer.stopping = true;
    }
    printer.stop.notify_all();
    printer.thread.join();
    WipeLiveLine(printer);
    std::fflush(stderr);
}

void PrintMessage(const std::string& lines) {
    Printer& printer = ThePrinter();
    const std::lock_guard<std::mutex> guard(printer.lock);
    WipeLiveLine(printer);
    std::fputs(lines.c_str(), stderr);
    std::fflush(stderr);
}

std::string FitLine(const std::string& text, int columns) {
    // A character in the last column makes some terminals begin a new line.
    const auto most = static_cast<std::size_t>(columns > 0 ? columns - 1 : 0);
    if (columns <= 0 || text.size() <= most) return text;
    const std::size_t comma = text.rfind(", ", most);
    return text.substr(0, comma == std::string::npos ? most : comma);
}

std::string FormatCount(std::uint64_t count) {
    const std::string digits = std::to_string(count);
    std::string grouped;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) grouped += ',';
        grouped += digits[i];
    }
    return grouped;
}

std::string FormatCountOf(std::uint64_t count, const std::string& noun) {
    return FormatCount(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string FormatRecords(std::uint64_t count) {
    return FormatCountOf(count, "record");
}

std::string FormatRecordsThatAre(std::uint64_t count) {
    return FormatRecords(count) + (count == 1 ? " is" : " are");
}

std::string FormatBytes(std::uint64_t bytes) {
    if (bytes < 1000) return FormatCountOf(bytes, "byte");
    constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB", "PB", "EB"};
    double size = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    // 999.995 would print as 1000.00.
    while (size >= 999.995 && unit + 1 < std::size(kUnits)) {
        size /= 1000;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.2f %s", size, kUnits[unit]);
    return text;
}

std::string FormatElapsed(double seconds) {
    const auto whole = static_cast<std::uint64_t>(seconds < 0 ? 0 : seconds);
    char text[48];
    if (whole >= 3600) {
        std::snprintf(text, sizeof text, "%llu:%02llu:%02llu", static_cast<unsigned long long>(whole / 3600),
                      static_cast<unsigned long long>(whole / 60 % 60),
                      static_cast<unsigned long long>(whole % 60));
    } else {
        std::snprintf(text, sizeof text, "%llu:%02llu", static_cast<unsigned long long>(whole / 60),
                      static_cast<unsigned long long>(whole % 60));
    }
    return text;
}

std::string FormatProgress(const ProgressCounters& counters, double seconds) {
    const std::uint64_t records = counters.records;
    const double rate = seconds > 0 ? static_cast<double>(records) / seconds : 0;
    return FormatCount(counters.recordsBefore + records) + " records, " +
           FormatBytes(counters.bytesBefore + counters.bytes) + ", " +
           FormatCount(static_cast<std::uint64_t>(rate)) + " records/s, " +
           FormatElapsed(counters.secondsBefore + seconds);
}

}  // namespace mqam
