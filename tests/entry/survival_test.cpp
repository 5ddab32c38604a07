// SPDX-License-Identifier: Apache-2.0

// Tests which state of the module survives Init, Open, Close and Shut. docs/architecture.md lists all of it.
#include <gmock/gmock.h>

#include "tests/support/fake_clock.h"
#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

namespace {

class SurvivalTest : public ModuleFixture {
  protected:
    /// Sends Shut, then Init with the required keywords and `keywords`.
    void ShutAndInit(const std::string& keywords = "") {
        ASSERT_EQ(Shut().returnCode, pmrcOK);
        ASSERT_EQ(Init(std::string(kRequired) + " " + keywords).returnCode, pmrcOK);
    }
};

TEST_F(SurvivalTest, PreserveRestartInfoIsClearedByShut) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -CKFILE ck.dat")));
    ASSERT_TRUE(Succeeds(PutAttribute("PRESERVE_RESTART_INFO", "YES")));
    ShutAndInit("-CKFILE ck.dat");
    ASSERT_EQ(Open().returnCode, pmrcOK);
    ASSERT_EQ(Close().returnCode, pmrcOK);
    EXPECT_FALSE(FileExists("ck.dat"));
}

TEST_F(SurvivalTest, PreserveRestartInfoSurvivesOpenAndClose) {
    InitAndOpen("-CKFILE ck.dat");
    ASSERT_TRUE(Succeeds(PutAttribute("PRESERVE_RESTART_INFO", "YES")));
    ASSERT_EQ(Close().returnCode, pmrcOK);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    ASSERT_EQ(Close().returnCode, pmrcOK);
    EXPECT_TRUE(FileExists("ck.dat"));
}

TEST_F(SurvivalTest, TimeoutSurvivesShutAndInit) {
    FakeClock clock(module);
    InitAndOpen("-RWAIT 10");
    ASSERT_TRUE(Succeeds(PutAttribute("TIMEOUT_SECONDS", "4")));
    ShutAndInit("-RWAIT 10");
    ASSERT_EQ(Open().returnCode, pmrcOK);
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    EXPECT_EQ(mq.calls.back().getOptions.WaitInterval, 2500);
}

TEST_F(SurvivalTest, GenEofIsClearedOnlyByOpen) {
    InitAndOpen();
    ASSERT_TRUE(Succeeds(PutAttribute("GEN_EOF", "")));
    ASSERT_EQ(Read().returnCode, pmrcEOF);
    ASSERT_EQ(Read().returnCode, pmrcEOF);
    ASSERT_EQ(Close().returnCode, pmrcOK);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    mq.PutMessage("record");
    EXPECT_EQ(Read().record, "record");
}

TEST_F(SurvivalTest, PendingCheckpointIsClearedByInit) {
    InitAndOpen("-CKFILE ck.dat");
    ASSERT_EQ(GetPos().returnCode, pmrcOK);
    ShutAndInit("-CKFILE ck.dat");
    ASSERT_EQ(Open().returnCode, pmrcOK);
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    EXPECT_EQ(ReadFile("ck.dat"), "") << "no checkpoint was carried out";
}

TEST_F(SurvivalTest, PendingCheckpointSurvivesCloseAndOpen) {
    InitAndOpen("-CKFILE ck.dat");
    ASSERT_EQ(GetPos().returnCode, pmrcOK);
    ASSERT_EQ(Close().returnCode, pmrcOK);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    std::string atCommit;
    mq.hook = [&](const MqCall& call) {
        if (call.verb == Verb::Cmit) atCommit = ReadFile("ck.dat");
    };
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    const std::string header(4, '\0');  // Open has reset the sequence number to 0
    EXPECT_EQ(atCommit, header + std::string("\6\0\0\0\0\0\0\0", 8) + "record");
}

// After a checkpoint, every later load of the same process saves and commits its records, even if it takes no
// checkpoint itself. Its gets are not under syncpoint until it takes one.
TEST_F(SurvivalTest, TakenCheckpointSurvivesShutAndInit) {
    InitAndOpen("-CKFILE ck.dat");
    ASSERT_EQ(GetPos().returnCode, pmrcOK);
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    ShutAndInit("-CKFILE ck.dat");
    ASSERT_EQ(Open().returnCode, pmrcOK);
    mq.Forget();
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_EQ(mq.calls[0].getOptions.Options, 5);
    EXPECT_EQ(ReadFile("ck.dat"), std::string("\6\0\0\0\0\0\0\0", 8) + "record");
}

TEST_F(SurvivalTest, CheckpointOffsetIsZeroAtFirstAndSurvivesShutAndInit) {
    InitAndOpen("-CKFILE ck.dat");
    EXPECT_EQ(GetPos().position.CkPtOffset, 0);
    for (const char* message : {"first", "second"}) {
        mq.PutMessage(message);
        ASSERT_EQ(Read().returnCode, pmrcOK);
    }
    const std::int64_t offset = 4 + 8 + 5;  // the second record comes after the header and the first record
    ShutAndInit("-CKFILE ck.dat");
    ASSERT_EQ(Open().returnCode, pmrcOK);
    const PositionOutcome outcome = GetPos();
    EXPECT_EQ(outcome.position.CkPtOffset, offset);
    EXPECT_EQ(outcome.position.CkPtSeq, 1) << "Open has set the sequence back";
    EXPECT_EQ(outcome.position.CkPtMsgCount, 0);
}

TEST_F(SurvivalTest, ReleaseMakesEveryLaterOpenOfTheProcessCreateTheCheckpointFile) {
    InitAndOpen("-CKFILE ck.dat");
    ShutAndInit("-CKFILE ck.dat");
    WriteFile("ck.dat", "of another run");
    ASSERT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(ReadFile("ck.dat"), "");
}

TEST_F(SurvivalTest, FirstOpenOfTheProcessKeepsTheCheckpointFile) {
    WriteFile("ck.dat", "of another run");
    InitAndOpen("-CKFILE ck.dat");
    EXPECT_EQ(ReadFile("ck.dat"), "of another run");
}

TEST_F(SurvivalTest, AnInitThatFailsAfterCkfileLeavesNoRecordBufferAndOpenReportsThat) {
    ASSERT_EQ(Init(std::string(kRequired) + " -CKFILE ck.dat -BOGUS").returnCode, pmrcFailure);
    const Outcome outcome = Open();
    EXPECT_TRUE(FailsWith(outcome, ExpectedError("OpenCkPtFile", "memory allocation failed")));
    mq.PutMessage("record");
    EXPECT_EQ(Read().record, "record") << "the queue is open, and a record needs no buffer that is not there";
    EXPECT_EQ(Shut().returnCode, pmrcOK);
}

TEST_F(SurvivalTest, ShutAndInitOpenAWholeNewLoad) {
    for (int life = 0; life < 3; ++life) {
        ASSERT_EQ(Init(std::string(kRequired) + " -CKFILE ck.dat -LOG log.dat").returnCode, pmrcOK);
        ASSERT_EQ(Open().returnCode, pmrcOK);
        mq.PutMessage("first");
        mq.PutMessage("second");
        mq.PutMessage("");
        EXPECT_THAT(ReadAll(), testing::ElementsAre("first", "second"));
        ASSERT_TRUE(Succeeds(Close()));
        ASSERT_TRUE(Succeeds(Shut()));
    }
    EXPECT_EQ(mq.Count(Verb::Connx), 3U);
    EXPECT_EQ(mq.Count(Verb::Disc), 3U);
}

TEST_F(SurvivalTest, SettingsWithADefaultAreResetByInit) {
    InitAndOpen("-RWAIT 3 -BKSZ 100");
    ShutAndInit();
    ASSERT_EQ(Open().returnCode, pmrcOK);
    mq.PutMessage(std::string(101, 'R'));
    EXPECT_EQ(Read().recordLength, 101U);
    EXPECT_EQ(mq.calls.back().getOptions.WaitInterval, 15000);
}

TEST_F(SurvivalTest, NamesOfQueueAndManagerSurviveShutAndInit) {
    InitAndOpen();
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_TRUE(Succeeds(Init("-RWAIT 3"))) << "the names were given before";
    ASSERT_EQ(Open().returnCode, pmrcOK);
    ASSERT_EQ(mq.Count(Verb::Connx), 2U);
    EXPECT_EQ(mq.Calls(Verb::Connx)[1].queueManager.substr(0, 4), std::string("QM1\0", 4));
    EXPECT_STREQ(mq.Calls(Verb::Open)[1].objectDescriptor.ObjectName, "Q1");
}

TEST_F(SurvivalTest, PathsAreReplacedByTheNextInitThatGivesThem) {
    WriteFile("first.parm", "-LOG first.log\n-CKFILE first.ckpt\n");
    WriteFile("second.parm", "-LOG second.log\n-CKFILE second.ckpt\n");
    for (const std::string name : {"first", "second"}) {
        ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -PARMFILE " + name + ".parm")));
        ASSERT_TRUE(Succeeds(PutAttribute("PRESERVE_RESTART_INFO", "YES")));
        ASSERT_EQ(Open().returnCode, pmrcOK);
        EXPECT_TRUE(FileExists(name + ".log"));
        EXPECT_TRUE(FileExists(name + ".ckpt"));
        EXPECT_EQ(FileExists("second.log"), name == "second");
        ASSERT_EQ(Shut().returnCode, pmrcOK);
    }
}

TEST_F(SurvivalTest, TheTraceFileStaysOpenThroughShut) {
    InitTraced(1);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    trace.Skip();
    EXPECT_EQ(Option(99).returnCode, pmrcNotSupported);
    EXPECT_THAT(trace.NewLines(), testing::ElementsAre(InfoLine("PIDMMain", "unsupported request: 99")));
}

TEST_F(SurvivalTest, TheReportOfAnEarlierInitIsPrintedAgain) {
    ASSERT_TRUE(Succeeds(Init("-QMGR EARLIER -QNM Q1")));
    ShutAndInit();
    OutputCapture capture;
    ASSERT_EQ(Open().returnCode, pmrcOK);
    const std::string report = capture.Finish();
    EXPECT_THAT(report, testing::HasSubstr("Queue Manager Name: 'EARLIER'"));
    EXPECT_THAT(report, testing::HasSubstr("Queue Manager Name: 'QM1'"));
}

TEST_F(SurvivalTest, TheMessageCountIsClearedOnlyByOpen) {
    const auto countAtClose = [this] {
        trace.Skip();
        EXPECT_EQ(Close().returnCode, pmrcOK);
        return trace.NewLines().back();
    };
    InitAndOpenTraced(1);
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    const std::string one = InfoLine("PIDMMain", "Messages received via MQGET: 1");
    EXPECT_EQ(countAtClose(), one);
    ShutAndInit("-TRCL 1 trace.txt");
    EXPECT_EQ(countAtClose(), one);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(countAtClose(), InfoLine("PIDMMain", "Messages received via MQGET: 0"));
}

}  // namespace
