// SPDX-License-Identifier: Apache-2.0

// Builds the module's initialization string: keywords with a leading dash and their values, separated by
// blanks.
#pragma once

#include <string>
#include <vector>

#include "mqam/base/status.h"

namespace mqam {

/// One keyword as the user gave it.
struct GivenKeyword {
    std::string keyword;              ///< the module's name for it, such as "QMGR"
    std::string option;               ///< what the user typed, such as "--qmgr"; error messages name it
    std::vector<std::string> values;  ///< in the order in which the module takes them; may be empty
};

/// Builds the initialization string; it is empty after a refusal. Refuses, naming the option, a value that
/// the module could not receive as one word: an empty value, or one that contains a blank, tab, line end or
/// form feed. The module splits the string there and knows no quoting.
Status BuildInitString(const std::vector<GivenKeyword>& given, std::string& initString);

}  // namespace mqam
