// SPDX-License-Identifier: Apache-2.0

// Shows a failed request of the module to an operator: each piece on a line of its own, and what to do.
#pragma once

#include <cstdint>
#include <string>

#include "mqam/module/module_failure.h"

namespace mqam {

/// Says how much of a failure is shown.
enum class FailureDetail : std::uint8_t {
    kForOperators,   ///< what happened and what to do
    kForDevelopers,  ///< also the request, its return code and the module's function
};

/// Returns the lines to print, each with its line end: first the plain fact, then the message with its
/// number, the request, the module's function, the failing call, the kind of file, the reason, the cause and
/// what to do next, as far as the failure has them and `detail` asks for them. A text of unknown form is
/// shown in full.
[[nodiscard]] std::string DescribeFailure(const ModuleFailure& failure, FailureDetail detail);

/// Returns one line (no line end) for an error text that came with a request that succeeded: a warning or a
/// notice, such as a log that could not be written and was given up.
[[nodiscard]] std::string DescribeNotice(const std::string& text);

}  // namespace mqam
