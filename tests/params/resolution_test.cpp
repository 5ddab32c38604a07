// SPDX-License-Identifier: Apache-2.0

// Tests what Init does once all keywords are read: it checks required keywords and those that need each
// other, opens the trace file, and computes the number of attempts to open the queue.
#include <filesystem>

#include "tests/params/params_fixture.h"
#include "tests/support/fault_plan.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

namespace {

const char kMessage133[] =
    "MQA0133: <Specify both channel name (keyword:CHNL) and server name (keyword:SRVR) or neither to default "
    "to "
    "MQSERVER env var.>";

class ResolutionTest : public ParamsFixture {
  protected:
    ExpectedError noQueueManager_ =
        ParametersError("MQA0127: <Queue Manager Name must be specified. Keyword: QMGR <name>>");
    ExpectedError noQueue_ = ParametersError("MQA0128: <Queue Name must be specified. Keyword: QNM <name>>");
    ExpectedError oneOfTwo_ = ParametersError(kMessage133);
};

TEST_F(ResolutionTest, QueueManagerIsRequired) {
    EXPECT_TRUE(FailsWith(Init("-QNM Q1"), noQueueManager_));
}

TEST_F(ResolutionTest, QueueIsRequired) {
    EXPECT_TRUE(FailsWith(Init("-QMGR QM1"), noQueue_));
}

TEST_F(ResolutionTest, MissingQueueManagerIsReportedFirst) {
    EXPECT_TRUE(FailsWith(Init("-MQEX -CHNL C1"), noQueueManager_));
}

TEST_F(ResolutionTest, MissingNamesAreFoundBeforeTheTraceFileIsOpened) {
    EXPECT_TRUE(FailsWith(Init("-QMGR QM1 -TRCL 4 trace.txt"), noQueue_));
    EXPECT_FALSE(FileExists("trace.txt"));
}

TEST_F(ResolutionTest, ChannelWithoutServerFails) {
    EXPECT_TRUE(FailsWith(Init(Required("-CHNL C1")), oneOfTwo_));
}

TEST_F(ResolutionTest, ServerWithoutChannelFails) {
    EXPECT_TRUE(FailsWith(Init(Required("-SRVR HOST")), oneOfTwo_));
}

TEST_F(ResolutionTest, ChannelWithoutServerFailsAfterTheTraceIsOpenedAndBeforeTheReport) {
    EXPECT_TRUE(FailsWith(Init(Required("-TRCL 2 trace.txt -CHNL C1")), oneOfTwo_));
    std::vector<std::string> lines = trace.Lines();
    ASSERT_GE(lines.size(), 6U);
    lines.erase(lines.begin(), lines.begin() + 6);  // the banner
    std::vector<std::string> expected = {"ParseParms(info): Paramters in effect:",
                                         "ParseParms(info): Trace Level: 3"};
    for (const std::string& line : oneOfTwo_.TraceLines())
        expected.push_back(line);
    expected.insert(expected.end(), {"PIDMMain(info): MQGMO structure version: 3",
                                     "PIDMMain(info): Returning to Hostlink, rc=34"});
    EXPECT_THAT(lines, ElementsAreArray(expected));
    EXPECT_THAT(PrintedAtOpen(), Not(HasSubstr("MQA19087")));
}

TEST_F(ResolutionTest, NeitherChannelNorServerIsTracedAndConnectsWithoutAChannel) {
    const std::vector<std::string> lines = TraceOfInit("");
    ASSERT_GE(lines.size(), 6U);
    EXPECT_THAT((std::vector<std::string>{lines.begin(), lines.begin() + 5}),
                ElementsAre("ParseParms(info): Trace Level: 2",
                            "ParseParms(info): Channel Name (keyword:CHNL) was not specified.",
                            "Channel Name used will be that found in environment variable.",
                            "ParseParms(info): Server Name (keyword:SRVR) was not specified.",
                            "Server Name used will be that found in environment variable."));
    EXPECT_EQ(lines[lines.size() - 2], "ParseParms(info): Channel name: ''");
    EXPECT_EQ(lines[lines.size() - 1], "ParseParms(info): Server name: ''");
    ASSERT_TRUE(Succeeds(Open()));
    EXPECT_FALSE(mq.Calls(Verb::Connx).front().hasChannel);
}

TEST_F(ResolutionTest, ChannelAndServerTogetherAreTracedOnlyAfterTheReport) {
    const std::vector<std::string> lines = TraceOfInit("-SRVR host(1414) -CHNL CH.ONE");
    std::vector<std::string> expected = {"ParseParms(info): Trace Level: 2"};
    for (const std::string& line : ExpectedParameters().TraceLines())
        expected.push_back(line);
    expected.insert(expected.end(), {"ParseParms(info): Channel name: 'CH.ONE'",
                                     "ParseParms(info): Server name: 'host(1414)'"});
    EXPECT_THAT(lines, ElementsAreArray(expected));
    EXPECT_THAT(PrintedAtOpen(), Not(HasSubstr("hannel name")));
}

TEST_F(ResolutionTest, Level0WithAPathOpensNoTraceFileAndStillReports) {
    ASSERT_TRUE(Succeeds(Init(Required("-TRCL 0 trace.txt"))));
    EXPECT_FALSE(FileExists("trace.txt"));
    EXPECT_THAT(PrintedAtOpen(), HasSubstr("MQA19087 MQAM Parameters in effect:\n"));
}

TEST_F(ResolutionTest, TraceLevelIsTracedUnchangedBeforeTheFileIsOpenedAndRaisedAfterwards_Kept) {
    LeaveTraceOpen();
    ASSERT_TRUE(Succeeds(Init("-TRCL 2 trace.txt")));
    const std::vector<std::string> lines = trace.NewLines();
    ASSERT_GE(lines.size(), 11U);
    EXPECT_THAT((std::vector<std::string>{lines.begin(), lines.begin() + 3}),
                ElementsAre("CheckParm(info): Keyword: TRCL", "ParseParms(info): Trace Level: 2",
                            "ParseParms(info): Trace being directed to pathname: 'trace.txt'"));
    EXPECT_EQ(lines[9], "ParseParms(info): Paramters in effect:");
    EXPECT_EQ(lines[10], "ParseParms(info): Trace Level: 3");
}

TEST_F(ResolutionTest, TraceFileIsAppendedTo) {
    WriteFile("trace.txt", "from an earlier run\n");
    ASSERT_TRUE(Succeeds(Init(Required("-TRCL 1 trace.txt"))));
    EXPECT_EQ(trace.Lines().front(), "from an earlier run");
    EXPECT_GT(trace.Lines().size(), 20U);
}

TEST_F(ResolutionTest, TraceFileThatCannotBeOpenedFailsWithPathAndReason) {
    EXPECT_TRUE(FailsWith(Init(Required("-TRCL 1 missing/trace.txt")),
                          ParametersError("MQA0132: <Trace file open failed ('missing/trace.txt'). Reason "
                                          "'No such file or directory'>")));
    EXPECT_THAT(PrintedAtOpen(), Not(HasSubstr("MQA19087")));
}

TEST_F(ResolutionTest, TraceFileThatIsADirectoryFails) {
    std::filesystem::create_directory("subdir");
    EXPECT_TRUE(FailsWith(Init(Required("-TRCL 1 subdir")),
                          ParametersError("MQA0132: <Trace file open failed ('subdir'). Reason '" +
                                          ReasonNotOpened("subdir", "a") + "'>")));
}

TEST_F(ResolutionTest, TraceFileOfTheLongestPathFailsWithTheMessageCut) {
    const std::string path(32766, 't');
    const ExpectedError error = ParametersError(Cut("MQA0132: <Trace file open failed ('" + path));
    LeaveTraceOpen();
    EXPECT_TRUE(FailsWith(Init("-TRCL 1 " + path), error));
    std::vector<std::string> expected = {
        "CheckParm(info): Keyword: TRCL", "ParseParms(info): Trace Level: 1",
        "ParseParms(info): " + Cut("Trace being directed to pathname: '" + path)};
    for (const std::string& line : error.TraceLines())
        expected.push_back(line);
    expected.emplace_back("PIDMMain(info): MQGMO structure version: 3");
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(expected)) << "in the earlier file, at the raised level";
}

TEST_F(ResolutionTest, TraceFileThatCannotBeOpenedLeavesTheEarlierOneInUse) {
    LeaveTraceOpen();
    ASSERT_EQ(Init("-TRCL 2 missing/trace.txt").returnCode, pmrcFailure);
    trace.Skip();
    EXPECT_EQ(Write().returnCode, pmrcNotSupported);
    EXPECT_THAT(trace.NewLines(), ElementsAre("PIDMMain(info): entered for option 'Write'",
                                              "PIDMMain(info): Returning to Hostlink, rc=24"));
}

TEST_F(ResolutionTest, TraceFileThatIsOpenedReplacesAndClosesTheEarlierOne) {
    FaultPlan faults(module);
    LeaveTraceOpen();
    ASSERT_TRUE(Succeeds(Init("-TRCL 1 other.txt")));
    EXPECT_THAT(faults.log, Contains("open other.txt a"));
    EXPECT_THAT(faults.log, Contains("close trace.txt"));
    EXPECT_THAT(trace.NewLines(),
                ElementsAre("CheckParm(info): Keyword: TRCL", "ParseParms(info): Trace Level: 1",
                            "ParseParms(info): Trace being directed to pathname: 'other.txt'"));
    EXPECT_THAT(TraceReader("other.txt").Lines(), Contains("ParseParms(info): Paramters in effect:"));
}

TEST_F(ResolutionTest, TerminateOnLogFailureIsOffWithoutALog) {
    ASSERT_TRUE(Succeeds(Init(Required("-TLF yes"))));
    EXPECT_THAT(PrintedAtOpen(), HasSubstr("     .        Logging: none\n     .        Terminate on dup"));
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    EXPECT_EQ(mq.Calls(Verb::Get).front().getOptions.Options & (MQGMO_SYNCPOINT | MQGMO_NO_SYNCPOINT),
              MQGMO_NO_SYNCPOINT);
}

TEST_F(ResolutionTest, TerminateOnLogFailureIsOnWithALog) {
    InitAndOpen("-LOG log.dat");
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    EXPECT_EQ(mq.Calls(Verb::Get).front().getOptions.Options & (MQGMO_SYNCPOINT | MQGMO_NO_SYNCPOINT),
              MQGMO_SYNCPOINT);
}

struct Attempts {
    const char* keywords;
    const char* tenacity;
    const char* waitInterval;
    std::size_t count;
};

TEST_F(ResolutionTest, TenacityBecomesANumberOfOpenAttempts) {
    const Attempts rows[] = {{"", "5", "5", 1},
                             {"-OWAIT 10 -OTENACITY 25", "25", "10", 2},
                             {"-OWAIT 10 -OTENACITY 3", "10", "10", 1},
                             {"-OTENACITY 60", "60", "5", 12},
                             {"-OTENACITY 1 -OWAIT 1", "1", "1", 1},
                             {"-OWAIT 600", "600", "600", 1},
                             {"-OWAIT 1 -OTENACITY 6", "6", "1", 6}};
    for (const Attempts& row : rows) {
        SCOPED_TRACE(row.keywords);
        ExpectedParameters parameters;
        parameters.tenacity = std::string("MQ open retry tenacity: ") + row.tenacity;
        parameters.waitInterval = std::string("MQ open wait interval: ") + row.waitInterval;
        EXPECT_THAT(ReportOfInit(row.keywords), ElementsAreArray(parameters.TraceLines()));
        mq.Forget();
        mq.onOpen.assign(100, MqOutcome{MQCC_FAILED, MQRC_UNKNOWN_OBJECT_NAME, std::nullopt, {}});
        EXPECT_EQ(Open().returnCode, pmrcFailure);
        EXPECT_EQ(mq.Count(Verb::Open), row.count);
        StartOver();
    }
}

}  // namespace
