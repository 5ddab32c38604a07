// SPDX-License-Identifier: Apache-2.0

// Tests the error text that every return carries: how long it exists, what replaces it, and what happens when
// memory runs out.
#include <gmock/gmock.h>

#include "tests/support/fault_plan.h"
#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

namespace {

const ExpectedError kReadOnly("PIDMMain", "Access Module is read only");
const ExpectedError kOneQueue("PIDMMain", "Access Module limited to 1 open Queue");

using ErrorTextTest = ModuleFixture;

TEST_F(ErrorTextTest, StaysWithLaterSuccessfulReturns) {
    InitAndOpen();
    ASSERT_TRUE(FailsWith(Open(), kOneQueue));
    mq.PutMessage("record");
    const ReadOutcome read = Read();
    EXPECT_EQ(read.returnCode, pmrcOK);
    EXPECT_EQ(read.record, "record");
    EXPECT_TRUE(Carries(read, kOneQueue));
    EXPECT_TRUE(Carries(Write(), kOneQueue));
    EXPECT_TRUE(Carries(Option(15), kOneQueue));
    EXPECT_TRUE(Carries(Close(), kOneQueue));
}

TEST_F(ErrorTextTest, IsReplacedByTheNextError) {
    InitAndOpen();
    ASSERT_TRUE(FailsWith(Open(), kOneQueue));
    ASSERT_EQ(Close().returnCode, pmrcOK);
    EXPECT_TRUE(FailsWith(Open(0), kReadOnly));
    EXPECT_TRUE(Carries(Write(), kReadOnly));
}

TEST_F(ErrorTextTest, IsFreedByShut) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    ASSERT_TRUE(FailsWith(Open(0), kReadOnly));
    EXPECT_TRUE(Succeeds(Shut()));
}

TEST_F(ErrorTextTest, OfAFailingShutIsNotHandedOut) {
    InitAndOpen();
    mq.onClose.push_back({MQCC_FAILED, 2018});
    const Outcome outcome = Shut(1);
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_FALSE(outcome.hasErrorText);
}

TEST_F(ErrorTextTest, SurvivesAnInitThatFollowsARefusedRequest) {
    Read();
    const Outcome outcome = Init(kRequired);
    EXPECT_EQ(outcome.returnCode, pmrcOK);
    EXPECT_TRUE(Carries(outcome, ExpectedError("PIDMMain", "not initialized").Calling("Read")));
}

TEST_F(ErrorTextTest, WithoutMemoryDoesNotExistAndIsReportedOnStandardOutput) {
    FaultPlan faults(module);
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    ASSERT_TRUE(FailsWith(Open(0), kReadOnly));
    faults.Add({.call = FileCall::Allocate, .file = "", .bytes = kReadOnly.Size()});
    OutputCapture capture;
    const Outcome outcome = Open(0);
    const std::string output = capture.Finish();
    EXPECT_EQ(faults.Struck(), 1);
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_FALSE(outcome.hasErrorText) << "the earlier text is gone too";
    EXPECT_THAT(output, testing::EndsWith("Norvane Websphere MQ AMOD: Error Text memory allocation failed"));
}

TEST_F(ErrorTextTest, WithoutMemoryIsReportedInTheTraceIfThereIsOne) {
    FaultPlan faults(module);
    InitTraced(1);
    faults.Add({.call = FileCall::Allocate, .file = "", .bytes = kReadOnly.Size()});
    OutputCapture capture;
    const Outcome outcome = Open(0);
    EXPECT_THAT(capture.Finish(), testing::Not(testing::HasSubstr("memory allocation failed")));
    EXPECT_EQ(faults.Struck(), 1);
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_FALSE(outcome.hasErrorText);
    const std::vector<std::string> lines = trace.NewLines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "Error Text memory allocation failed");
    EXPECT_THAT(trace.Text(), testing::EndsWith(": Error Text memory allocation failed"))
        << "without a line end";
}

}  // namespace
