#include "mqam/explain/advice.h"

#include <gtest/gtest.h>

#include <set>

#include "mqam/explain/failure_report.h"

using namespace mqam;

namespace {

ErrorText Parse(const char* text) {
    ErrorText error;
    EXPECT_TRUE(ParseErrorText(text, error)) << text;
    return error;
}

TEST(Advice, EveryKeyStandsOnce) {
    std::set<int> numbers;
    for (const MessageAdvice& row : AllMessageAdvice())
        EXPECT_TRUE(numbers.insert(row.number).second) << row.number;
    std::set<int> reasons;
    for (const ReasonAdvice& row : AllReasonAdvice())
        EXPECT_TRUE(reasons.insert(row.reason).second) << row.reason;
}

TEST(Advice, EveryRowSaysSomethingToDo) {
    for (const MessageAdvice& row : AllMessageAdvice())
        EXPECT_GT(std::string(row.next).size(), 10U) << row.number;
    for (const ReasonAdvice& row : AllReasonAdvice()) {
        EXPECT_EQ(std::string(row.name).substr(0, 5), "MQRC_") << row.reason;
        EXPECT_GT(std::string(row.meaning).size(), 5U) << row.reason;
        EXPECT_GT(std::string(row.next).size(), 10U) << row.reason;
    }
    for (const TextAdvice& row : AllTextAdvice())
        EXPECT_GT(std::string(row.next).size(), 10U) << row.beginning;
}

TEST(Advice, EveryMessageThatTheModuleCanSendHasARow) {
    const std::set<int> sent = {100, 101, 103, 106, 107, 108, 109, 110, 112, 114, 115, 116, 117, 118,
                                119, 120, 121, 124, 125, 126, 127, 128, 132, 133, 135, 137, 141, 142,
                                143, 144, 145, 148, 150, 151, 157, 158, 160, 161, 164, 165};
    std::set<int> known;
    for (const MessageAdvice& row : AllMessageAdvice())
        known.insert(row.number);
    for (const int number : sent)
        EXPECT_TRUE(known.contains(number)) << number;
}

TEST(Advice, ConnectFailureGetsItsOwnAndItsReasonsAdvice) {
    const auto advice =
        FindAdvice(Parse("M/PIDMMain(!ERROR!).  --ERROR: Error received from MQCONNX : 2058."));
    ASSERT_EQ(advice.size(), 2U);
    EXPECT_NE(advice[1].find("--qmgr"), std::string::npos);
}

TEST(Advice, UnknownQueueIsToldOnce) {
    const auto advice =
        FindAdvice(Parse("M/PIDMMain(!ERROR!).  --ERROR: MQA0158: <MQOpen attempts exhausted. QName "
                         "'Q', reason code 2085 (Unknown queue name)>."));
    ASSERT_EQ(advice.size(), 1U);
    EXPECT_NE(advice[0].find("queue's name"), std::string::npos);
}

TEST(Advice, TextRowsLookAtTheFailingCallToo) {
    const auto log =
        FindAdvice(Parse("M/WriteLogRec(!ERROR!).  --ERROR:  --Failing function: fwrite--Error occured "
                         "while processing Log--Reason: No space left on device."));
    ASSERT_EQ(log.size(), 1U);
    EXPECT_NE(log[0].find("message log"), std::string::npos);
    const auto seek =
        FindAdvice(Parse("M/PIDMMain(!ERROR!).  --ERROR: checkpoint--Failing function: fgetpos--Error "
                         "occured while processing Checkpoint--Reason: Undefined."));
    ASSERT_EQ(seek.size(), 1U);
    EXPECT_NE(seek[0].find("could not be asked for"), std::string::npos);
}

TEST(Advice, AFileOfWhichNoByteCameMayBeEmptyOrUnreadable) {
    const auto advice = FindAdvice(Parse("M/RepositionFile(!ERROR!).  --ERROR: empty checkpoint file."));
    ASSERT_EQ(advice.size(), 1U);
    EXPECT_NE(advice[0].find("it holds no checkpoint, or its disk cannot read it"), std::string::npos);
}

TEST(Advice, APositionThatTheFileCannotBeMovedToIsKnownByItsText) {
    const auto advice =
        FindAdvice(Parse("M/PIDMMain(!ERROR!).  --ERROR: reposition--Failing function: fsetpos--Error "
                         "occured while processing Checkpoint--Reason: Undefined."));
    ASSERT_EQ(advice.size(), 1U);
    EXPECT_NE(advice[0].find("does not fit the position"), std::string::npos);
}

TEST(Advice, UnknownMessageGetsNone) {
    EXPECT_TRUE(FindAdvice(Parse("M/PIDMMain(!ERROR!).  --ERROR: something new.")).empty());
}

TEST(FailureReport, PiecesStandOnLinesOfTheirOwn) {
    const ModuleFailure failure{
        "Read", pmrcFailure, "M/PIDMMain(!ERROR!).  --ERROR: MQA0143: <MQCMIT failed, reason code = 2009>."};
    const std::string lines = DescribeFailure(failure);
    EXPECT_EQ(lines.substr(0, lines.find("  next")),
              "the module failed: Read returned 34\n"
              "  message   MQCMIT failed, reason code = 2009\n"
              "  number    MQA0143\n"
              "  function  PIDMMain\n"
              "  reason    2009 MQRC_CONNECTION_BROKEN: the connection to the queue manager was lost\n");
    EXPECT_NE(lines.find("  next      The last message may come again"), std::string::npos) << lines;
    EXPECT_NE(lines.find("  next      Check that the queue manager runs"), std::string::npos) << lines;
}

TEST(FailureReport, FileFailureNamesCallFileAndReason) {
    const ModuleFailure failure{
        "Read", pmrcFailure,
        "M/PIDMMain(!ERROR!).  --ERROR: checkpoint--Failing function: fflush--Error occured "
        "while processing Checkpoint--Reason: No space left on device."};
    const std::string lines = DescribeFailure(failure);
    EXPECT_NE(lines.find("  call      fflush\n  file      Checkpoint\n  reason    No space left on device\n"),
              std::string::npos)
        << lines;
}

TEST(FailureReport, TextOfAnotherFormIsShownWhole) {
    EXPECT_EQ(DescribeFailure({"Open", pmrcFailure, "out of the ordinary"}),
              "the module failed: Open returned 34\n  message   out of the ordinary\n");
}

TEST(FailureReport, CodesWithoutTextAreNamed) {
    EXPECT_EQ(DescribeFailure({"PutAttribute COLOUR", pmrcBadAttrName, ""}),
              "the module failed: PutAttribute COLOUR returned 33\n"
              "  message   the module does not know an attribute of this name\n");
    EXPECT_NE(DescribeFailure({"Init", pmrcBadVersion, ""}).find("another version"), std::string::npos);
}

TEST(FailureReport, NoticeIsOneLineWithWhatItMeans) {
    EXPECT_EQ(DescribeNotice("M/WriteLogRec(info).  --ERROR: continuing without Log."),
              "note from the module (WriteLogRec): continuing without Log. The load goes on, but later "
              "messages are "
              "not in the log.");
    EXPECT_EQ(DescribeNotice("M/PIDMMain(!warning!).  --ERROR: MQOpen, QName = Q, reason code = 2044.")
                  .substr(0, 27),
              "warning from the module (PI");
}

}  // namespace
