// SPDX-License-Identifier: Apache-2.0
#include "tests/support/trace_reader.h"

#include <fstream>
#include <iterator>
#include <string_view>

#include "tests/support/files.h"
#include "tests/support/output_capture.h"

std::string WithoutStamp(const std::string& line) {
    // A digit is the highest one that its place in "HH:MM:SS: " may have. Every other character must be there
    // as it is.
    constexpr std::string_view kHighest = "29:59:69: ";
    if (line.size() < kHighest.size()) return line;
    for (std::size_t i = 0; i < kHighest.size(); ++i) {
        const bool isDigit = kHighest[i] >= '0' && kHighest[i] <= '9';
        if (isDigit ? line[i] < '0' || line[i] > kHighest[i] : line[i] != kHighest[i]) return line;
    }
    return line.substr(kHighest.size());
}

std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

std::string InfoLine(const std::string& function, const std::string& text) {
    return function + "(info): " + text;
}

std::string WarningLine(const std::string& function, const std::string& text) {
    return function + "(!warning!): " + text;
}

std::string ErrorLine(const std::string& function, const std::string& text) {
    return function + "(!ERROR!): " + text;
}

std::string TraceReader::Text() const {
    return FileExists(path_) ? WithPlainLineEnds(ReadFile(path_)) : "";
}

std::vector<std::string> TraceReader::Lines() const {
    std::vector<std::string> lines = SplitLines(Text());
    for (std::string& line : lines)
        line = WithoutStamp(line);
    return lines;
}

std::vector<std::string> TraceReader::NewLines() {
    std::ifstream file(path_, std::ios::binary);
    if (!file.seekg(seenBytes_)) return {};
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    seenBytes_ += static_cast<std::streamoff>(bytes.size());
    // If the previous call returned only the beginning of a line, its rest is not a line of its own.
    if (inLine_) {
        const std::size_t end = bytes.find('\n');
        if (end == std::string::npos) return {};
        bytes.erase(0, end + 1);
    }
    inLine_ = !bytes.empty() && bytes.back() != '\n';
    std::vector<std::string> lines = SplitLines(WithPlainLineEnds(bytes));
    for (std::string& line : lines)
        line = WithoutStamp(line);
    return lines;
}
