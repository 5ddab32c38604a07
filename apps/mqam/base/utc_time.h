// SPDX-License-Identifier: Apache-2.0

// The time of day as restart information and summaries show it.
#pragma once

#include <string>

namespace mqam {

/// "2026-11-21 05:47:48 UTC"
[[nodiscard]] std::string UtcNow();

}  // namespace mqam
