// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/record_encoder.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "mqam/base/progress.h"

namespace mqam {

namespace {

constexpr std::string_view kNumber = "{\"number\":";
constexpr std::string_view kText = ",\"text\":\"";
constexpr std::string_view kBase64 = ",\"base64\":\"";
constexpr std::string_view kEnd = "\"}\n";
constexpr std::string_view kBase64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kHexDigits[] = "0123456789abcdef";

// A byte of text takes at most the six characters of \u001f.
constexpr std::uint64_t kJsonBytesPerByte = 6;
constexpr std::uint64_t kJsonBytesAround = 64;

// Returns how many bytes the UTF-8 character at the beginning of the text has; 0 if there is no valid one.
std::size_t CharacterBytes(std::string_view text) {
    const auto byte = [&text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto continues = [&byte](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    const unsigned first = byte(0);
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first <= 0xDF) return continues(1) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF) {
        const bool isOverlong = first == 0xE0 && byte(1) < 0xA0;
        const bool isSurrogate = first == 0xED && byte(1) > 0x9F;
        return continues(1) && continues(2) && !isOverlong && !isSurrogate ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool isOverlong = first == 0xF0 && byte(1) < 0x90;
        const bool isTooLarge = first == 0xF4 && byte(1) > 0x8F;
        return continues(1) && continues(2) && continues(3) && !isOverlong && !isTooLarge ? 4 : 0;
    }
    return 0;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t bytes = CharacterBytes(text);
        if (bytes == 0) return false;
        text.remove_prefix(bytes);
    }
    return true;
}

void AddJsonText(std::string_view text, std::string& json) {
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            json += {'\\', c};
        } else if (c == '\n') {
            json += "\\n";
        } else if (code < 0x20) {
            json += "\\u00";
            json += {kHexDigits[code >> 4], kHexDigits[code & 0x0F]};
        } else {
            json += c;
        }
    }
}

void AddBase64(std::string_view bytes, std::string& text) {
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group = group << 8 | (j < count ? static_cast<unsigned char>(bytes[i + j]) : 0U);
        for (std::size_t j = 0; j < 4; ++j)
            text += j <= count ? kBase64Digits[group >> (18 - 6 * j) & 0x3F] : '=';
    }
}

// Returns the text that AddJsonText made something of; none if it made no such thing.
std::optional<std::string> ReadJsonText(std::string_view json) {
    std::string text;
    for (std::size_t i = 0; i < json.size(); ++i) {
        if (json[i] != '\\') {
            text += json[i];
            continue;
        }
        if (++i == json.size()) return std::nullopt;
        if (json[i] == 'n') {
            text += '\n';
        } else if (json[i] == 'u') {
            unsigned code = 0;
            const char* const digits = json.data() + i + 1;
            if (json.size() - i < 5 || std::from_chars(digits, digits + 4, code, 16).ptr != digits + 4) {
                return std::nullopt;
            }
            text += static_cast<char>(code);
            i += 4;
        } else {
            text += json[i];
        }
    }
    return text;
}

std::optional<std::string> ReadBase64(std::string_view text) {
    std::string bytes;
    if (text.size() % 4 != 0) return std::nullopt;
    for (std::size_t i = 0; i < text.size(); i += 4) {
        std::uint32_t group = 0;
        std::size_t count = 0;
        for (std::size_t j = 0; j < 4; ++j) {
            const std::size_t digit = kBase64Digits.find(text[i + j]);
            if (digit == std::string_view::npos && text[i + j] != '=') return std::nullopt;
            if (digit != std::string_view::npos) ++count;
            group = group << 6 | static_cast<std::uint32_t>(digit == std::string_view::npos ? 0 : digit);
        }
        for (std::size_t j = 0; j + 1 < count; ++j)
            bytes += static_cast<char>(group >> (16 - 8 * j) & 0xFF);
    }
    return bytes;
}

// Returns the record of a line of json, without its line feed.
std::optional<std::string> ReadJson(std::string_view line) {
    constexpr std::string_view kClosing = "\"}";
    if (!line.starts_with(kNumber) || !line.ends_with(kClosing)) return std::nullopt;
    line.remove_prefix(kNumber.size());
    line.remove_suffix(kClosing.size());
    line.remove_prefix(std::min(line.find(','), line.size()));
    if (line.starts_with(kText)) return ReadJsonText(line.substr(kText.size()));
    if (line.starts_with(kBase64)) return ReadBase64(line.substr(kBase64.size()));
    return std::nullopt;
}

void AddEscaped(std::string_view record, std::string& text) {
    for (const char c : record) {
        if (c == '\n') {
            text += "\\n";
        } else {
            text += c;
            if (c == '\\') text += c;
        }
    }
}

std::string ReadEscaped(std::string_view text) {
    std::string record;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) {
            ++i;
            record += text[i] == 'n' ? '\n' : text[i];
        } else {
            record += text[i];
        }
    }
    return record;
}

bool IsEscaped(const RecordLayout& layout) {
    return layout.format == RecordFormat::kLines && layout.newlines == NewlineRule::kEscape;
}

// Whether a record's place in the file depends on its bytes, and not only on its length.
bool IsTransformed(const RecordLayout& layout) {
    return IsEscaped(layout) || layout.format == RecordFormat::kJson;
}

}  // namespace

std::string NameOf(const RecordLayout& layout) {
    return NameOf(layout.format) + std::string(IsEscaped(layout) ? "-escaped" : "");
}

std::string DescribeLineFeeds(std::uint64_t records) {
    if (records == 0) return "";
    return "warning: " + FormatCount(records) + " of the records just written " +
           (records == 1 ? "contains line feeds and takes" : "contain line feeds and take") +
           " several lines; use --on-newline escape, --format length or --format json to keep records apart";
}

RecordEncoder::RecordEncoder(RecordLayout layout, std::uint64_t recordsBefore)
    : layout_(layout), records_(recordsBefore) {}

void RecordEncoder::EncodeJson(std::string_view record) {
    scratch_ = kNumber;
    scratch_ += std::to_string(records_);
    const bool isText = IsUtf8(record);
    scratch_ += isText ? kText : kBase64;
    if (isText) {
        AddJsonText(record, scratch_);
    } else {
        AddBase64(record, scratch_);
    }
    scratch_ += kEnd;
}

Status RecordEncoder::Encode(const char* record, std::size_t length, Encoded& encoded) {
    const std::string_view bytes(record, length);
    ++records_;
    encoded = {{}, bytes, {}};
    if (layout_.format == RecordFormat::kJson) {
        EncodeJson(bytes);
        encoded.body = scratch_;
    } else if (layout_.format == RecordFormat::kLength) {
        scratch_.clear();
        for (unsigned shift = 0; shift < 32; shift += 8)
            scratch_ += static_cast<char>(length >> shift & 0xFF);
        encoded.before = scratch_;
    } else if (layout_.format == RecordFormat::kLines) {
        encoded.after = "\n";
        const bool hasLineFeed = bytes.find('\n') != std::string_view::npos;
        if (hasLineFeed) ++recordsWithLineFeeds_;
        if (hasLineFeed && layout_.newlines == NewlineRule::kFail) {
            return Status::Permanent(
                "record " + std::to_string(records_) +
                " of the load contains a line feed, and --on-newline fail refuses it; use "
                "--on-newline keep to resume, or load from scratch with --on-newline escape, "
                "--format length or --format json");
        }
        if (IsEscaped(layout_)) {
            scratch_.clear();
            AddEscaped(bytes, scratch_);
            encoded.body = scratch_;
        }
    }
    return {};
}

std::uint64_t TailBytes(const RecordLayout& layout, std::uint64_t recordBytes) {
    if (layout.format == RecordFormat::kJson) return recordBytes * kJsonBytesPerByte + kJsonBytesAround;
    // A line feed before the line, one after it, and two characters for each byte.
    if (IsEscaped(layout)) return recordBytes * 2 + 2;
    return recordBytes + (layout.format == RecordFormat::kLines ? 1 : 0);
}

bool DecodeLastRecord(const RecordLayout& layout, std::string_view tail, std::uint64_t recordBytes,
                      std::string& record) {
    const bool endsWithLineFeed =
        layout.format == RecordFormat::kLines || layout.format == RecordFormat::kJson;
    if (endsWithLineFeed) {
        if (!tail.ends_with('\n')) return false;
        tail.remove_suffix(1);
    }
    if (!IsTransformed(layout)) {
        if (tail.size() < recordBytes) return false;
        record = tail.substr(tail.size() - static_cast<std::size_t>(recordBytes));
        return true;
    }
    const std::size_t lineFeed = tail.rfind('\n');
    const std::string_view line = lineFeed == std::string_view::npos ? tail : tail.substr(lineFeed + 1);
    const std::optional<std::string> decoded = IsEscaped(layout) ? ReadEscaped(line) : ReadJson(line);
    if (!decoded || decoded->size() != recordBytes) return false;
    record = *decoded;
    return true;
}

}  // namespace mqam
