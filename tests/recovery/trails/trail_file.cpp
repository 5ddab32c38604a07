// SPDX-License-Identifier: Apache-2.0
#include "tests/recovery/trails/trail_file.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>

#include "tests/support/files.h"

namespace {

std::filesystem::path Folder() {
    return PathOnSystem(MQAMOD_TRAIL_FOLDER);
}

/// Finds definitions such as "-DRULE_H1=0 -DN=4" in the line.
std::map<std::string, int> Definitions(const std::string& command) {
    std::map<std::string, int> definitions;
    std::istringstream words(command);
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        if (word.rfind("-D", 0) == 0 && equals != std::string::npos)
            definitions[word.substr(2, equals - 2)] = std::stoi(word.substr(equals + 1));
    }
    return definitions;
}

bool IsDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

std::vector<std::string> TrailNames() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Folder()))
        names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

TrailFile ReadTrail(const std::string& name) {
    TrailFile trail;
    const std::string text = ReadFile((Folder() / (name + ".txt")).string());
    const std::size_t heading = text.find('\n');
    const std::size_t command = text.find('\n', heading + 1);
    if (heading == std::string::npos || command == std::string::npos) return trail;
    trail.definitions = Definitions(text.substr(heading, command - heading));
    trail.lines = TrailLines(text.substr(command));
    return trail;
}

std::vector<TrailLine> TrailLines(const std::string& text) {
    std::vector<TrailLine> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        while (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::size_t indent = line.find_first_not_of(' ');
        if (indent != std::string::npos) lines.push_back({indent, line.substr(indent)});
    }
    return lines;
}

bool MatchesPattern(const std::string& text, const std::string& pattern, std::vector<int>& numbers) {
    numbers.clear();
    std::size_t at = 0;
    for (const char c : pattern) {
        if (c != '#') {
            if (at == text.size() || text[at++] != c) return false;
            continue;
        }
        const std::size_t begin = at;
        while (at < text.size() && IsDigit(text[at]))
            ++at;
        if (at == begin) return false;
        numbers.push_back(std::stoi(text.substr(begin, at - begin)));
    }
    return at == text.size();
}
