// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/store/names.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>

namespace spoolmq {

namespace {

constexpr std::size_t kStampChars = 25;  // YYYYMMDD-HHMMSS-NNNNNNNNN
constexpr std::int64_t kNsPerSecond = 1000000000;
// File systems allow 255 bytes. This limit leaves room for the stamp and a back-out count of any size.
constexpr std::size_t kRestCharsMax = 200;

struct CalendarTime {
    std::int64_t year = 1970, month = 1, day = 1, hour = 0, minute = 0, second = 0, nanosecond = 0;
};

CalendarTime CalendarOf(std::int64_t stampNs) {
    namespace chrono = std::chrono;
    const chrono::sys_time<chrono::nanoseconds> time{chrono::nanoseconds(stampNs)};
    const auto midnight = chrono::floor<chrono::days>(time);
    const chrono::year_month_day date(midnight);
    const std::int64_t ofDay = (time - midnight).count();
    CalendarTime calendar;
    calendar.year = static_cast<int>(date.year());
    calendar.month = static_cast<unsigned>(date.month());
    calendar.day = static_cast<unsigned>(date.day());
    calendar.hour = ofDay / kNsPerSecond / 3600;
    calendar.minute = ofDay / kNsPerSecond / 60 % 60;
    calendar.second = ofDay / kNsPerSecond % 60;
    calendar.nanosecond = ofDay % kNsPerSecond;
    return calendar;
}

char* WriteDigits(char* to, std::int64_t value, int digits) {
    for (int place = digits - 1; place >= 0; --place) {
        to[place] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
    return to + digits;
}

// Reads a number of `digits` characters. Returns false when one of them is not a digit.
bool ReadDigits(const char* from, int digits, std::int64_t& value) {
    value = 0;
    for (int place = 0; place < digits; ++place) {
        if (from[place] < '0' || from[place] > '9') {
            return false;
        }
        value = value * 10 + (from[place] - '0');
    }
    return true;
}

bool ParseStamp(std::string_view text, std::int64_t& stampNs) {
    if (text.size() < kStampChars || text[8] != '-' || text[15] != '-') {
        return false;
    }
    CalendarTime at;
    const char* chars = text.data();
    if (!ReadDigits(chars, 4, at.year) || !ReadDigits(chars + 4, 2, at.month) ||
        !ReadDigits(chars + 6, 2, at.day) || !ReadDigits(chars + 9, 2, at.hour) ||
        !ReadDigits(chars + 11, 2, at.minute) || !ReadDigits(chars + 13, 2, at.second) ||
        !ReadDigits(chars + 16, 9, at.nanosecond)) {
        return false;
    }
    namespace chrono = std::chrono;
    const chrono::year_month_day date{chrono::year(static_cast<int>(at.year)),
                                      chrono::month(static_cast<unsigned>(at.month)),
                                      chrono::day(static_cast<unsigned>(at.day))};
    if (!date.ok() || at.hour > 23 || at.minute > 59 || at.second > 59 || at.year < 1970 || at.year > 2261) {
        return false;
    }
    const std::int64_t days = chrono::sys_days(date).time_since_epoch().count();
    stampNs = (((days * 24 + at.hour) * 60 + at.minute) * 60 + at.second) * kNsPerSecond + at.nanosecond;
    return true;
}

std::string FormatStamp(std::int64_t stampNs) {
    const CalendarTime at = CalendarOf(stampNs);
    std::string text(kStampChars, '-');
    char* next = WriteDigits(text.data(), at.year, 4);
    next = WriteDigits(next, at.month, 2);
    next = WriteDigits(next, at.day, 2) + 1;
    next = WriteDigits(next, at.hour, 2);
    next = WriteDigits(next, at.minute, 2);
    next = WriteDigits(next, at.second, 2) + 1;
    WriteDigits(next, at.nanosecond, 9);
    return text;
}

bool IsObjectCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           (c != '\0' && std::strchr("./_%", c) != nullptr);
}

}  // namespace

std::string FormatMessageName(const MessageName& name) {
    std::string text = FormatStamp(name.stampNs);
    if (name.backoutCount > 0) {
        text += '~' + std::to_string(name.backoutCount);
    }
    return text + '.' + name.rest;
}

bool ParseMessageName(std::string_view text, MessageName& name) {
    if (!ParseStamp(text, name.stampNs)) {
        return false;
    }
    std::size_t at = kStampChars;
    name.backoutCount = 0;
    if (at < text.size() && text[at] == '~') {
        std::int64_t count = 0;
        const std::size_t first = ++at;
        while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
            count = std::min<std::int64_t>(count * 10 + (text[at] - '0'), kMaxBackoutCount);
            ++at;
        }
        if (at == first) {
            return false;
        }
        name.backoutCount = static_cast<std::int32_t>(count);
    }
    if (at + 1 >= text.size() || text[at] != '.') {
        return false;
    }
    name.rest = text.substr(at + 1);
    return true;
}

std::string DescriptorName(const MessageName& name) {
    return FormatStamp(name.stampNs) + '.' + name.rest;
}

MessageName CopiedInName(std::int64_t stampNs, std::string_view fileName) {
    if (fileName.size() > kRestCharsMax) {
        std::size_t first = fileName.size() - kRestCharsMax;
        // The name must not be cut in the middle of a UTF-8 character.
        while (first < fileName.size() && (static_cast<unsigned char>(fileName[first]) & 0xC0) == 0x80) {
            ++first;
        }
        fileName.remove_prefix(first);
    }
    return {stampNs, 0, std::string(fileName)};
}

bool IsIgnoredFile(std::string_view fileName) {
    static constexpr std::array<std::string_view, 5> endings = {".tmp", ".part", ".partial", ".crdownload",
                                                                "~"};
    if (fileName.empty() || fileName[0] == '.') {
        return true;
    }
    for (const std::string_view ending : endings) {
        if (fileName.ends_with(ending)) {
            return true;
        }
    }
    return false;
}

void FormatPutDateTime(std::int64_t stampNs, char* date, char* time) {
    const CalendarTime at = CalendarOf(stampNs);
    WriteDigits(WriteDigits(WriteDigits(date, at.year, 4), at.month, 2), at.day, 2);
    WriteDigits(WriteDigits(WriteDigits(WriteDigits(time, at.hour, 2), at.minute, 2), at.second, 2),
                at.nanosecond / 10000000, 2);
}

bool IsObjectName(std::string_view name) {
    if (name.empty() || name.size() > 48) {
        return false;
    }
    for (const char c : name) {
        if (!IsObjectCharacter(c)) {
            return false;
        }
    }
    return true;
}

std::string DirectoryOfObject(std::string_view name) {
    std::string directory;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char c = name[i];
        const bool dotAtEnd = c == '.' && (i == 0 || i + 1 == name.size());
        if (c == '/') {
            directory += "%2F";
        } else if (c == '%') {
            directory += "%25";
        } else if (dotAtEnd) {
            directory += "%2E";
        } else {
            directory += c;
        }
    }
    return directory;
}

std::string ObjectOfDirectory(std::string_view directory) {
    std::string name;
    for (std::size_t i = 0; i < directory.size(); ++i) {
        if (directory[i] != '%') {
            name += directory[i];
            continue;
        }
        const std::string_view code = directory.substr(i, 3);
        if (code == "%2F") {
            name += '/';
        } else if (code == "%25") {
            name += '%';
        } else if (code == "%2E") {
            name += '.';
        } else {
            return {};
        }
        i += 2;
    }
    return IsObjectName(name) && DirectoryOfObject(name) == directory ? name : std::string();
}

}  // namespace spoolmq
