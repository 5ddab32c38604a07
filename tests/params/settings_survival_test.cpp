// SPDX-License-Identifier: Apache-2.0

// Tests which settings the next Init of the same loaded module keeps, and which it resets.
#include "tests/params/params_fixture.h"

using testing::ElementsAreArray;

namespace {

class SettingsSurvivalTest : public ParamsFixture {
  protected:
    void InitOnce(const std::string& keywords) {
        ASSERT_EQ(Init(Required(keywords)).returnCode, pmrcOK);
        StartOver();
    }
};

TEST_F(SettingsSurvivalTest, SettingsWithADefaultAreResetByInit) {
    InitOnce(
        "-TLF no -TDM no -BKSZ 10 -RWAIT -1 -OWAIT 2 -OTENACITY 20 -FLUSH yes -CONVERT 819 -LOG log.dat "
        "-CKFILE ck.dat");
    EXPECT_THAT(ReportOfInit(""), ElementsAreArray(ExpectedParameters().TraceLines()));
}

TEST_F(SettingsSurvivalTest, TerminateOnLogFailureIsOnAgain) {
    InitOnce("");  // has turned it off, for want of a log
    ExpectedParameters parameters;
    parameters.logging = {"Logging pathname: 'log.dat'", "Terminate on Log failure: yes"};
    EXPECT_THAT(ReportOfInit("-LOG log.dat"), ElementsAreArray(parameters.TraceLines()));
}

TEST_F(SettingsSurvivalTest, TraceLevelIsResetByInit) {
    LeaveTraceOpen();
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_EQ(GetAttribute("ANY").returnCode, pmrcNotSupported);
    EXPECT_THAT(trace.NewLines(),
                testing::ElementsAre("CheckParm(info): Keyword: QMGR", "CheckParm(info): Keyword: QNM",
                                     "ParseParms(info): Trace Level: 0"));
}

TEST_F(SettingsSurvivalTest, ExclusiveOpenIsNotReset_Kept) {
    InitOnce("-MQEX");
    ExpectedParameters parameters;
    parameters.queueOpen = "Queue open: EXCLUSIVE.";
    EXPECT_THAT(ReportOfInit(""), ElementsAreArray(parameters.TraceLines()));
}

TEST_F(SettingsSurvivalTest, NamesAreNotReset_Kept) {
    InitOnce("-QMGR OLDQM -QNM OLDQ");
    ASSERT_TRUE(Succeeds(Init("-TRCL 1 trace.txt")));
    ASSERT_TRUE(Succeeds(Open()));
    EXPECT_STREQ(mq.Calls(Verb::Connx).front().queueManager.c_str(), "OLDQM");
    EXPECT_STREQ(mq.Calls(Verb::Open).front().objectDescriptor.ObjectName, "OLDQ");
}

TEST_F(SettingsSurvivalTest, ShorterNameReplacesALongerOneCompletely) {
    InitOnce("-QMGR " + std::string(48, 'M') + " -QNM " + std::string(48, 'Q'));
    InitAndOpen();
    EXPECT_EQ(mq.Calls(Verb::Connx).front().queueManager, "QM1" + std::string(45, '\0'));
    EXPECT_EQ(std::string(mq.Calls(Verb::Open).front().objectDescriptor.ObjectName, 48),
              "Q1" + std::string(46, '\0'));
}

TEST_F(SettingsSurvivalTest, NameGivenByAFailedInitStaysGiven_Kept) {
    ASSERT_EQ(Init("-QMGR QM1").returnCode, pmrcFailure);
    StartOver();
    EXPECT_TRUE(Succeeds(Init("-QNM Q1")));
}

TEST_F(SettingsSurvivalTest, ChannelAndServerAreNotReset_Kept) {
    InitOnce("-CHNL C1 -SRVR HOST1");
    ASSERT_TRUE(Succeeds(Init("-SRVR HOST2")));
    ASSERT_TRUE(Succeeds(Open()));
    const MqCall connect = mq.Calls(Verb::Connx).front();
    ASSERT_TRUE(connect.hasChannel);
    EXPECT_STREQ(connect.channel.ChannelName, "C1");
    EXPECT_STREQ(connect.channel.ConnectionName, "HOST2");
}

TEST_F(SettingsSurvivalTest, ChannelGivenByAFailedInitStaysGiven_Kept) {
    ASSERT_EQ(Init(Required("-CHNL C1")).returnCode, pmrcFailure);
    StartOver();
    ASSERT_EQ(Init(kRequired).returnCode, pmrcFailure) << "one of the two is still given";
    StartOver();
    EXPECT_TRUE(Succeeds(Init("-SRVR HOST")));
}

TEST_F(SettingsSurvivalTest, HelpIsShownOnceForAllInits_Kept) {
    InitOnce("-HELP");
    ASSERT_TRUE(Succeeds(Init("-HELP")));
    const std::string printed = PrintedAtOpen();
    const std::string title = "MQA0023:";
    EXPECT_NE(printed.find(title), std::string::npos);
    EXPECT_EQ(printed.find(title), printed.rfind(title));
}

TEST_F(SettingsSurvivalTest, ReportsOfAllInitsAreCollected_Kept) {
    InitOnce("-RWAIT 1");
    ASSERT_TRUE(Succeeds(Init("-RWAIT 2")));
    const std::string printed = PrintedAtOpen();
    const std::size_t first = printed.find("     .        MQ read wait interval: 1\n");
    const std::size_t second = printed.find("     .        MQ read wait interval: 2\n");
    ASSERT_NE(first, std::string::npos);
    ASSERT_NE(second, std::string::npos);
    EXPECT_LT(first, second);
}

}  // namespace
