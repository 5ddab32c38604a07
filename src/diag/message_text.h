// SPDX-License-Identifier: Apache-2.0

// Makes the texts of the module from the names and formats of its numbered messages. Every statement is
// formatted into the message text, one buffer of 1024 bytes, before it is traced or reported.
//
// The buffer keeps what was formatted last: when the queue cannot be opened for a reason that has no message
// of its own, whatever the buffer then contains is reported.
#pragma once

#include <cstddef>
#include <type_traits>

namespace mqamod {

/// Names the numbered messages; the value of a name is its number. messages.inc describes each of them.
enum class Message : int {
#define MESSAGE(name, number, ...) name = (number),
#define UNNUMBERED(...)
#include "diag/messages.inc"
};

/// Returns the format of a numbered message, or null when no message has that number. The number itself is
/// the first argument, the message's own arguments follow.
[[nodiscard]] constexpr const char* GetMsgFormat(int number) {
    switch (number) {
#define MESSAGE(name, number, format, ...) \
    case number:                           \
        return "MQA%04d: " format;
#define UNNUMBERED(...)
#include "diag/messages.inc"
        default: return nullptr;
    }
}

/// Returns the text formatted last, which is empty before the first. It is valid until the next text is
/// formatted.
[[nodiscard]] const char* MessageText();

/// Formats into the message text, cut at 1023 characters. No argument may point into the message text itself.
/// Returns MessageText().
[[gnu::format(printf, 1, 2)]] const char* FormatText(const char* format, ...);

/// Appends at most count bytes to the message text; it stops at a NUL among them and when the text has 1023
/// characters. Returns MessageText().
const char* AppendBytes(const void* bytes, unsigned count);

/// Only FormatNumbered uses these, to check arguments against formats.
namespace format_check {

/// Returns the conversion that an argument of this type needs: 's', 'd', 'l' for %ld, '?' if no message takes
/// such an argument.
template <class T>
constexpr char ConversionFor() {
    if (std::is_same_v<T, const char*> || std::is_same_v<T, char*>) return 's';
    if (std::is_same_v<T, int>) return 'd';
    return std::is_same_v<T, long> ? 'l' : '?';
}

/// Returns whether the format takes exactly these arguments, in this order.
template <class... Arguments>
constexpr bool Takes(const char* format) {
    const char given[] = {ConversionFor<Arguments>()..., '\0'};
    std::size_t next = 0;
    for (; *format != '\0'; ++format) {
        if (*format != '%') continue;
        while (*++format >= '0' && *format <= '9') {
        }
        const char wanted = *format;
        if (wanted == 'l' && *++format != 'd') return false;
        if (wanted == '\0' || given[next] != wanted) return false;
        ++next;
    }
    return given[next] == '\0';
}

/// Does what FormatText does, without the compiler's check, for formats that Takes has checked.
const char* FormatChecked(const char* format, ...);

}  // namespace format_check

/// Formats a numbered message into the message text, as FormatText does. Arguments that do not fit the format
/// in number or type (text, int, and long for a reason code) do not compile. Returns MessageText().
template <Message kMessage, class... Arguments>
const char* FormatNumbered(Arguments... arguments) {
    constexpr int kNumber = static_cast<int>(kMessage);
    static_assert(format_check::Takes<int, Arguments...>(GetMsgFormat(kNumber)),
                  "the arguments do not fit the format of the message");
    return format_check::FormatChecked(GetMsgFormat(kNumber), kNumber, arguments...);
}

}  // namespace mqamod
