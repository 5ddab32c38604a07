// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "platform/file_status.h"
#include "platform/windows_text.h"

namespace platform {

namespace {

thread_local std::string lastFileError;

}  // namespace

std::wstring Wide(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const int bytes = static_cast<int>(text.size());
    UINT codePage = CP_UTF8;
    int length = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, text.data(), bytes, nullptr, 0);
    if (length == 0) {
        codePage = CP_ACP;
        length = MultiByteToWideChar(codePage, 0, text.data(), bytes, nullptr, 0);
    }
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), bytes, wide.data(), length);
    return wide;
}

std::string Narrow(const wchar_t* text, std::size_t count) {
    if (count == 0) {
        return {};
    }
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(count), nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(count), narrow.data(), length, nullptr, nullptr);
    return narrow;
}

std::string DescribeSystemError(DWORD code) {
    std::array<wchar_t, 512> text{};
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                                  0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) {
        --length;
    }
    return length > 0 ? Narrow(text.data(), length) : "system error " + std::to_string(code);
}

const std::string& LastFileError() {
    return lastFileError;
}

FileStatus StatusOfError(DWORD code) {
    lastFileError = DescribeSystemError(code);
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_DIRECTORY: return FileStatus::kNotFound;
        case ERROR_ALREADY_EXISTS:
        case ERROR_FILE_EXISTS: return FileStatus::kExists;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION: return FileStatus::kBusy;
        default: return FileStatus::kFailed;
    }
}

FileStatus StatusOfLastError() {
    return StatusOfError(GetLastError());
}

}  // namespace platform
