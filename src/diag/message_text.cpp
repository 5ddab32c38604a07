// SPDX-License-Identifier: Apache-2.0
#include "diag/message_text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace mqamod {

namespace {

// Holds the message text. Only the routines of this file write it.
struct MessageTextState {
    char text[1024];  // empty when the module is loaded; no request clears it
};
MessageTextState state;

const char* FormatList(const char* format, std::va_list arguments) {
    std::vsnprintf(state.text, sizeof state.text, format, arguments);
    return state.text;
}

}  // namespace

const char* MessageText() {
    return state.text;
}

const char* FormatText(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    FormatList(format, arguments);
    va_end(arguments);
    return state.text;
}

const char* format_check::FormatChecked(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    FormatList(format, arguments);
    va_end(arguments);
    return state.text;
}

const char* AppendBytes(const void* bytes, unsigned count) {
    const std::size_t used = std::strlen(state.text);
    std::size_t room = sizeof state.text - 1 - used;
    if (room > count) room = count;
    std::strncat(state.text + used, static_cast<const char*>(bytes), room);
    return state.text;
}

}  // namespace mqamod
