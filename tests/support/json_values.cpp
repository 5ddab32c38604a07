// SPDX-License-Identifier: Apache-2.0
#include "tests/support/json_values.h"

#include <regex>

namespace {

class Reader {
  public:
    explicit Reader(const std::string& text) : text_(text) {}

    bool ReadAll() {
        if (!ReadValue("")) return false;
        SkipBlanks();
        return at_ == text_.size();
    }

    std::map<std::string, std::string> values;

  private:
    void SkipBlanks() { at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size()); }

    bool Take(char expected) {
        SkipBlanks();
        if (at_ >= text_.size() || text_[at_] != expected) return false;
        ++at_;
        return true;
    }

    static std::string Below(const std::string& path, const std::string& name) {
        return path.empty() ? name : path + "." + name;
    }

    bool ReadValue(const std::string& path) {
        if (Take('{')) return ReadObject(path);
        if (Take('[')) return ReadArray(path);
        if (Take('"')) return ReadString(values[path]);
        static const std::regex literal("(-?(0|[1-9][0-9]*)(\\.[0-9]+)?([eE][-+]?[0-9]+)?|true|false|null)");
        std::smatch match;
        if (!std::regex_search(text_.begin() + static_cast<std::ptrdiff_t>(at_), text_.end(), match, literal,
                               std::regex_constants::match_continuous)) {
            return false;
        }
        values[path] = match.str();
        at_ += static_cast<std::size_t>(match.length());
        return true;
    }

    bool ReadObject(const std::string& path) {
        if (Take('}')) return values.emplace(path, "{}").second;
        do {
            std::string key;
            if (!Take('"') || !ReadString(key) || !Take(':')) return false;
            const std::size_t before = values.size();
            if (!ReadValue(Below(path, key))) return false;
            // A repeated key leaves the number of values unchanged.
            if (values.size() == before) return false;
        } while (Take(','));
        return Take('}');
    }

    bool ReadArray(const std::string& path) {
        if (Take(']')) return values.emplace(path, "[]").second;
        std::size_t index = 0;
        do {
            if (!ReadValue(Below(path, std::to_string(index++)))) return false;
        } while (Take(','));
        return Take(']');
    }

    // Reads the rest of a string whose opening quote has been read.
    bool ReadString(std::string& value) {
        while (at_ < text_.size()) {
            const char c = text_[at_++];
            if (c == '"') return true;
            if (static_cast<unsigned char>(c) < ' ') return false;
            if (c != '\\') {
                value += c;
            } else if (!ReadEscape(value)) {
                return false;
            }
        }
        return false;
    }

    bool ReadEscape(std::string& value) {
        static const std::map<char, char> escapes = {{'"', '"'},  {'\\', '\\'}, {'/', '/'},  {'n', '\n'},
                                                     {'r', '\r'}, {'t', '\t'},  {'b', '\b'}, {'f', '\f'}};
        if (at_ >= text_.size()) return false;
        const char c = text_[at_++];
        if (const auto found = escapes.find(c); found != escapes.end()) {
            value += found->second;
            return true;
        }
        // Nothing that the tests read needs an escaped character above 7F.
        const std::string digits = text_.substr(at_, 4);
        if (c != 'u' || !std::regex_match(digits, std::regex("00[0-7][0-9a-fA-F]"))) return false;
        value += static_cast<char>(std::stoi(digits, nullptr, 16));
        at_ += 4;
        return true;
    }

    const std::string& text_;
    std::size_t at_ = 0;
};

bool IsUtf8(const std::string& text) {
    // std::regex cannot match bytes above 7F reliably, so the sequences are checked byte by byte.
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        const int more = lead < 0x80                   ? 0
                         : lead >= 0xC2 && lead < 0xE0 ? 1
                         : lead >= 0xE0 && lead < 0xF0 ? 2
                         : lead >= 0xF0 && lead < 0xF5 ? 3
                                                       : -1;
        if (more < 0) return false;
        for (int j = 0; j < more; ++j, ++i) {
            if (i >= text.size() || (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return false;
        }
    }
    return true;
}

}  // namespace

std::optional<std::map<std::string, std::string>> ReadJson(const std::string& text) {
    Reader reader(text);
    if (!IsUtf8(text) || !reader.ReadAll()) return std::nullopt;
    return reader.values;
}
