// SPDX-License-Identifier: Apache-2.0

// Reads the start-up report that the module passes to the log of its host after Init: who the module is, and
// the parameters in effect. The module reports them as text only; this is the one place that reads that text.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "mqam/module/module_session.h"

namespace mqam {

struct StartupReport {
    /// The report as it was printed, for the user: the identification of the module, then the name and value
    /// of each parameter. The value is empty if a line has none.
    std::vector<std::string> identification;
    std::vector<std::pair<std::string, std::string>> parameters;

    // These are the parameters that a load depends on.
    std::string queueManager;
    std::string queue;
    std::string checkpointFile;  ///< as given to the module; empty if there is none
    std::string logFile;         ///< as given to the module; empty if there is none
    bool stopsAtDuplicate = false;
    bool opensExclusively = false;
    std::uint64_t maxRecordBytes = 0;
    /// How long a read waits for a message; nullopt if there is no limit, 0 if the report does not say.
    std::optional<std::chrono::seconds> readWait = std::chrono::seconds(0);

    /// The name of a parameter whose line the module cut at its limit, so that the value is not known in
    /// full; empty if there is none. Such a report must not be used: a path in it may be another file's.
    std::string truncatedParameter;
};

/// The longest line of a parameter that the module reports in full, in characters.
inline constexpr std::size_t kLongestReportedLine = 1022;

[[nodiscard]] StartupReport ParseReport(const std::string& text);

/// Returns the error message for a report with a truncated parameter.
[[nodiscard]] std::string DescribeTruncation(const StartupReport& report);

/// Returns the report as lines in two columns, each with its line end and `indent` before it.
[[nodiscard]] std::string FormatReport(const StartupReport& report, const std::string& indent);

/// Passes the host's log to the module after Init, and sets `report` to the report that the module passes to
/// the log.
///   wantsKeywordHelp  whether the module first prints its help on standard output
///   report            unchanged unless the code is pmrcOK
[[nodiscard]] ReturnCode FetchReport(ModuleSession& session, bool wantsKeywordHelp, StartupReport& report);

}  // namespace mqam
