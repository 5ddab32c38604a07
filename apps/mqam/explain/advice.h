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

/// Returns kPermanent or kTransient, as the first row says that decides it: that of the return code, of the
/// message or of the MQ reason. If none of them decides it, the failure counts as transient, because another
/// attempt costs less than giving up wrongly.
[[nodiscard]] Recovery RecoveryOf(const ModuleFailure& failure);

/// Returns whether the module refused an option or a value that the user gave. In that case nothing was
/// started.
[[nodiscard]] bool IsWrongOption(const ModuleFailure& failure);

/// Returns the plain fact, as a clause that can follow "mqam load: ": the meaning of the MQ reason, otherwise
/// the first sentence that the table has for the message, otherwise the message itself.
[[nodiscard]] std::string FindFact(const ErrorText& error);

/// Returns what to do next, one line for each piece of advice: first that for the message, then that for the
/// MQ reason. The result is empty if no table has advice.
[[nodiscard]] std::vector<std::string> FindAdvice(const ErrorText& error);

}  // namespace mqam
