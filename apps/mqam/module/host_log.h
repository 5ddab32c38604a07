// SPDX-License-Identifier: Apache-2.0

// Provides the log that a host offers to the module: its handle points to an object with a table of
// functions, one of which receives the start-up report. Only in this way can a host see the parameters in
// effect without opening a queue.
#pragma once

#include <string>

namespace mqam {

/// Returns the handle for the attribute ZBQ_HL_LOG_HANDLE. It is the same at every call, and valid until the
/// process ends.
[[nodiscard]] void* HostLogHandle();

/// Returns the report that the module last passed to the handle, or an empty string.
[[nodiscard]] const std::string& ReceivedReport();

}  // namespace mqam
