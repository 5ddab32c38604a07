// What of the dispatcher's state and the attributes survives Init, Open, Close and Shut.
#include <gmock/gmock.h>

#include "tests/support/fake_clock.h"
#include "tests/support/module_fixture.h"

namespace {

class SurvivalTest : public ModuleFixture {
  protected:
    void StartNewLife(const std::string& keywords = "") {
        ASSERT_EQ(Shut().returnCode, pmrcOK);
        ASSERT_EQ(Init(std::string(kRequired) + " " + keywords).returnCode, pmrcOK);
    }
};

TEST_F(SurvivalTest, PreserveRestartInfoIsClearedByShut) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -CKFILE ck.dat")));
    ASSERT_TRUE(Succeeds(PutAttribute("PRESERVE_RESTART_INFO", "YES")));
    StartNewLife("-CKFILE ck.dat");
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
    StartNewLife("-RWAIT 10");
    ASSERT_EQ(Open().returnCode, pmrcOK);
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    EXPECT_EQ(mq.calls.back().getOptions.WaitInterval, 2500);
}

TEST_F(SurvivalTest, GenEofIsClearedByOpenAlone) {
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
    StartNewLife("-CKFILE ck.dat");
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
    const std::string header(4, '\0');  // Open has set the sequence back to 0
    EXPECT_EQ(atCommit, header + std::string("\6\0\0\0\0\0\0\0", 8) + "record");
}

// Once a checkpoint has been completed every later load of the process saves and commits, also without one of
// its own; its gets are not under syncpoint until then.
TEST_F(SurvivalTest, TakenCheckpointSurvivesShutAndInit) {
    InitAndOpen("-CKFILE ck.dat");
    ASSERT_EQ(GetPos().returnCode, pmrcOK);
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    StartNewLife("-CKFILE ck.dat");
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
    const std::int64_t offset = 4 + 8 + 5;  // the second record follows header and first
    StartNewLife("-CKFILE ck.dat");
    ASSERT_EQ(Open().returnCode, pmrcOK);
    const PositionOutcome outcome = GetPos();
    EXPECT_EQ(outcome.position.CkPtOffset, offset);
    EXPECT_EQ(outcome.position.CkPtSeq, 1) << "Open has set the sequence back";
    EXPECT_EQ(outcome.position.CkPtMsgCount, 0);
}

TEST_F(SurvivalTest, ReleaseMakesEveryLaterOpenOfTheProcessCreateTheCheckpointFile) {
    InitAndOpen("-CKFILE ck.dat");
    StartNewLife("-CKFILE ck.dat");
    WriteFile("ck.dat", "of another run");
    ASSERT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(ReadFile("ck.dat"), "");
}

TEST_F(SurvivalTest, FirstOpenOfTheProcessKeepsTheCheckpointFile) {
    WriteFile("ck.dat", "of another run");
    InitAndOpen("-CKFILE ck.dat");
    EXPECT_EQ(ReadFile("ck.dat"), "of another run");
}

TEST_F(SurvivalTest, AFailedInitBehindCkfileLeavesNoRecordBufferAndOpenSaysSo) {
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

}  // namespace
