// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/error_text.h"

#include <gtest/gtest.h>

using namespace mqam;

namespace {

TEST(ErrorTextParser, MessageAloneIsTakenWithoutItsFinalPoint) {
    ErrorText error;
    ASSERT_TRUE(
        ParseErrorText("Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  --ERROR: Queue Manager open.", error));
    EXPECT_EQ(error.module, "Norvane Websphere MQ AMOD");
    EXPECT_EQ(error.function, "PIDMMain");
    EXPECT_EQ(error.severity, "!ERROR!");
    EXPECT_EQ(error.message, "Queue Manager open");
    EXPECT_EQ(error.messageNumber, 0);
    EXPECT_EQ(error.failingCall, "");
    EXPECT_EQ(error.fileKind, "");
    EXPECT_EQ(error.reason, "");
    EXPECT_EQ(error.mqReason, 0);
}

TEST(ErrorTextParser, NumberedMessageGivesNumberAndMqReason) {
    ErrorText error;
    ASSERT_TRUE(
        ParseErrorText("Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  --ERROR: MQA0158: <MQOpen attempts "
                       "exhausted. QName 'Q9', reason code 2085 (Unknown queue name)>.",
                       error));
    EXPECT_EQ(error.messageNumber, 158);
    EXPECT_EQ(error.message, "MQOpen attempts exhausted. QName 'Q9', reason code 2085 (Unknown queue name)");
    EXPECT_EQ(error.mqReason, 2085);
}

TEST(ErrorTextParser, AllFourPiecesAreTaken) {
    ErrorText error;
    ASSERT_TRUE(
        ParseErrorText("Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  --ERROR: checkpoint--Failing function: "
                       "fwrite--Error occured while processing Checkpoint--Reason: No space left on device.",
                       error));
    EXPECT_EQ(error.message, "checkpoint");
    EXPECT_EQ(error.failingCall, "fwrite");
    EXPECT_EQ(error.fileKind, "Checkpoint");
    EXPECT_EQ(error.reason, "No space left on device");
}

TEST(ErrorTextParser, FileAndReasonWithoutFailingCallAreTaken) {
    ErrorText error;
    ASSERT_TRUE(
        ParseErrorText("Norvane Websphere MQ AMOD/ReadFromChkPt(!ERROR!).  --ERROR: checkpoint record "
                       "length--Error occured while processing Checkpoint--Reason: Undefined.",
                       error));
    EXPECT_EQ(error.message, "checkpoint record length");
    EXPECT_EQ(error.failingCall, "");
    EXPECT_EQ(error.reason, "Undefined");
}

TEST(ErrorTextParser, FailingCallWithoutFileIsTaken) {
    ErrorText error;
    ASSERT_TRUE(
        ParseErrorText("Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  --ERROR: MQA0165: <Reason code = 2009>"
                       "--Failing function: MQGET.",
                       error));
    EXPECT_EQ(error.messageNumber, 165);
    EXPECT_EQ(error.failingCall, "MQGET");
    EXPECT_EQ(error.mqReason, 2009);
}

TEST(ErrorTextParser, ConnectFailureGivesItsReasonCode) {
    ErrorText error;
    ASSERT_TRUE(ParseErrorText(
        "Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  --ERROR: Error received from MQCONNX : 2058.", error));
    EXPECT_EQ(error.message, "Error received from MQCONNX : 2058");
    EXPECT_EQ(error.mqReason, 2058);
}

TEST(ErrorTextParser, WarningAndInfoSeveritiesAreTaken) {
    ErrorText error;
    ASSERT_TRUE(ParseErrorText(
        "Norvane Websphere MQ AMOD/WriteLogRec(info).  --ERROR: continuing without Log.", error));
    EXPECT_EQ(error.severity, "info");
    ASSERT_TRUE(
        ParseErrorText("Norvane Websphere MQ AMOD/WriteLogRec(!warning!).  --ERROR:  --Failing function: "
                       "fwrite--Error occured while processing Log--Reason: Undefined.",
                       error));
    EXPECT_EQ(error.severity, "!warning!");
    EXPECT_EQ(error.message, " ");
    EXPECT_EQ(error.fileKind, "Log");
}

TEST(ErrorTextParser, LabelsQuotedInsideAMessageStayInTheMessage) {
    ErrorText error;
    ASSERT_TRUE(ParseErrorText(
        "Norvane Websphere MQ AMOD/CheckParm(!ERROR!).  --ERROR: MQA0100: <Error: unidentified "
        "keyword: '--REASON--Reason: (x).'>.",
        error));
    EXPECT_EQ(error.messageNumber, 100);
    EXPECT_EQ(error.message, "Error: unidentified keyword: '--REASON--Reason: (x).'");
    EXPECT_EQ(error.reason, "");
}

TEST(ErrorTextParser, MessageCutInTheMiddleKeepsItsText) {
    ErrorText error;
    ASSERT_TRUE(ParseErrorText(
        "Norvane Websphere MQ AMOD/CheckParm(!ERROR!).  --ERROR: MQA0110: <Log (LOG) pathn.", error));
    EXPECT_EQ(error.messageNumber, 0);
    EXPECT_EQ(error.message, "MQA0110: <Log (LOG) pathn");
}

TEST(ErrorTextParser, TextsOfAnotherFormAreRefused) {
    ErrorText error;
    for (const char* text : {"", ".", "anything", "x/y(z).  --ERROR: no final point", "--ERROR: no head.",
                             "no slash(!ERROR!).  --ERROR: m.", "m/f).  --ERROR: m."}) {
        EXPECT_FALSE(ParseErrorText(text, error)) << text;
        EXPECT_EQ(error.message, "") << text;
    }
}

}  // namespace
