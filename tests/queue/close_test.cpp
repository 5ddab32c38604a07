// SPDX-License-Identifier: Apache-2.0

// Tests Close and Close/Rewind: what they release and in which order, what they report, and what is left for
// Shut.
#include <gmock/gmock.h>

#include "tests/support/module_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

const ExpectedError kNothingOpen("PIDMMain", "Attempt to close, no Queue Open");
const std::string kQueueLine = InfoLine("CloseAll", "closing MQ named Q");
const std::string kManagerLine = InfoLine("CloseAll", "closing MQ Q Manager");

std::string ReceivedLine(int count) {
    return InfoLine("PIDMMain", "Messages received via MQGET: " + std::to_string(count));
}

ExpectedError CloseError(int reason) {
    return {"CloseAll",
            "MQA0142: <MQCLOSE failed.  QName = Q1. Reason code = " + std::to_string(reason) + ">"};
}

ExpectedError DisconnectError(int reason) {
    return {"CloseAll",
            "MQA0144: <MQDISC failed. QMName = QM1, reason code = " + std::to_string(reason) + ">"};
}

std::vector<std::string> Joined(const std::vector<std::vector<std::string>>& parts) {
    std::vector<std::string> lines;
    for (const auto& part : parts)
        lines.insert(lines.end(), part.begin(), part.end());
    return lines;
}

using CloseTest = ModuleFixture;

TEST_F(CloseTest, ReleasesLogQueueManagerAndCheckpointFileInThisOrder) {
    InitAndOpenTraced(2, "-LOG log.dat -CKFILE ck.dat");
    mq.Forget();
    EXPECT_TRUE(Succeeds(Close()));
    ASSERT_EQ(mq.Sequence(), "CLOSE DISC");
    EXPECT_EQ(mq.calls[0].connection, 7);
    EXPECT_EQ(mq.calls[0].object, 9);
    EXPECT_EQ(mq.calls[0].options, 0);
    EXPECT_EQ(mq.calls[1].connection, 7);
    EXPECT_THAT(
        trace.NewLines(),
        ElementsAre(InfoLine("PIDMMain", "entered for option 'Close'"), InfoLine("CloseAll", "closing Log"),
                    InfoLine("CloseLogFile", "Deleting log file ('log.dat')."), kQueueLine, kManagerLine,
                    InfoLine("CloseAll", "Deleting checkpoint file ('ck.dat')."), ReceivedLine(0),
                    InfoLine("PIDMMain", "Returning to Hostlink, rc=0")));
}

TEST_F(CloseTest, FilesAreStillThereWhenTheQueueIsReleased) {
    InitAndOpen("-LOG log.dat -CKFILE ck.dat");
    std::vector<bool> present;
    mq.hook = [&](const MqCall&) { present = {FileExists("log.dat"), FileExists("ck.dat")}; };
    ASSERT_TRUE(Succeeds(Close()));
    EXPECT_THAT(present, ElementsAre(false, true));
    EXPECT_FALSE(FileExists("ck.dat"));
}

TEST_F(CloseTest, ReportsTheNumberOfRecordsReturnedSinceOpen) {
    InitAndOpenTraced(1);
    for (const char* message : {"one", "two", "three", ""})
        mq.PutMessage(message);
    ReadAll();
    trace.Skip();
    ASSERT_TRUE(Succeeds(Close()));
    EXPECT_THAT(trace.NewLines(), ElementsAre(kQueueLine, kManagerLine, ReceivedLine(3)));
    ASSERT_TRUE(Succeeds(Close()));
    EXPECT_THAT(trace.NewLines(), ElementsAre(ReceivedLine(3))) << "the count is kept";
    ASSERT_TRUE(Succeeds(Open()));
    trace.Skip();
    ASSERT_TRUE(Succeeds(Close()));
    EXPECT_THAT(trace.NewLines(), ElementsAre(kQueueLine, kManagerLine, ReceivedLine(0)));
}

TEST_F(CloseTest, WithoutAnOpenSucceedsAndFindsNothingToRelease) {
    InitTraced(1, "-CKFILE ck.dat -LOG log.dat");
    EXPECT_TRUE(Succeeds(Close()));
    EXPECT_THAT(mq.calls, IsEmpty());
    EXPECT_THAT(trace.NewLines(), ElementsAre(ReceivedLine(0)));
}

TEST_F(CloseTest, WithoutAnOpenMakesTheNextOpenCreateAnEmptyCheckpointFile) {
    WriteFile("ck.dat", "of an earlier run");
    InitTraced(1, "-CKFILE ck.dat");
    ASSERT_TRUE(Succeeds(Close()));
    ASSERT_TRUE(Succeeds(Open()));
    EXPECT_EQ(ReadFile("ck.dat"), "");
    EXPECT_THAT(trace.NewLines(),
                testing::Not(testing::Contains(testing::HasSubstr("exists, will be used for recovery"))));
}

TEST_F(CloseTest, CanBeFollowedByAnotherOpen) {
    InitAndOpen();
    ASSERT_TRUE(Succeeds(Close()));
    ASSERT_TRUE(Succeeds(Open()));
    mq.PutMessage("record");
    EXPECT_EQ(Read().record, "record");
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN CLOSE DISC CONNX OPEN GET");
}

TEST_F(CloseTest, AfterAFailedQueueOpenFailsAndReleasesNothing) {
    InitTraced(1);
    mq.onOpen.push_back({MQCC_FAILED, 2085});
    ASSERT_EQ(Open().returnCode, pmrcFailure);
    mq.Forget();
    trace.Skip();
    EXPECT_TRUE(FailsWith(Close(), kNothingOpen));
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(kNothingOpen.TraceLines()));
    EXPECT_THAT(mq.calls, IsEmpty());
    EXPECT_TRUE(Succeeds(Shut()));
    EXPECT_EQ(mq.Sequence(), "DISC");
}

TEST_F(CloseTest, AfterAQueueOpenThatWarnedFailsAndShutReleasesEverything) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    mq.onOpen.push_back({MQCC_WARNING, 2552});
    ASSERT_EQ(Open().returnCode, pmrcOK);
    mq.Forget();
    EXPECT_TRUE(FailsWith(Close(), kNothingOpen));
    EXPECT_THAT(mq.calls, IsEmpty());
    EXPECT_TRUE(Succeeds(Shut()));
    EXPECT_EQ(mq.Sequence(), "CLOSE DISC");
}

TEST_F(CloseTest, RemembersAFailedQueueOpenThroughShutAndInit) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    mq.onOpen.push_back({MQCC_FAILED, 2085});
    ASSERT_EQ(Open().returnCode, pmrcFailure);
    ASSERT_TRUE(Succeeds(Shut()));
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_TRUE(FailsWith(Close(), kNothingOpen));
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(Close().returnCode, pmrcOK);
}

TEST_F(CloseTest, AfterAFailedConnectDependsOnTheLastQueueOpen) {
    InitAndOpen();
    ASSERT_TRUE(Succeeds(Close()));
    mq.onConnx.push_back({MQCC_FAILED, 2059});
    ASSERT_EQ(Open().returnCode, pmrcFailure);
    mq.Forget();
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_THAT(mq.calls, IsEmpty());
}

TEST_F(CloseTest, RewindWarnsAndClosesNormally) {
    InitAndOpenTraced(2);
    mq.Forget();
    const Outcome outcome = CloseR();
    const ExpectedError warning =
        ExpectedError(
            "PIDMMain",
            "MQA0159: <Close/Rewind mode (pmiPIDMOptCloseR) not supported.  Proceeding with normal close "
            "(pmiPIDMOptClose).>")
            .Warning();
    EXPECT_EQ(outcome.returnCode, pmrcOK);
    EXPECT_TRUE(Carries(outcome, warning));
    EXPECT_EQ(mq.Sequence(), "CLOSE DISC");
    EXPECT_THAT(trace.NewLines(),
                ElementsAreArray(Joined({{InfoLine("PIDMMain", "entered for option 'Close'")},
                                         warning.TraceLines(),
                                         {kQueueLine, kManagerLine, ReceivedLine(0),
                                          InfoLine("PIDMMain", "Returning to Hostlink, rc=0")}})));
}

TEST_F(CloseTest, FailedQueueCloseStopsAndLeavesTheManagerForShut) {
    InitAndOpenTraced(1, "-CKFILE ck.dat");
    mq.Forget();
    mq.onClose.push_back({MQCC_FAILED, 2018});
    EXPECT_TRUE(FailsWith(Close(), CloseError(2018)));
    EXPECT_EQ(mq.Sequence(), "CLOSE");
    EXPECT_THAT(trace.NewLines(),
                ElementsAreArray(Joined({{kQueueLine}, CloseError(2018).TraceLines(), {ReceivedLine(0)}})));
    EXPECT_TRUE(FileExists("ck.dat"));

    EXPECT_TRUE(Succeeds(Shut()));
    EXPECT_EQ(mq.Sequence(), "CLOSE DISC") << "the failed close is not repeated";
    EXPECT_EQ(mq.calls[1].connection, 7);
    EXPECT_FALSE(FileExists("ck.dat"));
}

TEST_F(CloseTest, FailuresReportNamesOf48CharactersInFull) {
    const std::string manager = "M." + std::string(46, 'X');
    const std::string queue = "Q." + std::string(46, 'Y');
    ASSERT_TRUE(Succeeds(Init("-QMGR " + manager + " -QNM " + queue)));
    ASSERT_TRUE(Succeeds(Open()));
    mq.onClose.push_back({MQCC_FAILED, 2018});
    EXPECT_TRUE(FailsWith(Close(), ExpectedError("CloseAll", "MQA0142: <MQCLOSE failed.  QName = " + queue +
                                                                 ". Reason code = 2018>")));
    mq.onDisc.push_back({MQCC_FAILED, 2018});
    EXPECT_TRUE(FailsWith(Close(), ExpectedError("CloseAll", "MQA0144: <MQDISC failed. QMName = " + manager +
                                                                 ", reason code = 2018>")));
}

TEST_F(CloseTest, FailureReportsTheNameThatMqopenPutIntoTheDescriptor) {
    const std::string dynamic = "AMQ." + std::string(44, '1');
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    MqOutcome opened;
    opened.objectName = dynamic;
    mq.onOpen.push_back(opened);
    ASSERT_TRUE(Succeeds(Open()));
    mq.onClose.push_back({MQCC_FAILED, 2018});
    EXPECT_TRUE(FailsWith(Close(), ExpectedError("CloseAll", "MQA0142: <MQCLOSE failed.  QName = " + dynamic +
                                                                 ". Reason code = 2018>")));
}

TEST_F(CloseTest, QueueCloseThatWarnsIsAnErrorToo) {
    InitAndOpen();
    mq.onClose.push_back({MQCC_WARNING, 2458});
    EXPECT_TRUE(FailsWith(Close(), CloseError(2458)));
}

TEST_F(CloseTest, FailedDisconnectStopsBeforeTheCheckpointFileAndIsNotRepeated) {
    InitAndOpenTraced(1, "-CKFILE ck.dat");
    mq.Forget();
    mq.onDisc.push_back({MQCC_FAILED, 2009});
    EXPECT_TRUE(FailsWith(Close(), DisconnectError(2009)));
    EXPECT_THAT(trace.NewLines(),
                ElementsAreArray(Joined(
                    {{kQueueLine, kManagerLine}, DisconnectError(2009).TraceLines(), {ReceivedLine(0)}})));
    EXPECT_TRUE(FileExists("ck.dat"));
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(mq.Sequence(), "CLOSE DISC");
    EXPECT_FALSE(FileExists("ck.dat"));
}

TEST_F(CloseTest, DisconnectThatWarnsStopsWithAWarning) {
    InitAndOpen();
    mq.onDisc.push_back({MQCC_WARNING, 2002});
    EXPECT_TRUE(FailsWith(Close(), DisconnectError(2002).Warning()));
}

}  // namespace
