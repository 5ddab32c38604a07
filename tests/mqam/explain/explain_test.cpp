// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/explain.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "mqam/explain/code_tables.h"
#include "mqam/explain/module_messages.h"
#include "mqam/explain/mq_reasons.h"
#include "mqam/explain/rules.h"

using namespace mqam;

namespace {

std::vector<std::string> TitlesOf(std::string_view code) {
    std::vector<std::string> titles;
    for (const Explanation& reading : Explain(code))
        titles.push_back(reading.title);
    return titles;
}

using Titles = std::vector<std::string>;

bool HasParagraph(const Explanation& explanation, const std::string& label) {
    return std::ranges::any_of(explanation.paragraphs, [&label](const Explanation::Paragraph& paragraph) {
        return paragraph.label == label && !paragraph.text.empty();
    });
}

TEST(Explain, AMessageHasItsNumberWithAndWithoutItsPrefix) {
    for (const char* code : {"MQA0151", "mqa151", "151", "0151", "message 151", " 151 "}) {
        EXPECT_EQ(TitlesOf(code), Titles{"MQA0151: Temp Checkpoint file (%s) delete failed. Reason '%s'"})
            << code;
    }
}

TEST(Explain, AnMqReasonHasItsNumberAndItsName) {
    for (const char* code :
         {"2085", "MQRC_UNKNOWN_OBJECT_NAME", "mqrc_unknown_object_name", "Unknown_Object_Name",
          "reason 2085", "reason code 2085", "RC2085", "MQRC 2085"}) {
        EXPECT_EQ(TitlesOf(code), Titles{"2085 MQRC_UNKNOWN_OBJECT_NAME"}) << code;
    }
}

TEST(Explain, ANumberWithTwoMeaningsHasBoth) {
    EXPECT_EQ(TitlesOf("9"), (Titles{"return code 9 pmrcEOF", "exit code 9"}));
    EXPECT_EQ(TitlesOf("0"), (Titles{"return code 0 pmrcOK", "exit code 0"}));
}

TEST(Explain, AWordBeforeTheNumberSelectsOneMeaning) {
    EXPECT_EQ(TitlesOf("exit 9"), Titles{"exit code 9"});
    EXPECT_EQ(TitlesOf("exit code 9"), Titles{"exit code 9"});
    EXPECT_EQ(TitlesOf("return 9"), Titles{"return code 9 pmrcEOF"});
    EXPECT_EQ(TitlesOf("rc 9"), Titles{"return code 9 pmrcEOF"});
    EXPECT_EQ(TitlesOf("exit 34"), Titles{});
}

TEST(Explain, EveryReturnCodeIsKnownByNumberAndName) {
    for (const int code : {0, 9, 18, 24, 33, 34, 40, 55}) {
        const auto readings = Explain("return " + std::to_string(code));
        ASSERT_EQ(readings.size(), 1U) << code;
        EXPECT_TRUE(HasParagraph(readings[0], "what to do")) << code;
    }
    EXPECT_EQ(TitlesOf("pmrcTimeout"), Titles{"return code 55 pmrcTimeout"});
}

TEST(Explain, EveryExitCodeIsKnown) {
    for (int code = kExitDone; code <= kExitDamaged; ++code) {
        const auto readings = Explain("exit " + std::to_string(code));
        ASSERT_EQ(readings.size(), 1U) << code;
        EXPECT_TRUE(HasParagraph(readings[0], "causes")) << code;
        EXPECT_TRUE(HasParagraph(readings[0], "what to do")) << code;
    }
}

TEST(Explain, EveryRuleGuaranteeAndLimitIsKnown) {
    for (const char* code : {"H6", "h6", "T2", "G1", "L5"}) {
        const auto readings = Explain(code);
        ASSERT_EQ(readings.size(), 1U) << code;
        EXPECT_TRUE(HasParagraph(readings[0], "what to do")) << code;
    }
    EXPECT_EQ(TitlesOf("l5"), Titles{"L5, power failure"});
}

TEST(Explain, AMessageWithoutANumberIsKnownByItsText) {
    EXPECT_EQ(TitlesOf("Queue Manager open"), Titles{"Queue Manager open"});
    EXPECT_EQ(TitlesOf("queue manager"), Titles{"Queue Manager open"});
    EXPECT_EQ(TitlesOf("queue"), Titles{});
}

TEST(Explain, EveryCodeOfEveryTableIsExplained) {
    for (const ModuleMessage& message : NumberedMessages())
        EXPECT_FALSE(Explain(MessageCodeOf(message)).empty()) << message.number;
    for (const MqReason& reason : AllMqReasons())
        EXPECT_FALSE(Explain(reason.name).empty()) << reason.name;
    for (const LoadRule& rule : AllLoadRules())
        EXPECT_FALSE(Explain(rule.id).empty()) << rule.id;
}

TEST(Explain, WhatIsNoCodeHasNoReading) {
    for (const char* code :
         {"", " ", "2999", "MQA0199", "H26", "99999999999999999999", "exit", "exit x", "-1"})
        EXPECT_TRUE(Explain(code).empty()) << code;
}

TEST(Explain, WhetherAnotherAttemptHelpsIsPartOfAReason) {
    const std::string permanent = FormatExplanation(Explain("2085").at(0));
    EXPECT_NE(permanent.find("exit code 2."), std::string::npos) << permanent;
    const std::string transient = FormatExplanation(Explain("2009").at(0));
    EXPECT_NE(transient.find("exit code 9,"), std::string::npos) << transient;
}

TEST(NearMatches, AMisspelledNameFindsTheRightOne) {
    EXPECT_EQ(FindNearMatches("MQRC_NOT_AUTHORISED").at(0), "MQRC_NOT_AUTHORIZED");
    EXPECT_EQ(FindNearMatches("unknown_object_nmae").at(0), "MQRC_UNKNOWN_OBJECT_NAME");
    const auto parts = FindNearMatches("handshake");
    EXPECT_TRUE(parts.empty());
}

TEST(NearMatches, PartOfANameIsEnough) {
    const auto matches = FindNearMatches("quiescing");
    EXPECT_NE(std::ranges::find(matches, "MQRC_Q_MGR_QUIESCING"), matches.end());
    EXPECT_NE(std::ranges::find(matches, "MQRC_CONNECTION_QUIESCING"), matches.end());
}

TEST(NearMatches, AWrongNumberFindsNumbersAndARuleFindsRules) {
    const auto numbers = FindNearMatches("2084");
    EXPECT_NE(std::ranges::find(numbers, "2085"), numbers.end());
    const auto rules = FindNearMatches("H26");
    EXPECT_NE(std::ranges::find(rules, "H25"), rules.end());
    EXPECT_LE(numbers.size(), 5U);
}

TEST(FormatExplanation, NoLineIsLongerThanATerminalAndLabelsAreInAColumn) {
    for (const MqReason& reason : AllMqReasons()) {
        const std::string text = FormatExplanation(Explain(reason.name).at(0));
        for (std::size_t from = 0; from < text.size();) {
            const std::size_t end = text.find('\n', from);
            ASSERT_NE(end, std::string::npos);
            const std::string line = text.substr(from, end - from);
            // A command stays on one line even if it is longer than the others.
            const bool isCommand = line.find('`') != std::string::npos;
            EXPECT_TRUE(line.size() <= 80 || isCommand) << line;
            from = end + 1;
        }
    }
    EXPECT_NE(FormatExplanation(Explain("2085").at(0)).find("\n  meaning     The queue does not exist.\n"),
              std::string::npos);
}

TEST(ListCodes, EachListHasALineForEachCode) {
    const auto linesOf = [](CodeList list) { return std::ranges::count(ListCodes(list), '\n'); };
    EXPECT_EQ(linesOf(CodeList::kReasons), static_cast<std::ptrdiff_t>(AllMqReasons().size()));
    EXPECT_EQ(linesOf(CodeList::kRules), static_cast<std::ptrdiff_t>(AllLoadRules().size()));
    EXPECT_EQ(linesOf(CodeList::kReturnCodes), 8);
    EXPECT_EQ(linesOf(CodeList::kExitCodes), 12);
    const auto made = std::ranges::count_if(
        NumberedMessages(), [](const ModuleMessage& message) { return message.shown != Shown::kReserved; });
    EXPECT_EQ(linesOf(CodeList::kMessages), made + static_cast<std::ptrdiff_t>(UnnumberedMessages().size()));
}

}  // namespace
