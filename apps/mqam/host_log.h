// The host's log, as the module sees it: an object whose function table receives the start-up report, which
// is the only way to see the parameters in effect without opening a queue.
#pragma once

#include <string>
#include <utility>
#include <vector>

/// Returns the handle that the attribute ZBQ_HL_LOG_HANDLE takes: valid for the life of the process, and the
/// same at every call.
[[nodiscard]] void* HostLogHandle();

/// Returns the report that the module last passed to the handle, or an empty string.
[[nodiscard]] const std::string& ReceivedReport();

/// The report taken apart.
struct StartupReport {
    std::vector<std::string> identification;  ///< who the module is
    std::vector<std::pair<std::string, std::string>>
        parameters;  ///< name and value; value empty when a line has none
};

[[nodiscard]] StartupReport ParseReport(const std::string& text);

/// Returns the report as lines in two columns, each with its line end and `indent` before it.
[[nodiscard]] std::string FormatReport(const StartupReport& report, const std::string& indent);

/// Returns the value of a parameter of the report without the quotes around it, or an empty string.
[[nodiscard]] std::string FindParameter(const StartupReport& report, const std::string& name);
