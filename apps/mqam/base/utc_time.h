// SPDX-License-Identifier: Apache-2.0

// Formats the time of day as restart information and summaries show it.
#pragma once

#include <string>

namespace mqam {

/// Returns the current time in the form "2026-11-21 05:47:48 UTC", or an empty string if it is not known.
[[nodiscard]] std::string UtcNow();

}  // namespace mqam
