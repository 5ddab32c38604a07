// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/advice.h"

#include <gtest/gtest.h>

#include "mqam/explain/module_messages.h"

using namespace mqam;

namespace {

ErrorText Parse(const char* text) {
    ErrorText error;
    EXPECT_TRUE(ParseErrorText(text, error)) << text;
    return error;
}

TEST(Advice, EveryMessageOfTheErrorTextHasAdvice) {
    for (const ModuleMessage& message : NumberedMessages()) {
        if (message.shown != Shown::kErrorText) continue;
        ErrorText error;
        error.messageNumber = message.number;
        ASSERT_FALSE(FindAdvice(error).empty()) << message.number;
        EXPECT_EQ(FindAdvice(error).front(), message.action) << message.number;
    }
}

TEST(Advice, OnlyWhatReadsTheOptionsCanFindThemWrong) {
    const std::string refused =
        "M/CheckParm(!ERROR!).  --ERROR: MQA0107: <Read wait interval (RWAIT) value: 0>.";
    EXPECT_TRUE(IsWrongOption({"Init", pmrcFailure, refused}));
    EXPECT_TRUE(IsWrongOption({"PutAttribute COLOUR", pmrcBadAttrName, ""}));
    EXPECT_FALSE(IsWrongOption({"Open", pmrcFailure, refused}));
    EXPECT_FALSE(IsWrongOption({"Init", pmrcOK, ""}));
    // A text of unknown form may mean anything.
    EXPECT_FALSE(IsWrongOption({"Init", pmrcFailure, "out of the ordinary"}));
}

TEST(Advice, ConnectFailureGetsItsOwnAndItsReasonsAdvice) {
    const auto advice =
        FindAdvice(Parse("M/PIDMMain(!ERROR!).  --ERROR: Error received from MQCONNX : 2058."));
    ASSERT_EQ(advice.size(), 2U);
    EXPECT_NE(advice[1].find("--qmgr"), std::string::npos);
}

TEST(Advice, AMessageOfOneReasonOnlyGetsOneLine) {
    const auto unknown =
        FindAdvice(Parse("M/PIDMMain(!ERROR!).  --ERROR: MQA0158: <MQOpen attempts exhausted. QName "
                         "'Q', reason code 2085 (Unknown queue name)>."));
    ASSERT_EQ(unknown.size(), 1U);
    EXPECT_NE(unknown[0].find("Check `--queue`"), std::string::npos);
    const auto inUse =
        FindAdvice(Parse("M/PIDMMain(!ERROR!).  --ERROR: MQA0157: <MQOpen attempts exhausted. QName "
                         "'Q', reason code 2042 (Queue already open)>."));
    ASSERT_EQ(inUse.size(), 1U);
    EXPECT_NE(inUse[0].find("TYPE(HANDLE)"), std::string::npos);
}

TEST(Advice, MessagesWithoutANumberAreToldApartByTheirFailingCall) {
    const auto log = Parse(
        "M/WriteLogRec(!ERROR!).  --ERROR:  --Failing function: fwrite--Error occured while processing "
        "Log--Reason: No space left on device.");
    ASSERT_EQ(FindAdvice(log).size(), 1U);
    EXPECT_NE(FindAdvice(log)[0].find("the disk of the log"), std::string::npos);
    EXPECT_EQ(FindFact(log),
              "a record could not be written to the message log, usually because its disk is full");
    const auto seek = Parse(
        "M/PIDMMain(!ERROR!).  --ERROR: checkpoint--Failing function: fgetpos--Error occured while "
        "processing Checkpoint--Reason: Undefined.");
    ASSERT_EQ(FindAdvice(seek).size(), 1U);
    EXPECT_NE(FindAdvice(seek)[0].find("Check the disk or share"), std::string::npos);
    EXPECT_NE(FindFact(seek).find("could not be determined"), std::string::npos);
}

TEST(Advice, AFileOfWhichNoByteCameMayBeEmptyOrUnreadable) {
    const auto error = Parse("M/RepositionFile(!ERROR!).  --ERROR: empty checkpoint file.");
    EXPECT_NE(FindFact(error).find("it is empty or not open, or its disk cannot read it"), std::string::npos);
    ASSERT_EQ(FindAdvice(error).size(), 1U);
    EXPECT_NE(FindAdvice(error)[0].find("MQAMtmp.*"), std::string::npos);
}

TEST(Advice, APositionThatTheFileCannotBeMovedToIsKnownByItsText) {
    const auto error = Parse(
        "M/PIDMMain(!ERROR!).  --ERROR: reposition--Failing function: fsetpos--Error occured while "
        "processing Checkpoint--Reason: Undefined.");
    EXPECT_NE(FindFact(error).find("does not fit the checkpoint file"), std::string::npos);
    ASSERT_EQ(FindAdvice(error).size(), 1U);
    EXPECT_NE(FindAdvice(error)[0].find("Keep both files"), std::string::npos);
}

TEST(Advice, UnknownMessageGetsNone) {
    EXPECT_TRUE(FindAdvice(Parse("M/PIDMMain(!ERROR!).  --ERROR: something new.")).empty());
}

TEST(Advice, AnUnknownMessageIsItsOwnFact) {
    EXPECT_EQ(FindFact(Parse("M/PIDMMain(!ERROR!).  --ERROR: something new.")), "something new");
}

TEST(Advice, TheFactIsTheMeaningOfTheReasonIfThereIsOne) {
    EXPECT_EQ(FindFact(Parse("M/PIDMMain(!ERROR!).  --ERROR: Error received from MQCONNX : 2059.")),
              "the queue manager cannot be reached");
    EXPECT_EQ(FindFact(Parse("M/CheckParm(!ERROR!).  --ERROR: MQA0107: <Read wait interval (RWAIT) value: 0 "
                             "out of range (-1 or 1<seconds<600)>.")),
              "the read wait interval is neither -1 nor a number from 1 to 600");
}

Recovery RecoveryOfText(const char* text) {
    return RecoveryOf({"Read", pmrcFailure, text});
}

TEST(Recovery, TheMessageDecidesBeforeTheReason) {
    EXPECT_EQ(RecoveryOfText("M/CheckParm(!ERROR!).  --ERROR: MQA0100: <Error: unidentified keyword: 'X'>."),
              Recovery::kPermanent);
    EXPECT_EQ(RecoveryOfText("M/PIDMMain(!ERROR!).  --ERROR: MQA0157: <MQOpen attempts exhausted. QName 'Q', "
                             "reason code 2042 (Queue already open)>."),
              Recovery::kTransient);
    EXPECT_EQ(RecoveryOfText("M/PIDMMain(!ERROR!).  --ERROR: MQA0161: <Message length > blocksize (100)>"
                             "--Failing function: MQGET."),
              Recovery::kPermanent);
}

TEST(Recovery, TheReasonDecidesWhereTheMessageDoesNot) {
    EXPECT_EQ(RecoveryOfText("M/PIDMMain(!ERROR!).  --ERROR: Error received from MQCONNX : 2059."),
              Recovery::kTransient);
    EXPECT_EQ(RecoveryOfText("M/PIDMMain(!ERROR!).  --ERROR: Error received from MQCONNX : 2035."),
              Recovery::kPermanent);
    EXPECT_EQ(RecoveryOfText("M/PIDMMain(!ERROR!).  --ERROR: MQA0165: <Reason code = 2110>."),
              Recovery::kPermanent);
    EXPECT_EQ(RecoveryOfText("M/PIDMMain(!ERROR!).  --ERROR: MQA0165: <Reason code = 2033>."),
              Recovery::kTransient);
}

TEST(Recovery, TheReturnCodeDecidesWhereItIsEnough) {
    EXPECT_EQ(RecoveryOf({"Init", pmrcBadVersion, ""}), Recovery::kPermanent);
    EXPECT_EQ(RecoveryOf({"PutAttribute X", pmrcBadAttrName, ""}), Recovery::kPermanent);
    EXPECT_EQ(RecoveryOf({"PutAttribute X", pmrcBadAttrValue, ""}), Recovery::kPermanent);
    EXPECT_EQ(RecoveryOf({"Write", pmrcNotSupported, ""}), Recovery::kPermanent);
}

TEST(Recovery, WhatNoTableDecidesIsTransient) {
    EXPECT_EQ(RecoveryOf({"Open", pmrcFailure, ""}), Recovery::kTransient);
    EXPECT_EQ(RecoveryOfText("out of the ordinary"), Recovery::kTransient);
    EXPECT_EQ(RecoveryOfText("M/PIDMMain(!ERROR!).  --ERROR: something new."), Recovery::kTransient);
    EXPECT_EQ(RecoveryOfText("M/PIDMMain(!ERROR!).  --ERROR: checkpoint--Failing function: fflush--Error "
                             "occured while processing Checkpoint--Reason: No space left on device."),
              Recovery::kTransient);
}

}  // namespace
