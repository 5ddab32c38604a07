// SPDX-License-Identifier: Apache-2.0
#include "mqam/base/json_writer.h"

#include <cmath>
#include <cstdio>

namespace mqam {

namespace {

constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

// The lead bytes of UTF-8, with the range of the second byte. The ranges exclude overlong forms, surrogates
// and characters above U+10FFFF.
struct LeadBytes {
    unsigned char first;
    unsigned char last;
    unsigned char secondFirst;
    unsigned char secondLast;
    std::size_t length;
};

constexpr LeadBytes kLeadBytes[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

// Returns the length of the character at the beginning of a text that is not empty, or 0 if it is not valid
// UTF-8.
std::size_t CharacterLength(std::string_view text) {
    const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (const LeadBytes& lead : kLeadBytes) {
        if (byteAt(0) < lead.first || byteAt(0) > lead.last) continue;
        if (text.size() < lead.length) return 0;
        for (std::size_t i = 1; i < lead.length; ++i) {
            const unsigned char lowest = i == 1 ? lead.secondFirst : 0x80;
            const unsigned char highest = i == 1 ? lead.secondLast : 0xBF;
            if (byteAt(i) < lowest || byteAt(i) > highest) return 0;
        }
        return lead.length;
    }
    return 0;
}

void AppendAscii(std::string& quoted, char c) {
    switch (c) {
        case '"': quoted += "\\\""; return;
        case '\\': quoted += "\\\\"; return;
        case '\n': quoted += "\\n"; return;
        case '\r': quoted += "\\r"; return;
        case '\t': quoted += "\\t"; return;
        default: break;
    }
    // A terminal would obey DEL too, so it is escaped although JSON permits it.
    if (static_cast<unsigned char>(c) >= ' ' && c != 0x7F) {
        quoted += c;
        return;
    }
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
    quoted += escape;
}

}  // namespace

std::string JsonString(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        if (length == 1) {
            AppendAscii(quoted, text.front());
        } else {
            quoted += length == 0 ? kReplacementCharacter : text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return quoted + "\"";
}

JsonWriter& JsonWriter::Write(std::string_view value) {
    if (!followsKey_ && !hasElement_.empty()) {
        if (hasElement_.back()) text_ += ", ";
        hasElement_.back() = true;
    }
    followsKey_ = false;
    text_ += value;
    return *this;
}

JsonWriter& JsonWriter::Begin(char bracket) {
    Write({&bracket, 1});
    hasElement_.push_back(false);
    return *this;
}

JsonWriter& JsonWriter::End(char bracket) {
    hasElement_.pop_back();
    text_ += bracket;
    return *this;
}

JsonWriter& JsonWriter::BeginObject() {
    return Begin('{');
}

JsonWriter& JsonWriter::EndObject() {
    return End('}');
}

JsonWriter& JsonWriter::BeginArray() {
    return Begin('[');
}

JsonWriter& JsonWriter::EndArray() {
    return End(']');
}

JsonWriter& JsonWriter::Key(std::string_view name) {
    Write(JsonString(name) + ": ");
    followsKey_ = true;
    return *this;
}

JsonWriter& JsonWriter::Text(std::string_view value) {
    return Write(JsonString(value));
}

JsonWriter& JsonWriter::Number(std::uint64_t value) {
    return Write(std::to_string(value));
}

JsonWriter& JsonWriter::SignedNumber(std::int64_t value) {
    return Write(std::to_string(value));
}

JsonWriter& JsonWriter::Decimal(double value) {
    if (!std::isfinite(value)) return Null();
    char digits[400];
    std::snprintf(digits, sizeof digits, "%.3f", value);
    return Write(digits);
}

JsonWriter& JsonWriter::Bool(bool value) {
    return Write(value ? "true" : "false");
}

JsonWriter& JsonWriter::Null() {
    return Write("null");
}

}  // namespace mqam
