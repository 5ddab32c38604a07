// SPDX-License-Identifier: Apache-2.0

// Turns columns of the tables into sentences.
#pragma once

#include <string>

#include "mqam/explain/module_messages.h"
#include "mqam/explain/recovery.h"
#include "mqam/explain/rules.h"

namespace mqam {

/// Returns whether another attempt helps, and which exit code a load then has.
[[nodiscard]] std::string DescribeRecovery(Recovery recovery);

/// Returns where a message appears and during which requests.
[[nodiscard]] std::string DescribeOrigin(const ModuleMessage& message);

/// Returns the kind of an item, such as a rule for hosts or a guarantee.
[[nodiscard]] std::string DescribeRuleKind(const LoadRule& rule);

}  // namespace mqam
