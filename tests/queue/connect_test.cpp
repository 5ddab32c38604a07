// SPDX-License-Identifier: Apache-2.0

// Tests how Open connects: the arguments of MQCONNX, and the effects of its failures.
#include <gmock/gmock.h>

#include <cstring>

#include "tests/support/module_fixture.h"

using testing::ElementsAreArray;

namespace {

template <typename T>
std::string BytesOf(const T& structure) {
    return std::string(reinterpret_cast<const char*>(&structure), sizeof structure);
}

template <std::size_t Size>
void Fill(MQCHAR (&field)[Size], const std::string& text) {
    ASSERT_LE(text.size(), Size);
    std::memcpy(field, text.data(), text.size());
}

ExpectedError ConnectError(int reason) {
    return {"PIDMMain", "Error received from MQCONNX : " + std::to_string(reason)};
}

class ConnectTest : public ModuleFixture {
  protected:
    /// Returns the expected trace lines of an Open that fails to connect: `before` comes before the error.
    static std::vector<std::string> FailedOpenLines(const std::vector<std::string>& before, int reason) {
        std::vector<std::string> lines = {InfoLine("PIDMMain", "entered for option 'Open'")};
        lines.insert(lines.end(), before.begin(), before.end());
        for (const std::string& line : ConnectError(reason).TraceLines())
            lines.push_back(line);
        lines.push_back(InfoLine("PIDMMain", "Returning to Hostlink, rc=34"));
        return lines;
    }
};

TEST_F(ConnectTest, PassesTheQueueManagersName) {
    InitAndOpen();
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN");
    EXPECT_EQ(mq.calls[0].queueManager.substr(0, 4), std::string("QM1\0", 4));
}

TEST_F(ConnectTest, PassesANameOf48CharactersWhole) {
    const std::string name = "QM." + std::string(45, 'X');
    ASSERT_TRUE(Succeeds(Init("-QNM Q1 -QMGR " + name)));
    ASSERT_TRUE(Succeeds(Open()));
    EXPECT_EQ(mq.calls[0].queueManager, name);
}

TEST_F(ConnectTest, WithoutChannelAndServerPassesOnlyVersion2Options) {
    InitAndOpen();
    MQCNO expected = MqcnoDefault();
    expected.Version = MQCNO_VERSION_2;
    EXPECT_EQ(BytesOf(mq.calls[0].connectOptions), BytesOf(expected));
}

TEST_F(ConnectTest, WithChannelAndServerPassesTheClientChannel) {
    InitAndOpen("-CHNL SYSTEM.DEF.SVRCONN -SRVR mq.example.org(1414)");
    EXPECT_EQ(mq.calls[0].connectOptions.Version, MQCNO_VERSION_2);
    EXPECT_EQ(mq.calls[0].connectOptions.Options, 0);
    EXPECT_EQ(mq.calls[0].connectOptions.ClientConnOffset, 0);
    ASSERT_TRUE(mq.calls[0].hasChannel);
    MQCD expected = MqcdClientConnDefault();
    Fill(expected.ChannelName, "SYSTEM.DEF.SVRCONN");
    Fill(expected.ConnectionName, "mq.example.org(1414)");
    EXPECT_EQ(BytesOf(mq.calls[0].channel), BytesOf(expected));
}

TEST_F(ConnectTest, PassesFullWidthChannelAndServerWithoutATerminator) {
    const std::string channel(20, 'C');
    const std::string server(264, 's');
    InitAndOpen("-SRVR " + server + " -CHNL " + channel);
    MQCD expected = MqcdClientConnDefault();
    Fill(expected.ChannelName, channel);
    Fill(expected.ConnectionName, server);
    EXPECT_EQ(BytesOf(mq.calls[0].channel), BytesOf(expected));
}

TEST_F(ConnectTest, ShorterNamesOfALaterInitLeaveNothingOfTheEarlierOnes) {
    InitAndOpen("-CHNL LONGER.CHANNEL -SRVR longer.example.org");
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    InitAndOpen("-CHNL C -SRVR s");
    MQCD expected = MqcdClientConnDefault();
    Fill(expected.ChannelName, "C");
    Fill(expected.ConnectionName, "s");
    EXPECT_EQ(BytesOf(mq.Calls(Verb::Connx)[1].channel), BytesOf(expected));
}

TEST_F(ConnectTest, ChannelAndServerOfAnEarlierInitStayInForce) {
    InitAndOpen("-CHNL CHANNEL -SRVR server");
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    InitAndOpen();
    const std::vector<MqCall> connects = mq.Calls(Verb::Connx);
    ASSERT_TRUE(connects[1].hasChannel);
    EXPECT_EQ(BytesOf(connects[1].channel), BytesOf(connects[0].channel));
}

TEST_F(ConnectTest, ChannelWithoutServerFailsInitYetALaterOpenConnectsWithoutAChannel) {
    ASSERT_EQ(Init("-QMGR QM1 -QNM Q1 -CHNL CHANNEL").returnCode, pmrcFailure);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    EXPECT_FALSE(mq.calls[0].hasChannel);
    EXPECT_EQ(mq.calls[0].connectOptions.ClientConnPtr, nullptr);
}

TEST_F(ConnectTest, IsTracedAtLevelOne) {
    InitTraced(1);
    ASSERT_TRUE(Succeeds(Open()));
    EXPECT_THAT(trace.NewLines(), testing::ElementsAre(InfoLine("PIDMMain", "Queue Manager open"),
                                                       InfoLine("PIDMMain", "Queue open")));
}

TEST_F(ConnectTest, FailureIsReportedAndNothingIsOpenedOrDisconnected) {
    InitTraced(2);
    mq.onConnx.push_back({MQCC_FAILED, 2035});
    EXPECT_TRUE(FailsWith(Open(), ConnectError(2035)));
    EXPECT_EQ(mq.Sequence(), "CONNX");
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(FailedOpenLines({}, 2035)));
}

TEST_F(ConnectTest, WarningCountsAsFailure) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    mq.onConnx.push_back({MQCC_WARNING, 2002});
    EXPECT_TRUE(FailsWith(Open(), ConnectError(2002)));
    EXPECT_EQ(mq.Sequence(), "CONNX");
}

TEST_F(ConnectTest, UnknownQueueManagerIsExplainedBeforeTheError) {
    InitTraced(2);
    mq.onConnx.push_back({MQCC_FAILED, MQRC_Q_MGR_NAME_ERROR});
    EXPECT_TRUE(FailsWith(Open(), ConnectError(2058)));
    EXPECT_THAT(trace.NewLines(),
                ElementsAreArray(FailedOpenLines(
                    {ErrorLine("PIDMMain",
                               "MQA0153: <Queue manager (QM1) connect failed, reason code = 2058 (Queue "
                               "manager name not valid or not known)>")},
                    2058)));
}

TEST_F(ConnectTest, UnavailableQueueManagerIsExplainedBeforeTheError) {
    InitTraced(2);
    mq.onConnx.push_back({MQCC_FAILED, MQRC_Q_MGR_NOT_AVAILABLE});
    EXPECT_TRUE(FailsWith(Open(), ConnectError(2059)));
    EXPECT_THAT(trace.NewLines(),
                ElementsAreArray(FailedOpenLines(
                    {ErrorLine("PIDMMain",
                               "MQA0154: <Queue manager (QM1) connect failed, reason code = 2059 (Queue "
                               "manager not available for connection)>")},
                    2059)));
}

TEST_F(ConnectTest, InvalidChannelContentsAreNotExplained) {
    InitTraced(2);
    mq.onConnx.push_back({MQCC_FAILED, 2277});
    EXPECT_TRUE(FailsWith(Open(), ConnectError(2277)));
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(FailedOpenLines({}, 2277)));
}

TEST_F(ConnectTest, FailureLeavesNoConnectionWhateverMqPutIntoTheHandle) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    mq.onConnx.push_back({MQCC_FAILED, 2059, 55});
    ASSERT_EQ(Open().returnCode, pmrcFailure);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    EXPECT_EQ(mq.Sequence(), "CONNX");
}

TEST_F(ConnectTest, FailureKeepsTheConnectionOfAnEarlierOpen) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    mq.onOpen.push_back({MQCC_FAILED, 2085});
    ASSERT_EQ(Open().returnCode, pmrcFailure);
    mq.onConnx.push_back({MQCC_FAILED, 2059, 55});
    ASSERT_EQ(Open().returnCode, pmrcFailure);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN CONNX DISC");
    EXPECT_EQ(mq.calls.back().connection, 7);
}

TEST_F(ConnectTest, CanBeTriedAgain) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    mq.onConnx.push_back({MQCC_FAILED, 2059});
    ASSERT_EQ(Open().returnCode, pmrcFailure);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(mq.Sequence(), "CONNX CONNX OPEN");
}

}  // namespace
