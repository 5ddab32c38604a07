// SPDX-License-Identifier: Apache-2.0

// Compares the reasons that `mqam explain` knows with IBM's own header.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "mqam/explain/mq_reasons.h"

using namespace mqam;

namespace {

// Some numbers have two names.
using NamesByNumber = std::map<int, std::set<std::string>>;

NamesByNumber ReadHeader() {
    NamesByNumber names;
    std::ifstream header(IBM_REASON_HEADER);
    const std::regex define(R"(^\s*#define\s+(MQRC_\w+)\s+\(?(\d+)L?\)?\s*(/\*.*)?\r?$)");
    for (std::string line; std::getline(header, line);) {
        std::smatch match;
        if (std::regex_match(line, match, define)) names[std::stoi(match[2])].insert(match[1]);
    }
    return names;
}

TEST(MqReasonNames, TheHeaderIsReadInFull) {
    const NamesByNumber names = ReadHeader();
    EXPECT_GT(names.size(), 400U);
    EXPECT_TRUE(names.at(2085).contains("MQRC_UNKNOWN_OBJECT_NAME"));
}

TEST(MqReasonNames, EveryNumberHasTheNameThatIbmGivesIt) {
    const NamesByNumber names = ReadHeader();
    for (const MqReason& reason : AllMqReasons()) {
        const auto row = names.find(reason.number);
        ASSERT_NE(row, names.end()) << reason.number;
        EXPECT_TRUE(row->second.contains(reason.name)) << reason.number << " " << reason.name;
    }
}

}  // namespace
