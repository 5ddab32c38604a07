// SPDX-License-Identifier: Apache-2.0

// Formats the time of day as restart information and summaries show it.
#pragma once

#include <string>

namespace mqam {

/// Formats a time as "2026-11-21 05:47:48 UTC".
[[nodiscard]] std::string UtcNow();

}  // namespace mqam
