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

/// Whether a message was taken from the queue by an unprotected load and is not in its target.
///   outcome  `records` counts the records that are completely in the target
[[nodiscard]] bool IsAnyLost(const PlainLoadResult& outcome);

/// Returns a line that states what an unprotected load has lost, or what a failure would have lost.
///   mostRecordsHeld  how many records at any one time were neither on the queue nor in the target
[[nodiscard]] std::string DescribeCost(const PlainLoadResult& outcome, std::uint64_t mostRecordsHeld,
                                       const std::string& target);

}  // namespace mqam
