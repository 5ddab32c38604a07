// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/mq_reasons.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <utility>

#include "mqam/explain/mq_reason_tables.h"
#include "tests/failures/mqi_failure_cases.h"

using namespace mqam;

namespace {

bool EndsLikeASentence(const std::string& text) {
    return text.size() > 5 && text.back() == '.' &&
           std::isupper(static_cast<unsigned char>(text.front())) != 0;
}

TEST(MqReasons, EveryNumberAndNameIsThereOnceInOrder) {
    std::set<std::string> names;
    int last = -1;
    for (const MqReason& reason : AllMqReasons()) {
        EXPECT_GT(reason.number, last);
        last = reason.number;
        EXPECT_TRUE(std::string(reason.name).starts_with("MQRC_")) << reason.number;
        EXPECT_TRUE(names.insert(reason.name).second) << reason.name;
    }
    EXPECT_GE(AllMqReasons().size(), 271U);
}

TEST(MqReasons, EveryRowHasAClauseSentencesAndCallsThatReturnIt) {
    for (const MqReason& reason : AllMqReasons()) {
        const std::string meaning = reason.meaning;
        EXPECT_GT(meaning.size(), 5U) << reason.number;
        EXPECT_NE(meaning.back(), '.') << reason.number;
        EXPECT_TRUE(EndsLikeASentence(reason.causes)) << reason.number;
        EXPECT_TRUE(EndsLikeASentence(reason.action)) << reason.number;
        EXPECT_NE(reason.recovery, Recovery::kByReason) << reason.number;
        const std::string verbs = reason.verbs;
        EXPECT_EQ(verbs.find_first_not_of(kAnyVerb), std::string::npos) << reason.number;
        EXPECT_EQ(verbs.empty(), reason.number == 0) << reason.number;
        EXPECT_EQ(std::ranges::count(std::string(reason.action), '`') % 2, 0) << reason.number;
        EXPECT_EQ(std::ranges::count(std::string(reason.causes), '`') % 2, 0) << reason.number;
    }
}

constexpr std::pair<Verb, const char*> kVerbs[] = {
    {Verb::Connx, "MQCONNX"}, {Verb::Open, "MQOPEN"},   {Verb::Get, "MQGET"},   {Verb::Cmit, "MQCMIT"},
    {Verb::Back, "MQBACK"},   {Verb::Close, "MQCLOSE"}, {Verb::Disc, "MQDISC"},
};

// Those cases follow IBM's lists of reasons for each call.
TEST(MqReasons, EveryReasonThatTheFailureTestsPlayIsExplainedForItsCall) {
    std::size_t compared = 0;
    for (const auto& [verb, name] : kVerbs) {
        for (const MqiFailureCase& one : MqiFailureCases(verb)) {
            const MqReason* reason = FindMqReason(static_cast<int>(one.fault.reason));
            ASSERT_NE(reason, nullptr) << one.name;
            EXPECT_NE(NameVerbs(*reason).find(name), std::string::npos) << name << " " << one.name;
            ++compared;
        }
    }
    EXPECT_GT(compared, 500U);
}

TEST(MqReasons, ANameIsFoundInAnyCaseAndWithoutItsPrefix) {
    for (const char* name : {"MQRC_NOT_AUTHORIZED", "mqrc_not_authorized", "Not_Authorized"}) {
        const MqReason* reason = FindMqReason(std::string_view(name));
        ASSERT_NE(reason, nullptr) << name;
        EXPECT_EQ(reason->number, 2035);
    }
    EXPECT_EQ(FindMqReason(std::string_view("AUTHORIZED")), nullptr);
}

TEST(MqReasons, NoReasonIsNotAReason) {
    EXPECT_EQ(FindMqReason(0), nullptr);
    ASSERT_NE(FindMqReason(std::string_view("NONE")), nullptr);
    EXPECT_EQ(NameVerbs(*FindMqReason(std::string_view("NONE"))), "");
}

TEST(MqReasons, TheCallsAreNamedInTheOrderOfALoad) {
    EXPECT_EQ(NameVerbs(*FindMqReason(2003)), "MQGET, MQCMIT, MQDISC");
    EXPECT_EQ(NameVerbs(*FindMqReason(2009)), "MQCONNX, MQOPEN, MQGET, MQCMIT, MQBACK, MQCLOSE, MQDISC");
}

TEST(MqReasons, WhatSomeoneMustChangeIsPermanentAndAnEndOfAQueueManagerIsNot) {
    for (const int number : {2001, 2035, 2058, 2063, 2085, 2101, 2393, 2495, 2540})
        EXPECT_EQ(FindMqReason(number)->recovery, Recovery::kPermanent) << number;
    for (const int number : {2003, 2009, 2042, 2059, 2161, 2162, 2202, 2203, 2279, 2537, 2538})
        EXPECT_EQ(FindMqReason(number)->recovery, Recovery::kTransient) << number;
    EXPECT_EQ(FindMqReason(2033)->recovery, Recovery::kWarning);
}

}  // namespace
