// SPDX-License-Identifier: Apache-2.0

// Tests Shut: it releases what Close releases, depending on its own mode, and always returns the module to
// the loaded state.
#include <gmock/gmock.h>

#include "tests/support/module_fixture.h"

namespace {

class ShutTest : public ModuleFixture {
  protected:
    void ExpectLoadedState() {
        EXPECT_TRUE(FailsWith(Write(), ExpectedError("PIDMMain", "not initialized").Calling("Write")));
    }
};

TEST_F(ShutTest, ReleasesEverythingThatIsOpen) {
    InitAndOpen("-LOG log.dat -CKFILE ck.dat");
    mq.Forget();
    EXPECT_TRUE(Succeeds(Shut()));
    EXPECT_EQ(mq.Sequence(), "CLOSE DISC");
    EXPECT_FALSE(FileExists("log.dat"));
    EXPECT_FALSE(FileExists("ck.dat"));
    ExpectLoadedState();
}

TEST_F(ShutTest, DoesNotReportTheNumberOfMessages) {
    InitAndOpenTraced(2);
    ASSERT_TRUE(Succeeds(Shut()));
    EXPECT_THAT(trace.NewLines(), testing::ElementsAre(InfoLine("PIDMMain", "entered for option 'Shut'"),
                                                       InfoLine("CloseAll", "closing MQ named Q"),
                                                       InfoLine("CloseAll", "closing MQ Q Manager"),
                                                       InfoLine("PIDMMain", "Returning to Hostlink, rc=0")));
}

TEST_F(ShutTest, CarriesOnThroughEveryFailureUnlessItsModeIsOne) {
    for (const std::uint16_t mode : std::initializer_list<std::uint16_t>{0, 2, 257, 65535}) {
        InitAndOpen();
        mq.Forget();
        mq.onClose.push_back({MQCC_FAILED, 2018});
        mq.onDisc.push_back({MQCC_FAILED, 2009});
        EXPECT_TRUE(Succeeds(Shut(mode))) << mode;
        EXPECT_EQ(mq.Sequence(), "CLOSE DISC") << mode;
    }
}

TEST_F(ShutTest, ReportsTheFailuresThatItCarriesOnThroughAndReleasesTheFile) {
    InitAndOpenTraced(1, "-CKFILE ck.dat");
    mq.onClose.push_back({MQCC_FAILED, 2018});
    mq.onDisc.push_back({MQCC_WARNING, 2002});
    EXPECT_TRUE(Succeeds(Shut()));
    std::vector<std::string> lines = {InfoLine("CloseAll", "closing MQ named Q")};
    for (const std::string& line :
         ExpectedError("CloseAll", "MQA0142: <MQCLOSE failed.  QName = Q1. Reason code = 2018>").TraceLines())
        lines.push_back(line);
    lines.push_back(InfoLine("CloseAll", "closing MQ Q Manager"));
    for (const std::string& line :
         ExpectedError("CloseAll", "MQA0144: <MQDISC failed. QMName = QM1, reason code = 2002>")
             .Warning()
             .TraceLines())
        lines.push_back(line);
    lines.push_back(InfoLine("CloseAll", "Deleting checkpoint file ('ck.dat')."));
    EXPECT_THAT(trace.NewLines(), testing::ElementsAreArray(lines));
    EXPECT_FALSE(FileExists("ck.dat"));
}

TEST_F(ShutTest, WithModeOneStopsAtTheFirstFailureYetReturnsToTheLoadedPhase) {
    InitAndOpen("-CKFILE ck.dat");
    mq.Forget();
    mq.onClose.push_back({MQCC_FAILED, 2018});
    const Outcome outcome = Shut(1);
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_FALSE(outcome.hasErrorText);
    EXPECT_EQ(mq.Sequence(), "CLOSE");
    EXPECT_TRUE(FileExists("ck.dat"));

    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_TRUE(Succeeds(Shut(1)));
    EXPECT_EQ(mq.Sequence(), "CLOSE DISC") << "the connection waited for the next release";
    EXPECT_FALSE(FileExists("ck.dat"));
}

TEST_F(ShutTest, OfModeOneStopsAtAFailedDisconnect) {
    InitAndOpen();
    mq.onDisc.push_back({MQCC_WARNING, 2002});
    EXPECT_EQ(Shut(1).returnCode, pmrcFailure);
    ExpectLoadedState();
}

TEST_F(ShutTest, AfterCloseFindsNothingToRelease) {
    InitAndOpen();
    ASSERT_TRUE(Succeeds(Close()));
    mq.Forget();
    EXPECT_TRUE(Succeeds(Shut()));
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(ShutTest, WithNothingOpenSucceedsInEveryMode) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_TRUE(Succeeds(Shut(1)));
    ExpectLoadedState();
}

}  // namespace
