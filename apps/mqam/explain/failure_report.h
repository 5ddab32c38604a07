// How a failed request of the module is told to an operator: its pieces on lines of their own and what to do.
#pragma once

#include <string>

#include "mqam/module/module_failure.h"

namespace mqam {

/// Returns the lines to print, each with its line end: the message with its number, the module's function,
/// the failing call, the reason and what to do next, as far as the failure has them. A text of unknown form
/// is shown whole.
[[nodiscard]] std::string DescribeFailure(const ModuleFailure& failure);

/// Returns one line (no line end) for an error text that came with a request that succeeded: a warning or a
/// notice, such as a log that could not be written and was given up.
[[nodiscard]] std::string DescribeNotice(const std::string& text);

}  // namespace mqam
