// SPDX-License-Identifier: Apache-2.0

// Shows progress on standard error while a load runs: one live line on a terminal, a plain line every few
// seconds elsewhere. A thread of its own prints, so that the clock keeps running while a read waits for
// messages.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace mqam {

enum class ProgressStyle { kNone, kLiveLine, kPlainLines };

struct ProgressCounters {
    std::atomic<std::uint64_t> records{0};
    std::atomic<std::uint64_t> bytes{0};
    /// These members say what earlier processes have loaded. They count in the totals, but not in the rate.
    std::atomic<std::uint64_t> recordsBefore{0};
    std::atomic<std::uint64_t> bytesBefore{0};
    double secondsBefore = 0;  ///< set before StartProgress
};

/// Starts printing. `counters` must exist until StopProgress.
void StartProgress(ProgressStyle style, const ProgressCounters& counters);

/// Stops printing and wipes a live line. Does nothing if nothing is printing.
void StopProgress();

/// Prints complete lines on standard error, in place of a live line. May be called from any thread.
void PrintMessage(const std::string& lines);

/// Formats a line such as "12,345 records, 1.21 MB, 24,690 records/s, 0:05". Numbers are grouped, sizes have
/// decimal units, and the elapsed time has minutes and seconds, with hours before them if there are any.
///   seconds  in  the time since the counters began to count
[[nodiscard]] std::string FormatProgress(const ProgressCounters& counters, double seconds);

/// Cuts a line of items separated by ", " so that it fits a terminal, after an item if possible.
///   columns  in  the width of the terminal; 0 if it is not known
[[nodiscard]] std::string FitLine(const std::string& text, int columns);

[[nodiscard]] std::string FormatCount(std::uint64_t count);

/// Returns "1 message" or "12,345 messages": the count, and the noun with an s unless there is one.
[[nodiscard]] std::string FormatCountOf(std::uint64_t count, const std::string& noun);
/// Returns "1 record" or "12,345 records".
[[nodiscard]] std::string FormatRecords(std::uint64_t count);
/// Returns "1 record is" or "12,345 records are".
[[nodiscard]] std::string FormatRecordsThatAre(std::uint64_t count);
[[nodiscard]] std::string FormatBytes(std::uint64_t bytes);
[[nodiscard]] std::string FormatElapsed(double seconds);

}  // namespace mqam
