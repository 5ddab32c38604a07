#include "tests/support/trace_reader.h"

#include <regex>

#include "tests/support/files.h"
#include "tests/support/output_capture.h"

std::string WithoutStamp(const std::string& line) {
    static const std::regex stamp("^[0-2][0-9]:[0-5][0-9]:[0-6][0-9]: ");
    return std::regex_replace(line, stamp, "", std::regex_constants::format_first_only);
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
    const std::vector<std::string> lines = Lines();
    std::vector<std::string> fresh(lines.begin() + static_cast<std::ptrdiff_t>(seen_), lines.end());
    seen_ = lines.size();
    return fresh;
}
