// SPDX-License-Identifier: Apache-2.0

// Tests whether Open creates the checkpoint file, keeps it for recovery or empties it, and which failures end
// the request.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr char kOpenCkPtFile[] = "OpenCkPtFile";
constexpr char kKeywords[] = "-QMGR QM1 -QNM Q1 -BKSZ 1000 -TRCL 4 trace.txt -CKFILE ck.dat";
const std::string kVia = Info(kOpenCkPtFile, "Checkpoint/restart via pathname: 'ck.dat'");
const std::string kExists = Info(kOpenCkPtFile, "Checkpoint pathname exists, will be used for recovery");
const std::string kOpened = Info(kOpenCkPtFile, "Checkpoint file ('ck.dat') open successful");

class CheckpointOpen : public RecoveryFixture {
  protected:
    void InitWithCheckpoint(const std::string& keywords = kKeywords) {
        ASSERT_EQ(Init(keywords).returnCode, pmrcOK);
        PassOver();
    }
    static Lines Opened(const Lines& checkpoint) {
        return Traced("Open", pmrcOK,
                      {{Info("PIDMMain", "Queue Manager open"), Info("PIDMMain", "Queue open")}, checkpoint});
    }
    static ExpectedError OpenFailed(int error, const std::string& path = kCkFile) {
        return {kOpenCkPtFile, "MQA0137: <Checkpoint file (" + path + ") open failed. Reason '" +
                                   std::strerror(error) + "'>"};
    }
    static Lines NotOpened(const Lines& before, const ExpectedError& error) {
        return Traced("Open", pmrcFailure,
                      {{Info("PIDMMain", "Queue Manager open"), Info("PIDMMain", "Queue open"), kVia},
                       before,
                       error.TraceLines()});
    }
};

TEST_F(CheckpointOpen, AMissingFileIsCreatedEmpty) {
    InitWithCheckpoint();
    EXPECT_TRUE(Succeeds(Open()));
    EXPECT_EQ(trace.NewLines(), Opened({kVia, kOpened}));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("open ck.dat rb", "open ck.dat wb+"));
    EXPECT_EQ(ReadFile(kCkFile), "");
}

TEST_F(CheckpointOpen, AFileThatExistsIsKeptForRecovery) {
    WriteFile(kCkFile, CkBytes(5, {"kept"}));
    InitWithCheckpoint();
    EXPECT_TRUE(Succeeds(Open()));
    EXPECT_EQ(trace.NewLines(), Opened({kVia, kExists, kOpened}));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("open ck.dat rb", "close ck.dat", "open ck.dat rb+"));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(5, {"kept"}));
    Deliver({"read without a checkpoint"});
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(5, {"kept"}));
}

TEST_F(CheckpointOpen, WithoutTheKeywordThereIsNoCheckpointFile) {
    Begin("");
    Deliver({"record"});
    EXPECT_THAT(faults->LogWithout("trace.txt"), ElementsAre());
    EXPECT_THAT(trace.Text(), Not(HasSubstr("OpenCkPtFile")));
}

TEST_F(CheckpointOpen, TheFileIsOpenedAfterTheQueue) {
    InitWithCheckpoint();
    bool existedAtOpen = true;
    mq.hook = [&](const MqCall& call) {
        if (call.verb == Verb::Open) existedAtOpen = FileExists(kCkFile);
    };
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_FALSE(existedAtOpen);
    EXPECT_TRUE(FileExists(kCkFile));
}

TEST_F(CheckpointOpen, ThePathOfTheFileIsTracedAtAnyLevelAndItsOpeningAtLevel1) {
    InitWithCheckpoint("-QMGR QM1 -QNM Q1 -TRCL 1 trace.txt");
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    // The trace file stays in use although the level is now 0.
    WriteFile(kCkFile, CkBytes(1));
    InitWithCheckpoint("-QMGR QM1 -QNM Q1 -CKFILE ck.dat");
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(trace.NewLines(), Lines({kVia}));
}

TEST_F(CheckpointOpen, ThatTheFileExistsIsTracedAtAnyLevelToo) {
    WriteFile(kCkFile, CkBytes(1));
    InitWithCheckpoint();
    // The second Init is refused, but it sets the trace level to 0.
    EXPECT_EQ(Init(kKeywords).returnCode, pmrcFailure);
    trace.Skip();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(trace.NewLines(), Lines({kVia, kExists}));
}

TEST_F(CheckpointOpen, AtLevel1ItsOpeningIsTracedToo) {
    InitWithCheckpoint("-QMGR QM1 -QNM Q1 -BKSZ 1000 -TRCL 1 trace.txt -CKFILE ck.dat");
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(trace.NewLines(),
              Lines({Info("PIDMMain", "Queue Manager open"), Info("PIDMMain", "Queue open"), kVia, kOpened}));
}

TEST_F(CheckpointOpen, AnOpenFailedByTheFileStillResetsTheSequence) {
    InitWithCheckpoint();
    TakePosition();
    EXPECT_EQ(GetPos().returnCode, pmrcFailure) << "there is no file to rewrite";
    faults->Add({.call = FileCall::Open, .file = kCkFile, .error = EACCES});
    EXPECT_EQ(Open().returnCode, pmrcFailure);
    EXPECT_TRUE(Is(TakePosition(), 1, 0, 0));
}

TEST_F(CheckpointOpen, AMissingDirectoryFailsTheOpen) {
    InitWithCheckpoint("-QMGR QM1 -QNM Q1 -BKSZ 1000 -TRCL 4 trace.txt -CKFILE nowhere/ck.dat");
    EXPECT_TRUE(FailsWith(Open(), OpenFailed(ENOENT, "nowhere/ck.dat")));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("open nowhere/ck.dat rb", "open nowhere/ck.dat wb+"));
}

TEST_F(CheckpointOpen, AFileThatCannotBeProbedFailsTheOpenAndIsNotChanged) {
    WriteFile(kCkFile, CkBytes(5, {"kept"}));
    InitWithCheckpoint();
    faults->Add({.call = FileCall::Open, .file = kCkFile, .error = EACCES});
    EXPECT_TRUE(FailsWith(Open(), OpenFailed(EACCES)));
    EXPECT_EQ(trace.NewLines(), NotOpened({}, OpenFailed(EACCES)));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("open ck.dat rb"));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(5, {"kept"}));
}

TEST_F(CheckpointOpen, AFileThatCannotBeCreatedFailsTheOpen) {
    InitWithCheckpoint();
    faults->Add({.call = FileCall::Open, .file = kCkFile, .nth = 2, .error = ENOSPC});
    EXPECT_TRUE(FailsWith(Open(), OpenFailed(ENOSPC)));
    EXPECT_EQ(trace.NewLines(), NotOpened({}, OpenFailed(ENOSPC)));
}

TEST_F(CheckpointOpen, AFileThatCannotBeUpdatedFailsTheOpen) {
    WriteFile(kCkFile, CkBytes(5, {"kept"}));
    InitWithCheckpoint();
    faults->Add({.call = FileCall::Open, .file = kCkFile, .nth = 2, .error = EACCES});
    EXPECT_TRUE(FailsWith(Open(), OpenFailed(EACCES)));
    EXPECT_EQ(trace.NewLines(), NotOpened({kExists}, OpenFailed(EACCES)));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(5, {"kept"}));
}

TEST_F(CheckpointOpen, AnOpenFailedByTheFileLeavesTheQueueOpenAndReturnsTheRecordSize) {
    InitWithCheckpoint();
    faults->Add({.call = FileCall::Open, .file = kCkFile, .error = EACCES});
    const Outcome open = Open();
    EXPECT_EQ(open.returnCode, pmrcFailure);
    EXPECT_EQ(open.data.substr(44, 14), std::string("\0\0\xE8\x03\0\0\0\0\0\0\0\0\0\0", 14));
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN");
    PassOver();
    EXPECT_TRUE(FailsWith(Open(), ExpectedError("PIDMMain", "Access Module limited to 1 open Queue")));
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(mq.Sequence(), "CLOSE DISC");
}

TEST_F(CheckpointOpen, AfterACloseTheFileIsEmptiedAlthoughItWasKept) {
    WriteFile(kCkFile, CkBytes(5, {"kept"}));
    InitWithCheckpoint();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(5, {"kept"}));
    PassOver();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(trace.NewLines(), Opened({kVia, kOpened}));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("open ck.dat wb+"));
    EXPECT_EQ(ReadFile(kCkFile), "");
}

TEST_F(CheckpointOpen, ACloseBeforeAnyOpenAlsoMakesTheNextOpenEmptyTheFile) {
    WriteFile(kCkFile, CkBytes(5, {"kept"}));
    InitWithCheckpoint();
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(5, {"kept"}));
    PassOver();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("open ck.dat wb+"));
    EXPECT_EQ(ReadFile(kCkFile), "");
}

TEST_F(CheckpointOpen, ThatTheFileIsEmptiedSurvivesShutAndInit) {
    WriteFile(kCkFile, CkBytes(5, {"kept"}));
    InitWithCheckpoint();
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    InitWithCheckpoint();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_THAT(trace.NewLines(), Not(Contains(kExists)));
    EXPECT_EQ(ReadFile(kCkFile), "");
}

TEST_F(CheckpointOpen, ACloseThatFailedAtTheQueueDoesNotMakeTheNextOpenEmptyTheFile) {
    InitWithCheckpoint();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    TakeCheckpoint();
    mq.onClose.push_back({.compCode = MQCC_FAILED, .reason = 2009});
    EXPECT_EQ(Close().returnCode, pmrcFailure);
    PassOver();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(trace.NewLines(), Opened({kVia, kExists, kOpened}));
    EXPECT_THAT(CallsOn(kCkFile),
                ElementsAre("close ck.dat", "open ck.dat rb", "close ck.dat", "open ck.dat rb+"));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1));
}

TEST_F(CheckpointOpen, ACloseThatFailedAtTheQueueManagerDoesNotMakeTheNextOpenEmptyTheFileEither) {
    InitWithCheckpoint();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    TakeCheckpoint();
    mq.onDisc.push_back({.compCode = MQCC_WARNING, .reason = 2009});
    EXPECT_EQ(Close().returnCode, pmrcFailure);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1));
}

TEST_F(CheckpointOpen, OpenForgetsTheLastRecord) {
    InitWithCheckpoint();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    Deliver({"record"});
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1));
}

TEST_F(CheckpointOpen, OpenFillsTheLastRecordWithZeros) {
    InitWithCheckpoint();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    Deliver({std::string(1000, 'x')});
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    PassOver();
    mq.PutMessage(std::string(1000, '\0'), 1);
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_THAT(trace.NewLines(), Contains(Warning("PIDMMain", "Message identical to previous.")));
}

TEST_F(CheckpointOpen, AfterAnInitThatFailedThereIsNoRoomForTheLastRecord) {
    EXPECT_EQ(Init(std::string(kKeywords) + " -SRVR host").returnCode, pmrcFailure);
    PassOver();
    const ExpectedError error(kOpenCkPtFile, "memory allocation failed");
    EXPECT_TRUE(FailsWith(Open(), error));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
    // All later requests must return although there is no record buffer.
    EXPECT_EQ(GetPos().returnCode, pmrcOK);
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcFailure);
    mq.PutMessage("record", 1);
    EXPECT_NE(Read().returnCode, pmrcEOF);
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Shut().returnCode, pmrcOK);
}

TEST_F(CheckpointOpen, CheckpointsByMqAreNotToBeHad) {
    EXPECT_TRUE(FailsWith(Init("-QMGR QM1 -QNM Q1 -CKMQ"),
                          ExpectedError("CheckParm", "MQA0100: <Error: unidentified keyword: 'CKMQ'>")));
}

}  // namespace
