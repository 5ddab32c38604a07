#include "diag/message_text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "diag/message_catalogue.h"

namespace {

// Written only here; survives every request.
char messageText[1024];

}  // namespace

const char* MessageText() {
    return messageText;
}

const char* FormatText(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(messageText, sizeof messageText, format, arguments);
    va_end(arguments);
    return messageText;
}

const char* FormatNumbered(int code, ...) {
    const char* format = GetMsgFormat(code);
    // Every format of the catalogue begins with the code, so the code is formatted first and the rest, which
    // takes the caller's arguments, behind it.
    const char* rest = std::strchr(format, ':');
    const int used = std::snprintf(messageText, sizeof messageText, "MQA%04d", code);
    va_list arguments;
    va_start(arguments, code);
    std::vsnprintf(messageText + used, sizeof messageText - static_cast<std::size_t>(used), rest, arguments);
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
