// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/restart_state.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>

#include "mqam/module/position_text.h"
#include "platform/digest.h"

namespace mqam {

namespace {

constexpr std::string_view kFirstLine = "mqam restart information 1\n";
constexpr std::string_view kChecksumKey = "checksum=";

// From this key on, a state that an earlier version stored has no lines.
constexpr char kFirstAddedKey[] = "directory";

// Stands for an empty word; a percent sign inside a word is always escaped.
constexpr std::string_view kEmptyWord = "%";

constexpr std::array<const char*, 3> kPhases = {"loading", "finished", "complete"};
constexpr std::array<const char*, 3> kEnds = {"none", "early", "after-wait"};

// Names and paths may contain any byte; a line may not.
std::string Escape(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= ' ' && c != '%') {
            escaped += c;
            continue;
        }
        char code[4];
        std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
        escaped += code;
    }
    return escaped;
}

template <typename Number>
bool ReadNumber(std::string_view digits, Number& number, int base = 10) {
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
    return error == std::errc() && stop == end && !digits.empty();
}

bool ReadText(const std::string& value, std::string& text) {
    text.clear();
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '%') {
            text += value[i];
            continue;
        }
        unsigned code = 0;
        const std::string_view digits = std::string_view(value).substr(i + 1, 2);
        if (digits.size() != 2 || !ReadNumber(digits, code, 16)) return false;
        text += static_cast<char>(code);
        i += 2;
    }
    return true;
}

std::string Hex(std::uint64_t number) {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(number));
    return digits;
}

template <typename Enumeration>
bool ReadWord(const std::string& value, const std::array<const char*, 3>& words, Enumeration& result) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (value == words[i]) {
            result = static_cast<Enumeration>(i);
            return true;
        }
    }
    return false;
}

// Separated by blanks; a blank inside a word is escaped as well.
std::string FormatWords(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        if (!text.empty()) text += ' ';
        for (const char c : Escape(word))
            text += c == ' ' ? "%20" : std::string(1, c);
        if (word.empty()) text += kEmptyWord;
    }
    return text;
}

bool ReadWords(const std::string& value, std::vector<std::string>& words) {
    words.clear();
    std::string_view rest = value;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        const std::string escaped(rest.substr(0, end));
        words.emplace_back();
        if (escaped.empty() || (escaped != kEmptyWord && !ReadText(escaped, words.back()))) return false;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return true;
}

struct Field {
    const char* key;
    std::string (*format)(const RestartState& state);
    bool (*parse)(const std::string& value, RestartState& state);
};

using State = RestartState;

template <std::string State::*Member>
constexpr Field TextField(const char* key) {
    return {key, [](const State& s) { return Escape(s.*Member); },
            [](const std::string& value, State& s) { return ReadText(value, s.*Member); }};
}

template <std::uint64_t State::*Member>
constexpr Field NumberField(const char* key) {
    return {key, [](const State& s) { return std::to_string(s.*Member); },
            [](const std::string& value, State& s) { return ReadNumber(value, s.*Member); }};
}

// These keys are part of the format on disk and do not change, even where a member has a newer name.
constexpr Field kFields[] = {
    {"phase", [](const State& s) { return std::string(kPhases[static_cast<std::size_t>(s.phase)]); },
     [](const std::string& value, State& s) { return ReadWord(value, kPhases, s.phase); }},
    TextField<&State::queueManager>("queue-manager"),
    TextField<&State::queue>("queue"),
    TextField<&State::checkpointFile>("checkpoint-file"),
    TextField<&State::logFile>("log-file"),
    TextField<&State::target>("target"),
    TextField<&State::format>("format"),
    TextField<&State::begun>("begun"),
    NumberField<&State::attempts>("lives"),
    NumberField<&State::records>("records"),
    NumberField<&State::bytes>("bytes"),
    NumberField<&State::targetLength>("target-length"),
    NumberField<&State::lastRecordLength>("last-record-length"),
    {"last-record-digest", [](const State& s) { return Hex(s.lastRecordDigest); },
     [](const std::string& value, State& s) {
         return value.size() == 16 && ReadNumber(value, s.lastRecordDigest, 16);
     }},
    {"position",
     [](const State& s) { return s.position ? FormatPosition(*s.position) : std::string("none"); },
     [](const std::string& value, State& s) {
         s.position = ParsePosition(value);
         return s.position.has_value() || value == "none";
     }},
    {"last-end", [](const State& s) { return std::string(kEnds[static_cast<std::size_t>(s.lastEnd)]); },
     [](const std::string& value, State& s) { return ReadWord(value, kEnds, s.lastEnd); }},
    NumberField<&State::lastEndRecords>("last-end-records"),
    TextField<&State::directory>(kFirstAddedKey),
    {"command", [](const State& s) { return FormatWords(s.command); },
     [](const std::string& value, State& s) { return ReadWords(value, s.command); }},
};

// Removes the first line. Returns false if there is no line end left.
bool TakeLine(std::string_view& rest, std::string_view& line) {
    const std::size_t end = rest.find('\n');
    if (end == std::string_view::npos) return false;
    line = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return true;
}

}  // namespace

bool IsUnfinished(const std::optional<RestartState>& state) {
    return state && state->phase == LoadPhase::kLoading && state->position;
}

bool IsOver(const std::optional<RestartState>& state) {
    return state && state->phase != LoadPhase::kLoading;
}

std::string FormatRestartState(const RestartState& state) {
    std::string text(kFirstLine);
    for (const Field& field : kFields) {
        text += std::string(field.key) + "=" + field.format(state) + "\n";
    }
    return text + std::string(kChecksumKey) + Hex(DigestOf(text.data(), text.size())) + "\n";
}

Status ParseRestartState(const std::string& text, RestartState& state) {
    state = {};
    if (text.empty()) return Status::Refused("is empty");
    if (!text.starts_with(kFirstLine)) {
        if (text.size() < kFirstLine.size() && kFirstLine.starts_with(text)) {
            return Status::Refused("is cut short");
        }
        return Status::Refused("is not restart information of mqam, or was written by another version");
    }
    const std::size_t checksumAt = text.rfind(kChecksumKey);
    if (checksumAt == std::string::npos || text.back() != '\n') return Status::Refused("is cut short");
    if (text.substr(checksumAt) !=
        std::string(kChecksumKey) + Hex(DigestOf(text.data(), checksumAt)) + "\n") {
        return Status::Refused("is damaged: its checksum does not match its lines");
    }
    std::string_view rest = std::string_view(text).substr(0, checksumAt);
    rest.remove_prefix(kFirstLine.size());
    for (const Field& field : kFields) {
        if (rest.empty() && field.key == std::string_view(kFirstAddedKey)) break;
        std::string_view line;
        const std::string key = std::string(field.key) + "=";
        if (!TakeLine(rest, line) || !line.starts_with(key) ||
            !field.parse(std::string(line.substr(key.size())), state)) {
            return Status::Refused("was not written by this program: its line \"" + key +
                                   "\" is missing or wrong");
        }
    }
    return rest.empty() ? Status()
                        : Status::Refused("was not written by this program: it has additional lines");
}

std::uint64_t DigestOf(const char* bytes, std::size_t length) {
    return platform::DigestOf({bytes, length});
}

}  // namespace mqam
