// SPDX-License-Identifier: Apache-2.0

// Tests an MQOPEN that fails: the attempts, the pauses between them, and the report at the end.
#include <gmock/gmock.h>
#include <time.h>

#include <cerrno>

#include "tests/support/expected_report.h"
#include "tests/support/fake_clock.h"
#include "tests/support/module_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class OpenRetryTest : public ModuleFixture {
  protected:
    void FailOpens(std::size_t times, MQLONG reason) {
        for (std::size_t i = 0; i < times; ++i)
            mq.onOpen.push_back({MQCC_FAILED, reason});
    }
};

TEST_F(OpenRetryTest, DefaultsMakeOneAttemptWithoutAPause) {
    FakeClock clock(module);
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    FailOpens(1, 2042);
    EXPECT_EQ(Open().returnCode, pmrcFailure);
    EXPECT_EQ(mq.Count(Verb::Open), 1U);
    EXPECT_THAT(clock.pausesMs, IsEmpty());
}

TEST_F(OpenRetryTest, PausesTheWaitAsMillisecondsBetweenAttemptsButNotAfterTheLast) {
    FakeClock clock(module);
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -OWAIT 10 -OTENACITY 35")));
    FailOpens(10, 2042);
    EXPECT_EQ(Open().returnCode, pmrcFailure);
    EXPECT_EQ(mq.Count(Verb::Open), 3U);
    EXPECT_THAT(clock.pausesMs, ElementsAre(10, 10));
}

// The errno values with which the next pauses fail, in order. Later pauses succeed.
std::vector<int> pauseAnswers;
std::vector<std::int64_t> pausesAskedMs;

/// Replaces nanosleep. It fails with the next of pauseAnswers and reports that a third of the time is left.
int AnswerPause(const timespec* asked, timespec* rest) {
    pausesAskedMs.push_back(static_cast<std::int64_t>(asked->tv_sec) * 1000 + asked->tv_nsec / 1000000);
    if (pauseAnswers.empty()) return 0;
    errno = pauseAnswers.front();
    pauseAnswers.erase(pauseAnswers.begin());
    *rest = {0, asked->tv_nsec / 3};
    return -1;
}

class BrokenPauseTest : public OpenRetryTest {
  protected:
    /// Opens the queue with one retry. Returns the pauses, in milliseconds, that the module asks for before
    /// the retry if they fail with the errno values given.
    std::vector<std::int64_t> PausesOfARetry(const std::vector<int>& answers) {
        EXPECT_TRUE(Succeeds(Init(std::string(kRequired) + " -OWAIT 90 -OTENACITY 180")));
        FailOpens(1, 2042);
        pauseAnswers = answers;
        pausesAskedMs.clear();
        const ImportPatch patch(module, {"nanosleep"}, reinterpret_cast<void*>(&AnswerPause));
        if (!patch.Found()) return {};
        EXPECT_TRUE(Succeeds(Open()));
        EXPECT_EQ(mq.Count(Verb::Open), 2U);
        return pausesAskedMs;
    }
    void SetUp() override {
        OpenRetryTest::SetUp();
        if (kPathDelimiter != '/') GTEST_SKIP() << "the pause of this system cannot be interrupted";
    }
};

TEST_F(BrokenPauseTest, APauseThatASignalInterruptsGoesOnForTheRest) {
    EXPECT_THAT(PausesOfARetry({EINTR, EINTR}), ElementsAre(90, 30, 10));
}

TEST_F(BrokenPauseTest, APauseThatTheSystemRefusesEnds) {
    EXPECT_THAT(PausesOfARetry({EINVAL}), ElementsAre(90));
}

TEST_F(OpenRetryTest, SixtySecondsOfTenacityAtOneSecondAreSixtyAttempts) {
    FakeClock clock(module);
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -OWAIT 1 -OTENACITY 60")));
    FailOpens(100, 2042);
    EXPECT_EQ(Open().returnCode, pmrcFailure);
    EXPECT_EQ(mq.Count(Verb::Open), 60U);
    EXPECT_EQ(clock.pausesMs, std::vector<std::int64_t>(59, 1));
}

TEST_F(OpenRetryTest, SuccessEndsTheAttemptsAndLeavesNoError) {
    FakeClock clock(module);
    InitTraced(1, "-OWAIT 2 -OTENACITY 20");
    FailOpens(1, 2042);
    FailOpens(1, 2085);
    EXPECT_TRUE(Succeeds(Open()));
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN OPEN OPEN");
    EXPECT_THAT(clock.pausesMs, ElementsAre(2, 2));
    EXPECT_THAT(trace.NewLines(),
                ElementsAre(InfoLine("PIDMMain", "Queue Manager open"), InfoLine("PIDMMain", "Queue open")));
}

TEST_F(OpenRetryTest, UnknownQueueEndsWithItsMessage) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    FailOpens(1, 2085);
    EXPECT_TRUE(FailsWith(Open(), ExpectedError("PIDMMain",
                                                "MQA0158: <MQOpen attempts exhausted. QName 'Q1', reason "
                                                "code 2085 (Unknown queue name)>")));
}

TEST_F(OpenRetryTest, QueueInUseEndsWithItsMessageWhenOpenedExclusively) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -MQEX")));
    FailOpens(1, 2042);
    EXPECT_TRUE(FailsWith(Open(), ExpectedError("PIDMMain",
                                                "MQA0157: <MQOpen attempts exhausted. QName 'Q1', reason "
                                                "code 2042 (Queue already open)>")));
}

TEST_F(OpenRetryTest, QueueInUseReportsTheLastTextWhenNotOpenedExclusively) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    FailOpens(1, 2042);
    EXPECT_TRUE(FailsWith(Open(), ExpectedError("PIDMMain", "Queue Manager open")));
}

TEST_F(OpenRetryTest, OtherReasonsReportTheLastText) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -MQEX")));
    FailOpens(1, 2035);
    EXPECT_TRUE(FailsWith(Open(), ExpectedError("PIDMMain", "Queue Manager open")));
}

TEST_F(OpenRetryTest, TheLastReasonDecidesTheMessage) {
    FakeClock clock(module);
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -OWAIT 1 -OTENACITY 2")));
    FailOpens(1, 2042);
    FailOpens(1, 2085);
    EXPECT_TRUE(FailsWith(Open(), ExpectedError("PIDMMain",
                                                "MQA0158: <MQOpen attempts exhausted. QName 'Q1', reason "
                                                "code 2085 (Unknown queue name)>")));
}

TEST_F(OpenRetryTest, WarningCountsAsOpenAndIsCarriedAsAWarning) {
    InitAndOpenTraced(1);
    ASSERT_EQ(Close().returnCode, pmrcOK);
    mq.onOpen.push_back({MQCC_WARNING, 2552});
    const Outcome outcome = Open();
    EXPECT_EQ(outcome.returnCode, pmrcOK);
    EXPECT_TRUE(Carries(
        outcome, ExpectedError("PIDMMain", "MQA0156: <MQOpen, QName = Q1, reason code = 2552>").Warning()));
    mq.PutMessage("record");
    EXPECT_EQ(Read().record, "record");
}

TEST_F(OpenRetryTest, WarningPausesOnceWhenAnotherAttemptWasLeft) {
    FakeClock clock(module);
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -OWAIT 3 -OTENACITY 9")));
    mq.onOpen.push_back({MQCC_WARNING, 2552});
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(mq.Count(Verb::Open), 1U);
    EXPECT_THAT(clock.pausesMs, ElementsAre(3));
}

TEST_F(OpenRetryTest, FailureLeavesNoQueueWhateverMqPutIntoTheHandle) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    mq.onOpen.push_back({MQCC_FAILED, 2085, 77});
    ASSERT_EQ(Open().returnCode, pmrcFailure);
    EXPECT_TRUE(FailsWith(Read(), ExpectedError("PIDMMain",
                                                "MQA0160: <Read failed.  Queue not open.  QMName = QM1. "
                                                "QName = Q1.>")));
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN DISC");
}

TEST_F(OpenRetryTest, AfterFailureAnotherOpenConnectsAgain) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    FailOpens(1, 2085);
    ASSERT_EQ(Open().returnCode, pmrcFailure);
    mq.onConnx.push_back({MQCC_OK, MQRC_NONE, 70});
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN CONNX OPEN");
    EXPECT_EQ(mq.calls.back().connection, 70);
}

}  // namespace
