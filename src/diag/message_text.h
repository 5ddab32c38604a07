// SPDX-License-Identifier: Apache-2.0

// The texts of the module: the names and formats of its numbered messages, and the message text, one buffer
// of 1024 bytes into which every statement is formatted before it is traced or reported.
//
// The buffer keeps what was formatted last: a failed open of the queue reports whatever is there when no
// message of its own applies.
#pragma once

#include <cstddef>
#include <type_traits>

namespace mqamod {

/// The numbered messages, by name; the value is the number. messages.inc describes each of them.
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

/// The text formatted last; empty before the first. Valid until the next text is formatted.
[[nodiscard]] const char* MessageText();

/// Formats into the message text, cut at 1023 characters. No argument may point into the message text itself.
/// Returns MessageText().
[[gnu::format(printf, 1, 2)]] const char* FormatText(const char* format, ...);

/// Appends at most count bytes to the message text; it stops at a NUL among them and when the text has 1023
/// characters. Returns MessageText().
const char* AppendBytes(const void* bytes, unsigned count);

/// FormatNumbered checks arguments against formats with these; nothing else uses them.
namespace format_check {

/// The conversion that an argument of this type needs: 's', 'd', 'l' for %ld, '?' for none that a message
/// has.
template <class T>
constexpr char ConversionFor() {
    if (std::is_same_v<T, const char*> || std::is_same_v<T, char*>) return 's';
    if (std::is_same_v<T, int>) return 'd';
    return std::is_same_v<T, long> ? 'l' : '?';
}

/// Whether the format takes exactly these arguments, in this order.
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

/// FormatText without the compiler's check, for formats that Takes has checked.
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
