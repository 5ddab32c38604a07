// The report that the module passes to the log of its host after Init: who the module is, and the parameters in effect.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "mqam/module/module_session.h"

namespace mqam {

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

/// Hands the module the host's log after Init and returns the report that it passed there.
///   keywordHelpWanted  have the module print its help on standard output first
[[nodiscard]] ReturnCode FetchReport(ModuleSession& session, bool keywordHelpWanted, StartupReport& report);

}  // namespace mqam
