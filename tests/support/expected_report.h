// SPDX-License-Identifier: Apache-2.0

// The start-up report as the console shows it and as the host's log receives it, written out independently of
// the module. It consists of the identification banner, the parameters in effect and, on the console, the
// lines that requests add.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// The greatest length of a report text, not counting its NUL.
inline constexpr std::size_t kReportTextCharacters = 8191;

/// The delimiter of directories in a path on the system under test.
inline constexpr char kPathDelimiter = static_cast<char>(std::filesystem::path::preferred_separator);

/// Returns the texts of the six banner lines; they have the numbers 19080, 19081 and 19083 to 19086.
std::vector<std::string> BannerTexts();

/// Returns the local time of day as HH:MM:SS.
std::string TimeOfDay(std::int64_t seconds);

/// The lines of the parameter report. The defaults are those of "-QMGR QM1 -QNM Q1" without further keywords.
struct ExpectedParameters {
    std::string queueManager = "Queue Manager Name: 'QM1'";
    std::string queue = "Queue Name: 'Q1'";
    std::string checkpoint = "Checkpoint: None.";
    std::string mediaFlush = "Media flush: No";
    std::vector<std::string> logging = {"Logging: none"};
    std::string duplicates = "Terminate on duplicate message: yes";
    std::string convert = "MQ convert message data: no";
    std::string queueOpen = "Queue open: NON-EXCLUSIVE.";
    std::string blockSize = "BlockSize: 1048576";
    std::string tenacity = "MQ open retry tenacity: 5";
    std::string waitInterval = "MQ open wait interval: 5";
    std::string readWait = "MQ read wait interval: 15";

    [[nodiscard]] std::vector<std::string> Lines() const;
    /// Returns the lines as the trace has them, without their stamps. The queue manager is not traced. A
    /// parameter line that itself ends with a line end is followed by an empty line.
    [[nodiscard]] std::vector<std::string> TraceLines() const;
};

class ExpectedReport {
  public:
    ExpectedReport& AddBanner(const std::string& timeOfDay);
    ExpectedReport& AddParameters(const std::string& timeOfDay, const ExpectedParameters& parameters);
    /// Adds a line that only the console form has.
    ExpectedReport& AddConsoleLine(const std::string& line);

    [[nodiscard]] const std::string& Console() const { return console_; }
    [[nodiscard]] const std::string& HostLog() const { return hostLog_; }

  private:
    std::string console_;
    std::string hostLog_;
};
