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
constexpr MQLONG kUtf16 = 1200;  ///< byte order as the encoding says
constexpr MQLONG kUtf16LittleEndian = 1202;
constexpr MQLONG kIntegerMask = 0xF;
constexpr MQLONG kIntegerNormal = 1;  ///< most significant byte first
constexpr MQLONG kIntegerReversed = 2;

using Characters = std::vector<std::uint32_t>;

bool IsKnown(MQLONG ccsid) {
    return ccsid == kUtf8 || ccsid == kUtf16 || ccsid == kUtf16LittleEndian || FindCodePage(ccsid) != nullptr;
}

bool IsByteOrderKnown(MQLONG ccsid, MQLONG encoding) {
    const MQLONG order = encoding & kIntegerMask;
    return ccsid != kUtf16 || order == kIntegerNormal || order == kIntegerReversed;
}

bool IsBigEndian(MQLONG ccsid, MQLONG encoding) {
    return ccsid == kUtf16 && (encoding & kIntegerMask) == kIntegerNormal;
}

bool IsSurrogate(std::uint32_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}

bool DecodeUtf8(std::string_view data, Characters* characters) {
    for (std::size_t i = 0; i < data.size();) {
        const auto first = static_cast<unsigned char>(data[i++]);
        const int more = first < 0x80                    ? 0
                         : first >= 0xC2 && first < 0xE0 ? 1
                         : first >= 0xE0 && first < 0xF0 ? 2
                                                         : 3;
        if (more == 3 && (first < 0xF0 || first > 0xF4)) return false;
        std::uint32_t c = more == 0 ? first : first & (0x3FU >> more);
        for (int k = 0; k < more; ++k, ++i) {
            if (i >= data.size() || (static_cast<unsigned char>(data[i]) & 0xC0) != 0x80) return false;
            c = c << 6 | (static_cast<unsigned char>(data[i]) & 0x3F);
        }
        if ((more == 2 && c < 0x800) || (more == 3 && (c < 0x10000 || c > 0x10FFFF)) || IsSurrogate(c))
            return false;
        characters->push_back(c);
    }
    return true;
}

bool DecodeUtf16(std::string_view data, bool isBigEndian, Characters* characters) {
    if (data.size() % 2 != 0) return false;
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
            if (c > 0xDBFF || low < 0xDC00 || low > 0xDFFF) return false;
            c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        }
        characters->push_back(c);
    }
    return true;
}

bool Decode(std::string_view data, MQLONG ccsid, MQLONG encoding, Characters* characters) {
    characters->reserve(data.size());
    if (ccsid == kUtf8) return DecodeUtf8(data, characters);
    const CodePage* page = FindCodePage(ccsid);
    if (page == nullptr) return DecodeUtf16(data, IsBigEndian(ccsid, encoding), characters);
    for (const char byte : data)
        characters->push_back((*page)[static_cast<unsigned char>(byte)]);
    return true;
}

void AppendUtf8(std::uint32_t c, std::string* data) {
    if (c < 0x80) {
        *data += static_cast<char>(c);
        return;
    }
    const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    static constexpr unsigned char leads[] = {0, 0xC0, 0xE0, 0xF0};
    *data += static_cast<char>(leads[more] | c >> (6 * more));
    for (int k = more - 1; k >= 0; --k)
        *data += static_cast<char>(0x80 | (c >> (6 * k) & 0x3F));
}

void AppendUtf16(std::uint32_t c, bool isBigEndian, std::string* data) {
    const auto append = [&](std::uint32_t unit) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        *data += isBigEndian ? high : low;
        *data += isBigEndian ? low : high;
    };
    if (c < 0x10000) {
        append(c);
    } else {
        append(0xD800 + ((c - 0x10000) >> 10));
        append(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
}

/// False when a character has no counterpart: it is not replaced by another, the caller gets the data as it
/// was.
bool EncodeSingleByte(const Characters& characters, const CodePage& page, std::string* data) {
    std::vector<std::int16_t> bytes(0x10000, -1);
    for (std::size_t byte = 0; byte < page.size(); ++byte)
        bytes[page[byte]] = static_cast<std::int16_t>(byte);
    for (const std::uint32_t c : characters) {
        if (c >= bytes.size() || bytes[c] < 0) return false;
        *data += static_cast<char>(bytes[c]);
    }
    return true;
}

bool Encode(const Characters& characters, MQLONG ccsid, MQLONG encoding, std::string* data) {
    data->reserve(characters.size() * 2);
    const CodePage* page = FindCodePage(ccsid);
    if (page != nullptr) return EncodeSingleByte(characters, *page, data);
    for (const std::uint32_t c : characters) {
        if (ccsid == kUtf8)
            AppendUtf8(c, data);
        else
            AppendUtf16(c, IsBigEndian(ccsid, encoding), data);
    }
    return true;
}

ConversionResult Refused(MQLONG reason) {
    return {reason, 0, 0};
}

}  // namespace

ConversionResult ConvertMessage(const mqi::MQMD& descriptor, MQLONG wantedCcsid, MQLONG wantedEncoding,
                                void* buffer, std::size_t length, std::size_t capacity,
                                std::size_t* converted) {
    const MQLONG ccsid = descriptor.CodedCharSetId;
    const MQLONG encoding = descriptor.Encoding;
    *converted = length;
    if (ccsid == wantedCcsid && encoding == wantedEncoding) return {MQRC_NONE, ccsid, encoding};
    if (std::memcmp(descriptor.Format, "MQSTR   ", sizeof descriptor.Format) != 0)
        return Refused(mqi::MQRC_FORMAT_ERROR);
    if (!IsKnown(ccsid)) return Refused(mqi::MQRC_SOURCE_CCSID_ERROR);
    if (!IsKnown(wantedCcsid)) return Refused(mqi::MQRC_TARGET_CCSID_ERROR);
    if (!IsByteOrderKnown(ccsid, encoding)) return Refused(mqi::MQRC_SOURCE_INTEGER_ENC_ERROR);
    if (!IsByteOrderKnown(wantedCcsid, wantedEncoding)) return Refused(mqi::MQRC_TARGET_INTEGER_ENC_ERROR);
    Characters characters;
    std::string data;
    if (!Decode({static_cast<const char*>(buffer), length}, ccsid, encoding, &characters) ||
        !Encode(characters, wantedCcsid, wantedEncoding, &data))
        return Refused(mqi::MQRC_NOT_CONVERTED);
    if (data.size() > capacity) return Refused(mqi::MQRC_CONVERTED_MSG_TOO_BIG);
    std::memcpy(buffer, data.data(), data.size());
    *converted = data.size();
    return {MQRC_NONE, wantedCcsid, wantedEncoding};
}

}  // namespace spoolmq
