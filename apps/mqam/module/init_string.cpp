#include "mqam/module/init_string.h"

namespace mqam {

namespace {

constexpr const char* kDelimiters = " \n\t\r\f";

}  // namespace

bool BuildInitString(const std::vector<GivenKeyword>& given, std::string& initString,
                     std::string& complaint) {
    initString.clear();
    complaint.clear();
    std::string built;
    for (const GivenKeyword& item : given) {
        built += built.empty() ? "-" : " -";
        built += item.keyword;
        for (const std::string& value : item.values) {
            if (value.empty()) {
                complaint = item.option + ": the value is empty";
                return false;
            }
            if (value.find_first_of(kDelimiters) != std::string::npos) {
                complaint =
                    item.option + ": '" + value +
                    "' contains a blank; the module cannot receive such a value (its keywords know no "
                    "quoting), so choose a name or path without blanks";
                return false;
            }
            built += ' ';
            built += value;
        }
    }
    initString = built;
    return true;
}

}  // namespace mqam
