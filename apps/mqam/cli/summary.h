// SPDX-License-Identifier: Apache-2.0

// Composes what the user reads at the end of a load.
#pragma once

#include <string>

#include "mqam/load/plain_load.h"

namespace mqam {

/// Returns the summary, a line each with its line end: how the input ended, records, bytes, elapsed time,
/// rate and target.
[[nodiscard]] std::string DescribeSummary(const PlainLoadResult& outcome, const std::string& target,
                                          double seconds);

/// Returns a line that says where the messages are after a load that failed with the input open.
[[nodiscard]] std::string DescribeWhatIsSafe(bool withCheckpoints);

}  // namespace mqam
