// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/conversion/convert.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "spoolmq/conversion/code_pages.h"

namespace spoolmq {

namespace {

constexpr MQLONG kUtf8 = 1208;
constexpr MQLONG kUtf16 = 1200;  // the encoding determines the byte order
constexpr MQLONG kUtf16LittleEndian = 1202;

// These bits of an encoding describe integers. In a "normal" integer the most significant byte comes first.
constexpr MQLONG kIntegerMask = 0xF;
constexpr MQLONG kIntegerNormal = 1;
constexpr MQLONG kIntegerReversed = 2;

using CodePoints = std::vector<std::uint32_t>;

bool IsKnown(MQLONG ccsid) {
    return ccsid == kUtf8 || ccsid == kUtf16 || ccsid == kUtf16LittleEndian || FindCodePage(ccsid) != nullptr;
}

bool IsByteOrderKnown(const TextForm& form) {
    const MQLONG order = form.encoding & kIntegerMask;
    return form.ccsid != kUtf16 || order == kIntegerNormal || order == kIntegerReversed;
}

bool IsBigEndian(const TextForm& form) {
    return form.ccsid == kUtf16 && (form.encoding & kIntegerMask) == kIntegerNormal;
}

bool IsSurrogate(std::uint32_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}

bool DecodeUtf8(std::string_view data, CodePoints& codePoints) {
    for (std::size_t i = 0; i < data.size();) {
        const auto first = static_cast<unsigned char>(data[i++]);
        const int more = first < 0x80                    ? 0
                         : first >= 0xC2 && first < 0xE0 ? 1
                         : first >= 0xE0 && first < 0xF0 ? 2
                                                         : 3;
        if (more == 3 && (first < 0xF0 || first > 0xF4)) {
            return false;
        }
        std::uint32_t c = more == 0 ? first : first & (0x3FU >> more);
        for (int k = 0; k < more; ++k, ++i) {
            if (i >= data.size() || (static_cast<unsigned char>(data[i]) & 0xC0) != 0x80) {
                return false;
            }
            c = c << 6 | (static_cast<unsigned char>(data[i]) & 0x3F);
        }
        if ((more == 2 && c < 0x800) || (more == 3 && (c < 0x10000 || c > 0x10FFFF)) || IsSurrogate(c)) {
            return false;
        }
        codePoints.push_back(c);
    }
    return true;
}

bool DecodeUtf16(std::string_view data, bool isBigEndian, CodePoints& codePoints) {
    if (data.size() % 2 != 0) {
        return false;
    }
    const auto unitAt = [&](std::size_t i) {
        const auto a = static_cast<unsigned char>(data[i]);
        const auto b = static_cast<unsigned char>(data[i + 1]);
        return static_cast<std::uint32_t>(isBigEndian ? a << 8 | b : b << 8 | a);
    };
    for (std::size_t i = 0; i < data.size(); i += 2) {
        std::uint32_t c = unitAt(i);
        if (IsSurrogate(c)) {
            i += 2;
            const std::uint32_t low = i < data.size() ? unitAt(i) : 0;
            if (c > 0xDBFF || low < 0xDC00 || low > 0xDFFF) {
                return false;
            }
            c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        }
        codePoints.push_back(c);
    }
    return true;
}

bool Decode(std::string_view data, const TextForm& form, CodePoints& codePoints) {
    codePoints.reserve(data.size());
    if (form.ccsid == kUtf8) {
        return DecodeUtf8(data, codePoints);
    }
    const CodePage* page = FindCodePage(form.ccsid);
    if (page == nullptr) {
        return DecodeUtf16(data, IsBigEndian(form), codePoints);
    }
    for (const char byte : data) {
        codePoints.push_back((*page)[static_cast<unsigned char>(byte)]);
    }
    return true;
}

void AppendUtf8(std::uint32_t c, std::string& data) {
    if (c < 0x80) {
        data += static_cast<char>(c);
        return;
    }
    const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    static constexpr unsigned char leads[] = {0, 0xC0, 0xE0, 0xF0};
    data += static_cast<char>(leads[more] | c >> (6 * more));
    for (int k = more - 1; k >= 0; --k) {
        data += static_cast<char>(0x80 | (c >> (6 * k) & 0x3F));
    }
}

void AppendUtf16(std::uint32_t c, bool isBigEndian, std::string& data) {
    const auto append = [&](std::uint32_t unit) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        data += isBigEndian ? high : low;
        data += isBigEndian ? low : high;
    };
    if (c < 0x10000) {
        append(c);
    } else {
        append(0xD800 + ((c - 0x10000) >> 10));
        append(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
}

// Returns false if a character does not exist in the code page. No substitute is written for it, because the
// caller of MQGET is then to receive the data unconverted.
bool EncodeSingleByte(const CodePoints& codePoints, const CodePage& page, std::string& data) {
    std::vector<std::int16_t> bytes(0x10000, -1);
    for (std::size_t byte = 0; byte < page.size(); ++byte) {
        bytes[page[byte]] = static_cast<std::int16_t>(byte);
    }
    for (const std::uint32_t c : codePoints) {
        if (c >= bytes.size() || bytes[c] < 0) {
            return false;
        }
        data += static_cast<char>(bytes[c]);
    }
    return true;
}

bool Encode(const CodePoints& codePoints, const TextForm& form, std::string& data) {
    data.reserve(codePoints.size() * 2);
    const CodePage* page = FindCodePage(form.ccsid);
    if (page != nullptr) {
        return EncodeSingleByte(codePoints, *page, data);
    }
    for (const std::uint32_t c : codePoints) {
        if (form.ccsid == kUtf8) {
            AppendUtf8(c, data);
        } else {
            AppendUtf16(c, IsBigEndian(form), data);
        }
    }
    return true;
}

}  // namespace

Conversion ConvertMessage(const mqi::MQMD& descriptor, const TextForm& wanted, const MessageBuffer& buffer) {
    const TextForm source = {descriptor.CodedCharSetId, descriptor.Encoding};
    const auto refused = [&](MQLONG reason) { return Conversion{reason, {}, buffer.bytes}; };
    if (source.ccsid == wanted.ccsid && source.encoding == wanted.encoding) {
        return {MQRC_NONE, source, buffer.bytes};
    }
    if (std::memcmp(descriptor.Format, "MQSTR   ", sizeof descriptor.Format) != 0) {
        return refused(mqi::MQRC_FORMAT_ERROR);
    }
    if (!IsKnown(source.ccsid)) {
        return refused(mqi::MQRC_SOURCE_CCSID_ERROR);
    }
    if (!IsKnown(wanted.ccsid)) {
        return refused(mqi::MQRC_TARGET_CCSID_ERROR);
    }
    if (!IsByteOrderKnown(source)) {
        return refused(mqi::MQRC_SOURCE_INTEGER_ENC_ERROR);
    }
    if (!IsByteOrderKnown(wanted)) {
        return refused(mqi::MQRC_TARGET_INTEGER_ENC_ERROR);
    }
    CodePoints codePoints;
    std::string data;
    if (!Decode({static_cast<const char*>(buffer.data), buffer.bytes}, source, codePoints) ||
        !Encode(codePoints, wanted, data)) {
        return refused(mqi::MQRC_NOT_CONVERTED);
    }
    if (data.size() > buffer.capacity) {
        return refused(mqi::MQRC_CONVERTED_MSG_TOO_BIG);
    }
    std::memcpy(buffer.data, data.data(), data.size());
    return {MQRC_NONE, wanted, data.size()};
}

}  // namespace spoolmq
