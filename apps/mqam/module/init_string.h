// The module's initialization string: keywords with a leading dash and their values, separated by blanks.
#pragma once

#include <string>
#include <vector>

namespace mqam {

/// One keyword as the user gave it.
struct GivenKeyword {
    std::string keyword;              ///< the module's name for it, such as "QMGR"
    std::string option;               ///< what the user typed, such as "--qmgr": complaints name this
    std::vector<std::string> values;  ///< in the order in which the module takes them; may be empty
};

/// Builds the initialization string.
///   given       in   the keywords, in order
///   initString  out  the string; empty after a refusal
///   complaint   out  names the option and says what is wrong with its value; empty on success
/// Returns false for a value that the module could not receive as one word: an empty one, or one that holds a
/// blank, tab, line end or form feed (the module splits the string there and knows no quoting).
[[nodiscard]] bool BuildInitString(const std::vector<GivenKeyword>& given, std::string& initString,
                                   std::string& complaint);

}  // namespace mqam
