// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/init_string.h"

namespace mqam {

namespace {

constexpr const char* kDelimiters = " \n\t\r\f";

}  // namespace

Status BuildInitString(const std::vector<GivenKeyword>& given, std::string& initString) {
    initString.clear();
    std::string built;
    for (const GivenKeyword& item : given) {
        built += built.empty() ? "-" : " -";
        built += item.keyword;
        for (const std::string& value : item.values) {
            if (value.empty()) {
                return Status::Refused(item.option + ": the value is empty");
            }
            if (value.find_first_of(kDelimiters) != std::string::npos) {
                return Status::Refused(
                    item.option + ": '" + value +
                    "' contains a blank; values cannot contain blanks, because the module's "
                    "syntax has no quoting: choose a name or path without blanks");
            }
            built += ' ';
            built += value;
        }
    }
    initString = built;
    return {};
}

}  // namespace mqam
