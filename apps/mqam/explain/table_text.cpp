// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/table_text.h"

namespace mqam {

std::string DescribeRecovery(Recovery recovery) {
    switch (recovery) {
        case Recovery::kPermanent:
            return "The same failure comes again until someone changes something. `mqam load` ends with exit "
                   "code 2.";
        case Recovery::kTransient:
            return "Another attempt may succeed. `mqam load` with restart information ends with exit code 9, "
                   "and `--retry-for SECONDS` tries again by itself.";
        case Recovery::kByReason:
            return "The reason that comes with it says whether another attempt may succeed.";
        case Recovery::kWarning: return "Nothing failed.";
    }
    return "";
}

std::string DescribeOrigin(const ModuleMessage& message) {
    const std::string requests =
        *message.request == '\0' ? std::string() : std::string(" of ") + message.request;
    switch (message.shown) {
        case Shown::kErrorText: return "message of the module, in the error text" + requests;
        case Shown::kTrace: return "message of the module, only in the trace" + requests;
        case Shown::kNowhere: return "message of the module; another text is reported in its place";
        case Shown::kReserved: return "message of the module that is never made";
    }
    return "";
}

std::string DescribeRuleKind(const LoadRule& rule) {
    switch (*rule.id) {
        case 'H': return "rule for a host whose loads can be restarted";
        case 'T': return "rule for the target of a load that can be restarted";
        case 'G': return "guarantee for a load that can be restarted";
        default: return "limit of the guarantees for a load that can be restarted";
    }
}

}  // namespace mqam
