#include "diag/message_text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

// Written only by the routines of this file. Empty when the module is loaded; no request clears it.
char messageText[1024];

const char* FormatList(const char* format, std::va_list arguments) {
    std::vsnprintf(messageText, sizeof messageText, format, arguments);
    return messageText;
}

}  // namespace

const char* MessageText() {
    return messageText;
}

const char* FormatText(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    FormatList(format, arguments);
    va_end(arguments);
    return messageText;
}

const char* format_check::FormatChecked(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    FormatList(format, arguments);
    va_end(arguments);
    return messageText;
}

const char* AppendBytes(const void* bytes, unsigned count) {
    const std::size_t used = std::strlen(messageText);
    std::size_t room = sizeof messageText - 1 - used;
    if (room > count) room = count;
    std::strncat(messageText + used, static_cast<const char*>(bytes), room);
    return messageText;
}
