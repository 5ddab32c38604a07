// SPDX-License-Identifier: Apache-2.0

// Tests how waiting ends: by the read wait interval, the host's time-out or its request to end the input.
#include <gmock/gmock.h>

#include <memory>

#include "tests/support/fake_clock.h"
#include "tests/support/module_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string kEof = InfoLine("PIDMMain", "EOF from MQGET");
const std::string kRequested = InfoLine("PIDMMain", "returning EOF as requested via attribute 'GEN_EOF'");
const std::string kExpired = WarningLine("PIDMMain", "Expiration of TimeOut Value");

class ReadEndTest : public ModuleFixture {
  protected:
    void SetUp() override {
        ModuleFixture::SetUp();
        clock = std::make_unique<FakeClock>(module);
        // On an empty queue MQGET takes the whole wait interval.
        mq.hook = [this](const MqCall& call) {
            if (call.verb != Verb::Get || call.reason != MQRC_NO_MSG_AVAILABLE) return;
            waitedMs_ += call.getOptions.WaitInterval;
            clock->Advance(waitedMs_ / 1000);
            waitedMs_ %= 1000;
        };
    }

    void TearDown() override {
        clock.reset();
        ModuleFixture::TearDown();
    }

    static void ExpectEnd(const ReadOutcome& outcome, ReturnCode code) {
        EXPECT_EQ(outcome.returnCode, code);
        EXPECT_EQ(outcome.recordLength, 0U);
        EXPECT_FALSE(outcome.hasErrorText);
    }

    std::unique_ptr<FakeClock> clock;

  private:
    std::int64_t waitedMs_ = 0;
};

TEST_F(ReadEndTest, EmptyQueueEndsTheInputOnceTheReadWaitIsExceeded) {
    InitAndOpenTraced(1, "-RWAIT 10");
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_EQ(mq.Count(Verb::Get), 2U) << "ten seconds are not yet more than ten";
    EXPECT_THAT(trace.NewLines(), ElementsAre(kEof));
}

TEST_F(ReadEndTest, MessageThatArrivesWithinTheReadWaitIsReturned) {
    InitAndOpen("-RWAIT 10");
    mq.FailGet(MQCC_FAILED, MQRC_NO_MSG_AVAILABLE);
    mq.PutMessage("late");
    EXPECT_EQ(Read().record, "late");
}

TEST_F(ReadEndTest, TheReadWaitStartsAgainWithEveryRead) {
    InitAndOpen("-RWAIT 10");
    for (int i = 0; i < 3; ++i) {
        mq.FailGet(MQCC_FAILED, MQRC_NO_MSG_AVAILABLE);
        mq.PutMessage("late");
        EXPECT_EQ(Read().record, "late");
    }
}

TEST_F(ReadEndTest, UnlimitedReadWaitAsksInSlicesForEver) {
    InitAndOpen("-RWAIT -1");
    for (int i = 0; i < 200; ++i)
        mq.FailGet(MQCC_FAILED, MQRC_NO_MSG_AVAILABLE);
    mq.PutMessage("late");
    EXPECT_EQ(Read().record, "late");
    EXPECT_EQ(mq.Count(Verb::Get), 201U);
    for (const MqCall& call : mq.Calls(Verb::Get))
        EXPECT_EQ(call.getOptions.WaitInterval, 15000);
}

TEST_F(ReadEndTest, TimeOutExpiresOnceItsSecondsAreExceeded) {
    InitAndOpenTraced(1, "-RWAIT 10");
    PutAttribute("TIMEOUT_SECONDS", "4");
    trace.Skip();
    ExpectEnd(Read(), pmrcTimeout);
    EXPECT_EQ(mq.Count(Verb::Get), 2U) << "slices of 2500 ms";
    EXPECT_THAT(trace.NewLines(), ElementsAre(kExpired));
}

// A host that wants the module to look at the clock more often gives it a time-out that cannot expire.
TEST_F(ReadEndTest, ATimeOutLongerThanTheReadWaitOnlyShortensTheSlices) {
    InitAndOpen("-RWAIT 15");
    PutAttribute("TIMEOUT_SECONDS", "60");
    for (int i = 0; i < 2; ++i) {
        mq.Forget();
        ExpectEnd(Read(), pmrcEOF);
        EXPECT_EQ(mq.Count(Verb::Get), 64U) << "slices of 250 ms until 16 seconds have passed";
    }
}

TEST_F(ReadEndTest, TimeOutExpiresThoughTheReadWaitIsUnlimited) {
    InitAndOpenTraced(1, "-RWAIT -1");
    PutAttribute("TIMEOUT_SECONDS", "40");
    trace.Skip();
    ExpectEnd(Read(), pmrcTimeout);
    EXPECT_EQ(mq.Count(Verb::Get), 110U) << "slices of 375 ms, the last begun at 40 seconds";
    EXPECT_THAT(trace.NewLines(), ElementsAre(kExpired));
}

TEST_F(ReadEndTest, ExpiredTimeOutRemainsAndDropsWhatALaterReadGets) {
    InitAndOpenTraced(1, "-RWAIT 10");
    PutAttribute("TIMEOUT_SECONDS", "4");
    ExpectEnd(Read(), pmrcTimeout);
    mq.Forget();
    trace.Skip();
    mq.PutMessage("record");
    ExpectEnd(Read(), pmrcTimeout);
    EXPECT_EQ(mq.Sequence(), "GET");
    EXPECT_THAT(trace.NewLines(), ElementsAre(kExpired));
}

TEST_F(ReadEndTest, ExpiredTimeOutSurvivesShutAndInit) {
    InitAndOpen("-RWAIT 10");
    PutAttribute("TIMEOUT_SECONDS", "4");
    ExpectEnd(Read(), pmrcTimeout);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    InitAndOpen("-RWAIT 10");
    mq.PutMessage("record");
    ExpectEnd(Read(), pmrcTimeout);
}

TEST_F(ReadEndTest, ReadWaitIsCheckedBeforeTheTimeOut) {
    InitAndOpen("-RWAIT 1");
    PutAttribute("TIMEOUT_SECONDS", "3");
    mq.hook = [&](const MqCall& call) {
        if (call.verb == Verb::Get) clock->Advance(10);
    };
    ExpectEnd(Read(), pmrcEOF);
    mq.PutMessage("record");
    EXPECT_EQ(Read().record, "record") << "the time-out was not noted";
}

// The clock jumps by more than the read wait between its first two readings, so the module does not call
// MQGET at all.
TEST_F(ReadEndTest, ClockThatJumpsBeforeTheFirstGetEndsTheInputAndRepeatsNoRecord) {
    InitAndOpenTraced(1, "-RWAIT 10");
    mq.PutMessage("record");
    ASSERT_EQ(Read().record, "record");
    trace.Skip();
    mq.Forget();
    clock->step = 100;
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_THAT(mq.calls, IsEmpty());
    EXPECT_THAT(trace.NewLines(), ElementsAre(kEof));
}

TEST_F(ReadEndTest, TimeOutOfZeroExpiresWithTheFirstSecond) {
    InitAndOpen("-RWAIT 10");
    PutAttribute("TIMEOUT_SECONDS", "abc");
    mq.PutMessage("record");
    EXPECT_EQ(Read().record, "record");
    ExpectEnd(Read(), pmrcTimeout);
    EXPECT_EQ(mq.Count(Verb::Get), 2U);
}

TEST_F(ReadEndTest, NegativeTimeOutHasExpiredBeforeTheFirstGet) {
    InitAndOpenTraced(1, "-RWAIT 10");
    PutAttribute("TIMEOUT_SECONDS", "-1");
    trace.Skip();
    mq.PutMessage("record");
    ExpectEnd(Read(), pmrcTimeout);
    EXPECT_EQ(mq.Count(Verb::Get), 0U);
    EXPECT_THAT(trace.NewLines(), ElementsAre(kExpired));
}

TEST_F(ReadEndTest, TimeOutBeyond32BitsIsTheLargestAndNotOneSecond) {
    InitAndOpen("-RWAIT 600");
    PutAttribute("TIMEOUT_SECONDS", "4294967297");
    mq.hook = [&](const MqCall& call) {
        if (call.verb == Verb::Get) clock->Advance(60);
    };
    mq.FailGet(MQCC_FAILED, MQRC_NO_MSG_AVAILABLE);
    mq.PutMessage("record");
    EXPECT_EQ(Read().record, "record");
}

TEST_F(ReadEndTest, RequestedEndNeedsNoGetAndStaysUntilTheNextOpen) {
    InitAndOpenTraced(1);
    mq.PutMessage("first");
    mq.PutMessage("second");
    ASSERT_EQ(Read().record, "first");
    PutAttribute("GEN_EOF", "");
    trace.Skip();
    mq.Forget();
    for (int i = 0; i < 3; ++i) {
        ExpectEnd(Read(), pmrcEOF);
        EXPECT_THAT(trace.NewLines(), ElementsAre(kRequested));
    }
    EXPECT_THAT(mq.calls, IsEmpty());
    ASSERT_EQ(Close().returnCode, pmrcOK);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(Read().record, "second");
}

TEST_F(ReadEndTest, RequestedEndBeforeAnyGetAlsoSpeaksOfMqget) {
    InitAndOpenTraced(1);
    PutAttribute("GEN_EOF", "");
    trace.Skip();
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_THAT(trace.NewLines(), ElementsAre(kRequested, kEof));
}

TEST_F(ReadEndTest, RequestedEndAfterAnEmptyQueueAlsoSpeaksOfMqget) {
    InitAndOpenTraced(1, "-RWAIT 1");
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    ExpectEnd(Read(), pmrcEOF);
    PutAttribute("GEN_EOF", "");
    trace.Skip();
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_THAT(trace.NewLines(), ElementsAre(kRequested, kEof));
}

TEST_F(ReadEndTest, RequestedEndAfterAFailedGetReportsNothingAgain) {
    InitAndOpenTraced(1);
    mq.FailGet(MQCC_FAILED, 2110, "data");
    const ReadOutcome failed = Read();
    ASSERT_EQ(failed.returnCode, pmrcFailure);
    PutAttribute("GEN_EOF", "");
    trace.Skip();
    const ReadOutcome outcome = Read();
    EXPECT_EQ(outcome.returnCode, pmrcEOF);
    EXPECT_EQ(outcome.recordLength, 0U);
    EXPECT_EQ(outcome.errorTextAddress, failed.errorTextAddress);
    EXPECT_THAT(trace.NewLines(), ElementsAre(kRequested));
}

TEST_F(ReadEndTest, RequestedEndAfterTheSyncpointLimitReportsItAgain) {
    InitAndOpenTraced(1);
    mq.FailGet(MQCC_FAILED, MQRC_SYNCPOINT_LIMIT_REACHED);
    ExpectEnd(Read(), pmrcEOF);
    PutAttribute("GEN_EOF", "");
    trace.Skip();
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_THAT(trace.NewLines(),
                ElementsAre(kRequested, WarningLine("PIDMMain",
                                                    "Checkpoint capacity exceeded. No more messages can be "
                                                    "handled within current unit of work.  Returning EOF.")));
}

TEST_F(ReadEndTest, RequestedEndAfterAFailureWithoutDataAlsoSpeaksOfMqget) {
    InitAndOpenTraced(1);
    mq.FailGet(MQCC_FAILED, 2009);
    ExpectEnd(Read(), pmrcEOF);
    PutAttribute("GEN_EOF", "");
    trace.Skip();
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_THAT(trace.NewLines(), ElementsAre(kRequested, kEof));
}

TEST_F(ReadEndTest, RequestedEndDoesNotJudgeTheLastMessageAgain) {
    InitAndOpenTraced(1);
    mq.PutMessage("record", 3);
    ASSERT_EQ(Read().returnCode, pmrcOK);
    PutAttribute("GEN_EOF", "");
    trace.Skip();
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_THAT(trace.NewLines(), ElementsAre(kRequested));
}

TEST_F(ReadEndTest, RequestedEndAfterANewOpenUsesTheLastGetOfTheEarlierOne) {
    InitAndOpenTraced(1);
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    ASSERT_EQ(Close().returnCode, pmrcOK);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    PutAttribute("GEN_EOF", "");
    trace.Skip();
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_THAT(trace.NewLines(), ElementsAre(kRequested));
}

TEST_F(ReadEndTest, ExpiredTimeOutComesBeforeTheRequestedEnd) {
    InitAndOpenTraced(1, "-RWAIT 10");
    PutAttribute("TIMEOUT_SECONDS", "4");
    ExpectEnd(Read(), pmrcTimeout);
    PutAttribute("GEN_EOF", "");
    trace.Skip();
    mq.Forget();
    ExpectEnd(Read(), pmrcTimeout);
    EXPECT_THAT(mq.calls, IsEmpty());
    EXPECT_THAT(trace.NewLines(), ElementsAre(kRequested, kExpired));
}

}  // namespace
