// SPDX-License-Identifier: Apache-2.0

// Tests the keywords with a name or a path: the longest value that is accepted, and its effect.
#include "tests/params/params_fixture.h"

using testing::Contains;
using testing::ElementsAreArray;

namespace {

constexpr std::size_t kLongestPath = 32766;

class TextTest : public ParamsFixture {
  protected:
    MqCall Connect() {
        static_cast<void>(Open());
        return mq.Calls(Verb::Connx).back();
    }
    /// Returns all characters of a field of MQ, which has no terminator if the name fills it.
    template <std::size_t size>
    static std::string Field(const MQCHAR (&field)[size]) {
        return {field, size};
    }
    static std::string Filled(const std::string& name, std::size_t size) {
        return name + std::string(size - name.size(), '\0');
    }
};

TEST_F(TextTest, QueueManagerOf48CharactersIsAccepted) {
    const std::string name(48, 'M');
    ExpectedParameters parameters;
    parameters.queueManager = "Queue Manager Name: '" + name + "'";
    ASSERT_TRUE(Succeeds(Init("-QNM Q1 -QMGR " + name)));
    EXPECT_EQ(Connect().queueManager, name);
}

TEST_F(TextTest, QueueManagerOf49CharactersIsRejectedAndNotGiven) {
    const std::string name(49, 'M');
    EXPECT_TRUE(FailsWith(Init("-QNM Q1 -QMGR " + name), KeywordError("MQA0118: <Queue Manager (QMGR) " +
                                                                      name + " length: 49 > Max (48)>")));
    StartOver();
    EXPECT_TRUE(
        FailsWith(Init("-QNM Q1"),
                  ParametersError("MQA0127: <Queue Manager Name must be specified. Keyword: QMGR <name>>")));
}

TEST_F(TextTest, QueueOf48CharactersIsAccepted) {
    const std::string name(48, 'q');
    ASSERT_TRUE(Succeeds(Init("-QMGR QM1 -QNM " + name)));
    ASSERT_TRUE(Succeeds(Open()));
    EXPECT_EQ(Field(mq.Calls(Verb::Open).back().objectDescriptor.ObjectName), name);
}

TEST_F(TextTest, QueueOf49CharactersIsRejectedAndNotGiven) {
    const std::string name(49, 'q');
    EXPECT_TRUE(FailsWith(Init("-QMGR QM1 -QNM " + name),
                          KeywordError("MQA0119: <Queue Name (QNM) " + name + " length: 49 > Max (48)>")));
    StartOver();
    EXPECT_TRUE(FailsWith(Init("-QMGR QM1"),
                          ParametersError("MQA0128: <Queue Name must be specified. Keyword: QNM <name>>")));
}

TEST_F(TextTest, ServerAndChannelThatFillTheirFieldsAreStoredWithoutATerminator) {
    const std::string server(264, 's');
    const std::string channel(20, 'c');
    const std::vector<std::string> lines = TraceOfInit("-SRVR " + server + " -CHNL " + channel);
    EXPECT_THAT(lines, Contains("ParseParms(info): Channel name: '" + channel + "'"));
    EXPECT_THAT(lines, Contains("ParseParms(info): Server name: '" + server + "'"));
    const MqCall connect = Connect();
    ASSERT_TRUE(connect.hasChannel);
    EXPECT_EQ(Field(connect.channel.ConnectionName), server);
    EXPECT_EQ(Field(connect.channel.ChannelName), channel);
}

TEST_F(TextTest, ServerAndChannelFieldsAreZeroFilledAfterAShorterName) {
    ASSERT_TRUE(Succeeds(Init(Required("-SRVR " + std::string(264, 's') + " -CHNL " + std::string(20, 'c') +
                                       " -SRVR host(1414) -CHNL C1"))));
    const MqCall connect = Connect();
    ASSERT_TRUE(connect.hasChannel);
    EXPECT_EQ(Field(connect.channel.ConnectionName), Filled("host(1414)", 264));
    EXPECT_EQ(Field(connect.channel.ChannelName), Filled("C1", 20));
}

TEST_F(TextTest, ServerOf265CharactersIsRejected) {
    const std::string name(265, 's');
    EXPECT_TRUE(FailsWith(Init(Required("-SRVR " + name)), KeywordError("MQA0120: <Server Name (SRVR) " +
                                                                        name + " length: 265 > Max (264)>")));
}

TEST_F(TextTest, ChannelOf21CharactersIsRejected) {
    const std::string name(21, 'c');
    EXPECT_TRUE(FailsWith(Init(Required("-CHNL " + name)),
                          KeywordError("MQA0121: <Channel Name (CHNL) " + name + " length: 21 > Max (20)>")));
}

TEST_F(TextTest, RejectedServerAndChannelAreNotGiven) {
    ASSERT_EQ(Init(Required("-CHNL " + std::string(21, 'c'))).returnCode, pmrcFailure);
    StartOver();
    ASSERT_EQ(Init(Required("-SRVR " + std::string(265, 's'))).returnCode, pmrcFailure);
    StartOver();
    EXPECT_TRUE(Succeeds(Init(kRequired)));
}

TEST_F(TextTest, LogOfTheLongestPathIsAccepted) {
    const std::string path(kLongestPath, 'l');
    ExpectedParameters parameters;
    parameters.logging = {Cut("Logging pathname: '" + path), "Terminate on Log failure: yes"};
    EXPECT_THAT(ReportOfInit("-LOG " + path), ElementsAreArray(parameters.TraceLines()));
}

TEST_F(TextTest, LogOfALongerPathIsRejected) {
    const std::string path(kLongestPath + 1, 'l');
    EXPECT_TRUE(
        FailsWith(Init(Required("-LOG " + path)), KeywordError(Cut("MQA0110: <Log (LOG) pathname " + path))));
}

TEST_F(TextTest, CheckpointOfTheLongestPathIsAccepted) {
    const std::string path(kLongestPath, 'k');
    ExpectedParameters parameters;
    parameters.checkpoint = Cut("Checkpoint: File-based to pathname " + path);
    EXPECT_THAT(ReportOfInit("-CKFILE " + path), ElementsAreArray(parameters.TraceLines()));
}

TEST_F(TextTest, CheckpointOfALongerPathIsRejected) {
    const std::string path(kLongestPath + 1, 'k');
    EXPECT_TRUE(FailsWith(Init(Required("-CKFILE " + path)),
                          KeywordError(Cut("MQA0117: <Checkpoint (CKFILE) pathname " + path))));
}

TEST_F(TextTest, PathKeepsItsCase) {
    ExpectedParameters parameters;
    parameters.checkpoint = "Checkpoint: File-based to pathname MixedCase.Dat";
    parameters.logging = {"Logging pathname: 'OtherCase.Log'", "Terminate on Log failure: yes"};
    EXPECT_THAT(ReportOfInit("-CKFILE MixedCase.Dat -LOG OtherCase.Log"),
                ElementsAreArray(parameters.TraceLines()));
}

}  // namespace
