// SPDX-License-Identifier: Apache-2.0

// Tests the fault plan.
#include "tests/spoolmq/support/spool_test.h"

#include "platform/environment.h"

namespace {

class FaultsTest : public SpoolTest {
  protected:
    /// Runs an actor under the fault plan and returns the lines that it logs.
    std::vector<std::string> LogUnder(const std::string& plan, const std::vector<std::string>& steps) {
        RemoveLogs();
        platform::SetEnvironment("SPOOLMQ_FAULTS", plan);
        EXPECT_EQ(0, RunActor(steps));
        platform::SetEnvironment("SPOOLMQ_FAULTS", "");
        return Log();
    }
    void PutAll(int count) {
        ASSERT_EQ(0, RunActor({"connect", "QM1", "open", "Q", "16", "put", "m", std::to_string(count)}));
    }
};

using Lines = std::vector<std::string>;

TEST_F(FaultsTest, AFailedCallHasNoEffect) {
    PutAll(3);
    EXPECT_EQ(Lines({"got m-0", "MQGET 2/2102", "got m-1", "MQCMIT 2/2195"}),
              LogUnder("MQGET 2 fail 2 2102\nMQCMIT 1 fail 2 2195",
                       {"connect", "QM1", "open", "Q", "2", "get-sync", "3", "commit"}));
    EXPECT_EQ(Lines({"m-0~1", "m-1~1", "m-2"}), Drain());
}

TEST_F(FaultsTest, ACallThatFailsAfterwardsTakesEffect) {
    PutAll(2);
    EXPECT_EQ(Lines({"got m-0", "MQCMIT 2/2195"}),
              LogUnder("MQCMIT 1 fail-after 2 2195",
                       {"connect", "QM1", "open", "Q", "2", "get-sync", "1", "commit"}));
    EXPECT_EQ(Lines({"m-1"}), Drain());
}

TEST_F(FaultsTest, ACallWithAWarningTakesEffect) {
    PutAll(1);
    EXPECT_EQ(Lines({"MQGET 1/2110"}),
              LogUnder("MQGET 1 warn 2110", {"connect", "QM1", "open", "Q", "2", "get", "1"}));
    EXPECT_TRUE(Drain().empty());
}

TEST_F(FaultsTest, CallsAreGivenAsANumberARangeAnOpenRangeOrAll) {
    const Lines steps = {"connect", "QM1", "open", "Q", "16", "put", "m", "6"};
    EXPECT_EQ(Lines({"MQPUT 2/2053", "MQPUT 2/2053", "MQPUT 2/2051", "MQPUT 2/2051"}),
              LogUnder("MQPUT 2-3 fail 2 2053; MQPUT 5+ fail 2 2051", steps));
    EXPECT_EQ(6U, LogUnder("MQPUT * fail 2 2053", steps).size());
    EXPECT_EQ(Lines({"m-0", "m-3"}), Drain());
}

TEST_F(FaultsTest, ABrokenConnectionIsDeadAndBackedOut) {
    PutAll(2);
    EXPECT_EQ(Lines({"got m-0", "MQGET 2/2009", "MQCMIT 2/2009", "MQDISC 2/2009", "MQCMIT 2/2018"}),
              LogUnder("MQGET 2 fail 2 2009",
                       {"connect", "QM1", "open", "Q", "2", "get-sync", "2", "commit", "disc", "commit"}));
    EXPECT_EQ(Lines({"m-0~1", "m-1"}), Drain());
}

TEST_F(FaultsTest, AConnectionThatBreaksAfterTheCommitHasCommitted) {
    PutAll(2);
    EXPECT_EQ(Lines({"got m-0", "MQCMIT 2/2009", "MQGET 2/2009"}),
              LogUnder("MQCMIT 1 fail-after 2 2009",
                       {"connect", "QM1", "open", "Q", "2", "get-sync", "1", "commit", "get", "1"}));
    EXPECT_EQ(Lines({"m-1"}), Drain());
}

TEST_F(FaultsTest, ARollbackOnlyUnitOfWorkCanOnlyBeBackedOut) {
    PutAll(3);
    EXPECT_EQ(Lines({"got m-0", "MQGET 2/2003", "MQGET 2/2003", "MQCMIT 1/2003", "got m-0"}),
              LogUnder("MQGET 2 fail 2 2003", {"connect", "QM1", "open", "Q", "2", "get-sync", "3", "commit",
                                               "get-sync", "1", "back"}));
    EXPECT_EQ(Lines({"m-0~2", "m-1", "m-2"}), Drain());
}

TEST_F(FaultsTest, ACommitReportedAsBackedOutIsBackedOut) {
    PutAll(1);
    EXPECT_EQ(Lines({"got m-0", "MQCMIT 1/2003"}),
              LogUnder("MQCMIT 1 fail 1 2003",
                       {"connect", "QM1", "open", "Q", "2", "get-sync", "1", "commit", "commit"}));
    EXPECT_EQ(Lines({"m-0~1"}), Drain());
}

TEST_F(FaultsTest, APlanCanBeInAFileWithComments) {
    WriteAll(std::filesystem::path(Root()) / "plan",
             "# the second open\nMQOPEN 2 fail 2 2035  # not authorised\n\n");
    platform::SetEnvironment("SPOOLMQ_FAULT_FILE", Root() + "/plan");
    EXPECT_EQ(Lines({"MQOPEN 2/2035"}),
              LogUnder("", {"connect", "QM1", "open", "Q", "16", "open", "Q", "16", "open", "Q", "16"}));
}

TEST_F(FaultsTest, ConnectsCanFailToo) {
    EXPECT_EQ(Lines({"MQCONN 2/2538"}),
              LogUnder("MQCONN 1 fail 2 2538", {"connect", "QM1", "connect", "QM1"}));
}

class InvalidFaultPlan : public SpoolTest,
                         public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(InvalidFaultPlan, IsReportedOnStandardErrorWithLineAndReason) {
    platform::SetEnvironment("SPOOLMQ_FAULTS", GetParam().first);
    testing::internal::CaptureStderr();
    EXPECT_EQ(FailedWith(mqi::MQRC_UNEXPECTED_ERROR), Connect("QM1", &connection_));
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, printed.find(GetParam().second)) << printed;
}

INSTANTIATE_TEST_SUITE_P(
    Each, InvalidFaultPlan,
    testing::Values(
        std::make_pair("MQGET 5\n", "SPOOLMQ_FAULTS, line 1 \"MQGET 5\": a line has at least three words"),
        std::make_pair("\nMQFLY 1 fail 2 2009", "line 2 \"MQFLY 1 fail 2 2009\": \"MQFLY\" is not a verb"),
        std::make_pair("MQGET none fail 2 2009", "\"none\" is not a number of calls: give 5, 5-7, 5+ or *"),
        std::make_pair("MQGET 0 fail 2 2009", "\"0\" is not a number of calls"),
        std::make_pair("MQGET 3-2 fail 2 2009", "\"3-2\" is not a number of calls"),
        std::make_pair("MQGET 1 fail 3 2009", "the action is not one of: fail CC RC"),
        std::make_pair("MQGET 1 fail 2009", "the action is not one of"),
        std::make_pair("MQGET 1 kill", "the action is not one of"),
        std::make_pair("MQGET 1 kill later", "the action is not one of"),
        std::make_pair("point got 1 fail", "a point line reads: point NAME CALLS kill")));

TEST_F(FaultsTest, AMissingPlanFileIsReported) {
    platform::SetEnvironment("SPOOLMQ_FAULT_FILE", Root() + "/nowhere");
    testing::internal::CaptureStderr();
    EXPECT_EQ(FailedWith(mqi::MQRC_UNEXPECTED_ERROR), Connect("QM1", &connection_));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("SPOOLMQ_FAULT_FILE \""));
}

}  // namespace
