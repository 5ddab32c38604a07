#include "platform/windows_error.h"

namespace platform {

std::string DescribeSystemError(DWORD code) {
    char text[512];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        code, 0, text, sizeof text, nullptr);
    std::string description(text, length);
    while (!description.empty() && (description.back() == '\n' || description.back() == '\r'))
        description.pop_back();
    return description.empty() ? "error " + std::to_string(code) : description;
}

}  // namespace platform
