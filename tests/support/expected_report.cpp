// SPDX-License-Identifier: Apache-2.0
#include "tests/support/expected_report.h"

#include <ctime>

#include "tests/support/trace_reader.h"

namespace {

constexpr char kNotice[] = "Free software under the Apache License 2.0, without warranty of any kind";
constexpr int kBannerNumbers[] = {19080, 19081, 19083, 19084, 19085, 19086};

/// Appends the line, or nothing if the whole line does not fit.
void AppendIfRoom(std::string& text, const std::string& line) {
    if (text.size() + line.size() <= kReportTextCharacters) text += line;
}

}  // namespace

std::vector<std::string> BannerTexts() {
    return {"Norvane Websphere MQ AMOD, Version 16.20.00.04",
            kNotice,
            "Code version 16.20.00.03",
            kPathDelimiter == '/' ? "Compiled for 64-bit Linux" : "Compiled for 64-bit WIN64",
            "pmdcomt_HeaderVersion: 'Common 15.10.00.00' - packing 'pack (push, 1)'",
            "pmddamt_HeaderVersion: 'Common 16.20.00.00' - packing 'none'"};
}

std::string TimeOfDay(std::int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    char text[9] = "";
    std::strftime(text, sizeof text, "%H:%M:%S", std::localtime(&time));
    return text;
}

std::vector<std::string> ExpectedParameters::Lines() const {
    std::vector<std::string> lines = {queueManager, queue, checkpoint, mediaFlush};
    lines.insert(lines.end(), logging.begin(), logging.end());
    lines.insert(lines.end(), {duplicates, convert, queueOpen, blockSize, tenacity, waitInterval, readWait});
    return lines;
}

std::vector<std::string> ExpectedParameters::TraceLines() const {
    std::string text;
    for (const std::string& line : Lines()) {
        if (line != queueManager) text += "ParseParms(info): " + line + "\n";
    }
    return SplitLines(text);
}

ExpectedReport& ExpectedReport::AddBanner(const std::string& timeOfDay) {
    const std::vector<std::string> texts = BannerTexts();
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string numbered = std::to_string(kBannerNumbers[i]) + " " + texts[i] + "\n";
        AppendIfRoom(console_, "**** " + timeOfDay + " MQA" + numbered);
        AppendIfRoom(hostLog_, "MQ_ACCESSMODULE: ZBQ" + numbered);
    }
    return *this;
}

ExpectedReport& ExpectedReport::AddParameters(const std::string& timeOfDay,
                                              const ExpectedParameters& parameters) {
    AppendIfRoom(console_, "**** " + timeOfDay + " MQA19087 MQAM Parameters in effect:\n");
    AppendIfRoom(hostLog_, "MQ_ACCESSMODULE: ZBQ19087 MQAM Parameters in effect:\n");
    for (const std::string& line : parameters.Lines()) {
        AppendIfRoom(console_, "     .        " + line + "\n");
        AppendIfRoom(hostLog_, "     .           " + line + "\n");
    }
    return *this;
}

ExpectedReport& ExpectedReport::AddConsoleLine(const std::string& line) {
    AppendIfRoom(console_, line + "\n");
    return *this;
}
