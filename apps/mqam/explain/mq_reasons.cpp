// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/mq_reasons.h"

#include <algorithm>

#include "mqam/explain/mq_reason_tables.h"
#include "mqam/explain/text_match.h"

namespace mqam {

namespace {

constexpr std::string_view kNamePrefix = "MQRC_";

struct VerbName {
    char letter;
    const char* name;
};

constexpr VerbName kVerbNames[] = {
    {'C', "MQCONNX"}, {'O', "MQOPEN"},  {'G', "MQGET"},  {'M', "MQCMIT"},
    {'B', "MQBACK"},  {'L', "MQCLOSE"}, {'D', "MQDISC"},
};

std::vector<MqReason> JoinTables() {
    std::vector<MqReason> all;
    for (const std::span<const MqReason> table :
         {ConnectionReasons(), TlsReasons(), QueueReasons(), GetReasons(), UnitReasons(), ZosReasons()}) {
        all.insert(all.end(), table.begin(), table.end());
    }
    std::ranges::sort(all, {}, &MqReason::number);
    return all;
}

}  // namespace

const std::vector<MqReason>& AllMqReasons() {
    static const std::vector<MqReason> reasons = JoinTables();
    return reasons;
}

const MqReason* FindMqReason(int number) {
    if (number == 0) return nullptr;
    const auto row = std::ranges::find(AllMqReasons(), number, &MqReason::number);
    return row == AllMqReasons().end() ? nullptr : &*row;
}

const MqReason* FindMqReason(std::string_view name) {
    const std::string wanted = ToUpper(name);
    const auto row = std::ranges::find_if(AllMqReasons(), [&wanted](const MqReason& reason) {
        const std::string_view full = reason.name;
        return wanted == full || wanted == full.substr(kNamePrefix.size());
    });
    return row == AllMqReasons().end() ? nullptr : &*row;
}

std::string NameVerbs(const MqReason& reason) {
    std::string names;
    for (const VerbName& verb : kVerbNames) {
        if (std::string_view(reason.verbs).find(verb.letter) == std::string_view::npos) continue;
        if (!names.empty()) names += ", ";
        names += verb.name;
    }
    return names;
}

}  // namespace mqam
