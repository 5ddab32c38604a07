// SPDX-License-Identifier: Apache-2.0

// Converts text and errors of Windows; only the Windows sources of this directory use it.
#pragma once

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/file_status.h"

namespace platform {

/// Returns UTF-8 text as UTF-16. Text that is not valid UTF-8 is taken to be in the system's code page, as
/// the arguments of a program are.
[[nodiscard]] std::wstring Wide(std::string_view text);

/// Returns UTF-16 text as UTF-8.
[[nodiscard]] std::string Narrow(const wchar_t* text, std::size_t count);

/// Returns the system's text for an error code, without a line end or a full stop, or "system error CODE" if
/// it has none.
[[nodiscard]] std::string DescribeSystemError(DWORD code);

/// Records the error for LastFileError and returns what it means.
FileStatus StatusOfError(DWORD code);

/// Does the same for the calling thread's last error.
FileStatus StatusOfLastError();

/// Returns kOk for a call that succeeded, otherwise StatusOfLastError.
inline FileStatus StatusOf(BOOL succeeded) {
    return succeeded != 0 ? FileStatus::kOk : StatusOfLastError();
}

}  // namespace platform
