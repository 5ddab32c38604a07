// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/store/descriptor.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace spoolmq {

namespace {

enum class FieldKind { kNumber, kCharacters, kBytes };

struct Field {
    std::string_view name;
    FieldKind kind;
    std::size_t offset;
    std::size_t size;
};

#define SPOOLMQ_FIELD(name, kind) \
    { #name, FieldKind::k##kind, offsetof(mqi::MQMD, name), sizeof(mqi::MQMD::name) }
constexpr Field kFields[] = {
    SPOOLMQ_FIELD(MsgId, Bytes),
    SPOOLMQ_FIELD(CorrelId, Bytes),
    SPOOLMQ_FIELD(Format, Characters),
    SPOOLMQ_FIELD(CodedCharSetId, Number),
    SPOOLMQ_FIELD(Encoding, Number),
    SPOOLMQ_FIELD(Persistence, Number),
    SPOOLMQ_FIELD(Priority, Number),
    SPOOLMQ_FIELD(PutDate, Characters),
    SPOOLMQ_FIELD(PutTime, Characters),
    SPOOLMQ_FIELD(UserIdentifier, Characters),
    SPOOLMQ_FIELD(PutApplType, Number),
    SPOOLMQ_FIELD(PutApplName, Characters),
    SPOOLMQ_FIELD(Report, Number),
    SPOOLMQ_FIELD(MsgType, Number),
    SPOOLMQ_FIELD(Expiry, Number),
    SPOOLMQ_FIELD(Feedback, Number),
    SPOOLMQ_FIELD(ReplyToQ, Characters),
    SPOOLMQ_FIELD(ReplyToQMgr, Characters),
    SPOOLMQ_FIELD(AccountingToken, Bytes),
    SPOOLMQ_FIELD(ApplIdentityData, Characters),
    SPOOLMQ_FIELD(ApplOriginData, Characters),
    SPOOLMQ_FIELD(GroupId, Bytes),
    SPOOLMQ_FIELD(MsgSeqNumber, Number),
    SPOOLMQ_FIELD(Offset, Number),
    SPOOLMQ_FIELD(MsgFlags, Number),
    SPOOLMQ_FIELD(OriginalLength, Number),
};
#undef SPOOLMQ_FIELD

constexpr std::string_view kHexDigits = "0123456789abcdef";

// Returns the defaults that apply to a descriptor on disk: character fields are blank, not NUL.
mqi::MQMD BlankDescriptor() {
    mqi::MQMD descriptor = mqi::MqmdDefault();
    for (const Field& field : kFields) {
        if (field.kind == FieldKind::kCharacters) {
            std::memset(reinterpret_cast<char*>(&descriptor) + field.offset, ' ', field.size);
        }
    }
    return descriptor;
}

// Returns the text with each control character and percent sign written as %XX.
std::string EscapedText(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code < ' ' || c == '%') {
            escaped += '%';
            escaped += kHexDigits[code >> 4];
            escaped += kHexDigits[code & 15];
        } else {
            escaped += c;
        }
    }
    return escaped;
}

int HexValue(char digit) {
    const std::size_t value = kHexDigits.find(digit);
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

std::string UnescapedText(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 &&
            HexValue(text[i + 2]) >= 0) {
            plain += static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

void ParseBytes(std::string_view digits, unsigned char* to, std::size_t size) {
    for (std::size_t i = 0; i < size && i * 2 + 1 < digits.size(); ++i) {
        const int high = HexValue(digits[i * 2]);
        const int low = HexValue(digits[i * 2 + 1]);
        if (high < 0 || low < 0) {
            return;
        }
        to[i] = static_cast<unsigned char>(high * 16 + low);
    }
}

void ParseField(const Field& field, std::string_view value, mqi::MQMD& descriptor) {
    char* to = reinterpret_cast<char*>(&descriptor) + field.offset;
    if (field.kind == FieldKind::kNumber) {
        MQLONG number = 0;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
        if (error == std::errc() && end == value.data() + value.size()) {
            std::memcpy(to, &number, sizeof number);
        }
    } else if (field.kind == FieldKind::kCharacters) {
        FillField(to, field.size, UnescapedText(value));
    } else {
        ParseBytes(value, reinterpret_cast<unsigned char*>(to), field.size);
    }
}

}  // namespace

std::string HexDigits(const unsigned char* bytes, std::size_t count) {
    std::string digits;
    digits.reserve(count * 2);
    for (std::size_t i = 0; i < count; ++i) {
        digits += kHexDigits[bytes[i] >> 4];
        digits += kHexDigits[bytes[i] & 15];
    }
    return digits;
}

void FillField(char* field, std::size_t size, std::string_view text) {
    const std::size_t used = std::min(size, text.size());
    std::memcpy(field, text.data(), used);
    std::memset(field + used, ' ', size - used);
}

std::string_view FieldText(const char* field, std::size_t size) {
    std::string_view text(field, size);
    text = text.substr(0, text.find('\0'));
    const std::size_t last = text.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

std::string FormatDescriptor(const mqi::MQMD& descriptor) {
    static const mqi::MQMD defaults = BlankDescriptor();
    std::string text;
    text.reserve(400);
    for (const Field& field : kFields) {
        const char* from = reinterpret_cast<const char*>(&descriptor) + field.offset;
        if (std::memcmp(from, reinterpret_cast<const char*>(&defaults) + field.offset, field.size) == 0) {
            continue;
        }
        text += field.name;
        text += '=';
        if (field.kind == FieldKind::kNumber) {
            MQLONG number = 0;
            std::memcpy(&number, from, sizeof number);
            text += std::to_string(number);
        } else if (field.kind == FieldKind::kCharacters) {
            text += EscapedText(FieldText(from, field.size));
        } else {
            text += HexDigits(reinterpret_cast<const unsigned char*>(from), field.size);
        }
        text += '\n';
    }
    return text;
}

mqi::MQMD ParseDescriptor(std::string_view text) {
    static const mqi::MQMD defaults = BlankDescriptor();
    mqi::MQMD descriptor = defaults;
    const Field* const end = std::end(kFields);
    // Fields are mostly in the order of the table, so each search starts after the field that was found last.
    const Field* next = std::begin(kFields);
    while (!text.empty()) {
        const std::size_t lineEnd = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, lineEnd);
        text.remove_prefix(std::min(lineEnd + 1, text.size()));
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) {
            continue;
        }
        const auto isNamed = [&](const Field& field) { return field.name == line.substr(0, equals); };
        const Field* found = std::find_if(next, end, isNamed);
        if (found == end) {
            found = std::find_if(std::begin(kFields), end, isNamed);
        }
        if (found == end) {
            continue;
        }
        ParseField(*found, line.substr(equals + 1), descriptor);
        next = found + 1;
    }
    return descriptor;
}

}  // namespace spoolmq
