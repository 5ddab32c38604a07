// SPDX-License-Identifier: Apache-2.0

// Tests messages that MQ has delivered before: they are reported and compared with the previous record, and
// an identical one ends the input or is returned.
#include <gmock/gmock.h>

#include "tests/support/module_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string Potential(int count) {
    return WarningLine("PIDMMain",
                       "Potential duplicate message found (BackoutCount: " + std::to_string(count) + ").");
}

const std::string kIdentical = WarningLine("PIDMMain", "Message identical to previous.");
const std::string kGenerating = WarningLine("PIDMMain", "Generating EOF per request (keyword TDM: yes)");
const std::string kReturning = InfoLine("PIDMMain", "Returning message and continuing (keyword TDM: no)");

class DuplicateTest : public ModuleFixture {
  protected:
    void Start(const std::string& keywords, const std::string& first) {
        InitAndOpenTraced(1, keywords);
        mq.PutMessage(first);
        ASSERT_EQ(Read().record, first);
        trace.Skip();
    }

    void ExpectReturned(const std::string& message) {
        const ReadOutcome outcome = Read();
        EXPECT_TRUE(Succeeds(outcome));
        EXPECT_EQ(outcome.record, message);
    }

    void ExpectEnd() {
        const ReadOutcome outcome = Read();
        EXPECT_EQ(outcome.returnCode, pmrcEOF);
        EXPECT_EQ(outcome.recordLength, 0U);
        EXPECT_FALSE(outcome.hasErrorText);
    }
};

TEST_F(DuplicateTest, IdenticalRedeliveryEndsTheInputByDefault) {
    Start("-CKFILE ck.dat", "record");
    mq.PutMessage("record", 1);
    ExpectEnd();
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(1), kIdentical, kGenerating));
    EXPECT_EQ(mq.Count(Verb::Cmit), 0U);
}

TEST_F(DuplicateTest, IdenticalRedeliveryIsPassedOnWhenAskedFor) {
    Start("-CKFILE ck.dat -TDM NO", "record");
    mq.PutMessage("record", 2);
    ExpectReturned("record");
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(2), kIdentical, kReturning));
}

TEST_F(DuplicateTest, DifferentRedeliveryIsReportedAndReturned) {
    Start("-CKFILE ck.dat", "record");
    mq.PutMessage("recorD", 1);
    ExpectReturned("recorD");
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(1)));
}

TEST_F(DuplicateTest, IdenticalFirstDeliveryIsNeverCompared) {
    Start("-CKFILE ck.dat", "record");
    mq.PutMessage("record");
    ExpectReturned("record");
    EXPECT_THAT(trace.NewLines(), IsEmpty());
}

TEST_F(DuplicateTest, RedeliveredStartOfThePreviousRecordCountsAsIdentical) {
    Start("-CKFILE ck.dat", "record");
    mq.PutMessage("rec", 1);
    ExpectEnd();
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(1), kIdentical, kGenerating));
}

TEST_F(DuplicateTest, ComparisonReachesIntoTheStaleBytesAfterAShorterRecord) {
    Start("-CKFILE ck.dat", "record");
    mq.PutMessage("REC");
    ExpectReturned("REC");
    trace.Skip();
    mq.PutMessage("RECord", 1);
    ExpectEnd();
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(1), kIdentical, kGenerating));
}

TEST_F(DuplicateTest, LongerRedeliveryThanAllEarlierRecordsIsDifferent) {
    Start("-CKFILE ck.dat", "record");
    mq.PutMessage("record and more", 1);
    ExpectReturned("record and more");
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(1)));
}

TEST_F(DuplicateTest, ZerosRedeliveredFirstOfAllEqualTheClearedBuffer) {
    InitAndOpenTraced(1, "-CKFILE ck.dat");
    mq.PutMessage(std::string(3, '\0'), 1);
    ExpectEnd();
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(1), kIdentical, kGenerating));
}

TEST_F(DuplicateTest, WithoutACheckpointFileNothingIsKeptToCompareWith) {
    Start("", "record");
    mq.PutMessage("record", 1);
    ExpectReturned("record");
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(1)));
}

TEST_F(DuplicateTest, RecordOfAnEarlierOpenIsNotComparedWith) {
    Start("-CKFILE ck.dat", "record");
    ASSERT_EQ(Close().returnCode, pmrcOK);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    trace.Skip();
    mq.PutMessage("record", 1);
    ExpectReturned("record");
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(1)));
}

TEST_F(DuplicateTest, RecordOfAnEarlierLoadWithACheckpointFileIsNotCompared) {
    Start("-CKFILE ck.dat", "record");
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    InitAndOpenTraced(1);
    mq.PutMessage("record", 1);
    ExpectReturned("record");
    EXPECT_THAT(trace.NewLines(), ElementsAre(Potential(1)));
}

TEST_F(DuplicateTest, EndedDuplicateIsNotCounted) {
    Start("-CKFILE ck.dat", "record");
    mq.PutMessage("record", 1);
    ExpectEnd();
    trace.Skip();
    ASSERT_EQ(Close().returnCode, pmrcOK);
    EXPECT_THAT(trace.NewLines(), testing::Contains(InfoLine("PIDMMain", "Messages received via MQGET: 1")));
}

TEST_F(DuplicateTest, RecordOfTheFullBlockSizeIsCompared) {
    recordBufferBytes = 16;
    Start("-CKFILE ck.dat -BKSZ 16", "0123456789abcdef");
    mq.PutMessage("0123456789abcdef", 1);
    ExpectEnd();
}

}  // namespace
