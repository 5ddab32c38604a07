// SPDX-License-Identifier: Apache-2.0

// Receives the host's log from the module: the handle leads to an object whose function table receives the
// start-up report. That is the only way to see the parameters in effect without opening a queue.
#pragma once

#include <string>

namespace mqam {

/// Returns the handle for the attribute ZBQ_HL_LOG_HANDLE. It is the same at every call, and valid until the process ends.
[[nodiscard]] void* HostLogHandle();

/// Returns the report that the module last passed to the handle, or an empty string.
[[nodiscard]] const std::string& ReceivedReport();

}  // namespace mqam
