// The system's error texts; of the Windows sources of this directory only.
#pragma once

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <string>

namespace platform {

/// Returns the system's text for an error code without a line end, or "error CODE" if it has none.
[[nodiscard]] std::string DescribeSystemError(DWORD code);

}  // namespace platform
