// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/parameter_file.h"

#include <cerrno>
#include <cstring>
#include <sstream>

#include "mqam/cli/keyword_options.h"
#include "mqam/explain/text_match.h"
#include "platform/file.h"

namespace mqam {

namespace {

// The module reads a longer line as several.
constexpr std::size_t kLineCharactersMax = 510;

const KeywordOption* FindRow(const std::string& keyword) {
    for (const KeywordOption& row : AllKeywordOptions()) {
        if (keyword == row.keyword && keyword != "PARMFILE") return &row;
    }
    return nullptr;
}

bool IsPlainNumber(const std::string& text) {
    const std::size_t first = text.find_first_not_of("+-");
    return first <= 1 && text.find_first_not_of("0123456789", first) == std::string::npos;
}

bool TakesNumber(const KeywordOption& row, std::size_t index) {
    return row.rule.kind == KeywordValue::kNumber ||
           (row.rule.kind == KeywordValue::kNumberAndText && index == 0);
}

// The module reads the digits in front of a value and ignores what follows them.
Status CheckNumber(const KeywordOption& row, std::size_t index, const std::string& value) {
    if (!TakesNumber(row, index) || IsPlainNumber(value)) return {};
    std::string digits = value;
    const Status checked = CheckKeywordValue(row, index, digits);
    return Status::Refused(checked.IsOk()
                               ? "'" + value + "' has a unit, which the module ignores; write " + digits
                               : checked.Error());
}

std::string Place(const std::string& path, const ParameterLine& line) {
    std::string place = path + ", line " + std::to_string(line.number) + ": " + line.keyword;
    for (const std::string& value : line.values)
        place += " " + value;
    return place + ": ";
}

Status ReadLine(const std::string& path, const std::string& text, ParameterLine line, ParameterFile& file) {
    if (text.size() > kLineCharactersMax) file.isUnderstood = false;
    std::istringstream words(text);
    if (text.starts_with('#') || !(words >> line.keyword)) return {};
    line.keyword = ToUpper(line.keyword.substr(line.keyword.front() == '-' ? 1 : 0));
    const KeywordOption* row = FindRow(line.keyword);
    if (row == nullptr) {
        file.isUnderstood = false;
        return {};
    }
    for (std::string value; line.values.size() < static_cast<std::size_t>(row->values) && words >> value;)
        line.values.push_back(value);
    if (line.values.size() < static_cast<std::size_t>(row->values)) file.isUnderstood = false;
    std::string rest;
    if (std::getline(words >> std::ws, rest) && !rest.empty()) {
        // A file from Windows has a carriage return before each line feed.
        rest.erase(rest.find_last_not_of(" \t\r") + 1);
        const std::string used = line.values.empty() ? line.keyword : "'" + line.values.back() + "'";
        file.warnings.push_back(Place(path, line) + "the module ignores '" + rest +
                                "'; a value ends at the first blank, so only " + used + " is used");
    }
    if (FindParameter(file, line.keyword) != nullptr) {
        file.warnings.push_back(Place(path, line) +
                                "the keyword is in the file more than once; the last one counts");
    }
    for (std::size_t i = 0; i < line.values.size(); ++i) {
        const Status checked = CheckNumber(*row, i, line.values[i]);
        if (!checked.IsOk()) return Status::Refused(Place(path, line) + checked.Error());
    }
    file.lines.push_back(line);
    return {};
}

}  // namespace

Status ReadParameterFile(const std::string& path, ParameterFile& file) {
    file = {};
    platform::FileInfo info;
    if (platform::StatPath(path, info) != platform::FileStatus::kOk) {
        return Status::Refused("--parmfile " + path + ": the file cannot be examined: " +
                               std::strerror(errno) + "; name a file that exists");
    }
    if (info.isDirectory) {
        return Status::Refused("--parmfile " + path + " is a directory; name the file in it");
    }
    std::string content;
    if (!info.isFile) return {};
    if (platform::ReadWholeFile(path, content) != platform::FileStatus::kOk) {
        return Status::Refused("--parmfile " + path + ": the file cannot be read: " + std::strerror(errno) +
                               "; you need the permission to read it");
    }
    ParameterFile read;
    std::istringstream lines(content);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        Status taken = ReadLine(path, line, {++number, "", {}}, read);
        if (!taken.IsOk()) return taken;
    }
    file = std::move(read);
    return {};
}

const ParameterLine* FindParameter(const ParameterFile& file, const std::string& keyword) {
    for (auto line = file.lines.rbegin(); line != file.lines.rend(); ++line) {
        if (line->keyword == keyword) return &*line;
    }
    return nullptr;
}

}  // namespace mqam
