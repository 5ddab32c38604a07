// SPDX-License-Identifier: Apache-2.0

// Says what a failed request of the module means for the load and what an operator does next, from the tables
// of messages and MQ reasons.
#pragma once

#include <string>
#include <vector>

#include "mqam/explain/recovery.h"
#include "mqam/module/error_text.h"
#include "mqam/module/module_failure.h"

namespace mqam {

/// Returns kPermanent or kTransient: what the row of the message says, otherwise what that of the MQ reason
/// says. A failure that no table decides is transient: another attempt costs little, giving up wrongly costs
/// more.
[[nodiscard]] Recovery RecoveryOf(const ModuleFailure& failure);

/// Whether the failure means that an option or a value that the user gave is wrong: nothing was started.
[[nodiscard]] bool IsWrongOption(const ModuleFailure& failure);

/// Returns the plain fact, as a clause that can follow "mqam load: ": the meaning of the MQ reason, otherwise
/// the first sentence that the table has for the message, otherwise the message itself.
[[nodiscard]] std::string FindFact(const ErrorText& error);

/// Returns what to do next, a line each: what fits the message, then what fits the MQ reason. The result is
/// empty if no table has either.
[[nodiscard]] std::vector<std::string> FindAdvice(const ErrorText& error);

}  // namespace mqam
