// SPDX-License-Identifier: Apache-2.0

// Tests whether Close keeps or deletes the checkpoint file, and whether the reasons for its choice survive
// Close, Shut and Init.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string kPreservingCheckpoint = Info("CloseAll", "Preserving checkpoint file ('ck.dat').");
const std::string kDeletingCheckpoint = Info("CloseAll", "Deleting checkpoint file ('ck.dat').");
const Lines kQueueAndManager = {Info("CloseAll", "closing MQ named Q"),
                                Info("CloseAll", "closing MQ Q Manager")};

class CheckpointClose : public RecoveryFixture {
  protected:
    Lines LinesOfClose() {
        trace.Skip();
        EXPECT_EQ(Close().returnCode, pmrcOK);
        return trace.NewLines();
    }
    Lines LinesOfShut() {
        trace.Skip();
        EXPECT_EQ(Shut().returnCode, pmrcOK);
        return trace.NewLines();
    }
    static Lines Received(int messages) {
        return {Info("PIDMMain", "Messages received via MQGET: " + std::to_string(messages))};
    }
    void InitAgain() {
        ASSERT_EQ(Init("-QMGR QM1 -QNM Q1 -BKSZ 65536 -TRCL 4 trace.txt -CKFILE ck.dat").returnCode, pmrcOK);
    }
};

TEST_F(CheckpointClose, CloseDeletesTheFileByDefault) {
    BeginCheckpointing();
    Deliver({"record"});
    EXPECT_EQ(LinesOfClose(),
              Traced("Close", pmrcOK, {kQueueAndManager, {kDeletingCheckpoint}, Received(1)}));
    EXPECT_FALSE(FileExists(kCkFile));
    EXPECT_EQ(Deletions(kCkFile), 1U);
    EXPECT_EQ(CallsOn(kCkFile)[0], "close ck.dat");
}

TEST_F(CheckpointClose, PreserveRestartInfoYesKeepsTheFile) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    Deliver({"first"});
    TakeCheckpoint();
    Deliver({"second"});
    EXPECT_EQ(LinesOfClose(),
              Traced("Close", pmrcOK, {kQueueAndManager, {kPreservingCheckpoint}, Received(2)}));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first", "second"}));
    EXPECT_EQ(Deletions(kCkFile), 0U);
}

TEST_F(CheckpointClose, PreserveRestartInfoNoDeletesTheFile) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    PreserveRestartInfo("NO");
    EXPECT_THAT(LinesOfClose(), Contains(kDeletingCheckpoint));
    EXPECT_FALSE(FileExists(kCkFile));
}

TEST_F(CheckpointClose, TheChoiceCanBeMadeBeforeOpen) {
    InitAgain();
    PreserveRestartInfo("YES");
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_THAT(LinesOfClose(), Contains(kPreservingCheckpoint));
    EXPECT_TRUE(FileExists(kCkFile));
}

TEST_F(CheckpointClose, WithoutAFileNothingIsNamed) {
    Begin("");
    EXPECT_EQ(LinesOfClose(), Traced("Close", pmrcOK, {kQueueAndManager, Received(0)}));
}

TEST_F(CheckpointClose, LogAndCheckpointFileAreClosedInTheirOrder) {
    BeginCheckpointing("-LOG log.dat");
    EXPECT_EQ(
        LinesOfClose(),
        Traced("Close", pmrcOK,
               {{Info("CloseAll", "closing Log"), Info("CloseLogFile", "Deleting log file ('log.dat').")},
                kQueueAndManager,
                {kDeletingCheckpoint},
                Received(0)}));
}

TEST_F(CheckpointClose, AnotherCloseNamesAKeptFileAgain) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(LinesOfClose(), Traced("Close", pmrcOK, {{kPreservingCheckpoint}, Received(0)}));
    EXPECT_EQ(LinesOfClose(), Traced("Close", pmrcOK, {{kPreservingCheckpoint}, Received(0)}));
    EXPECT_TRUE(FileExists(kCkFile));
}

TEST_F(CheckpointClose, AKeptFileIsDeletedByALaterCloseWhenPreservingWasCleared) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    PreserveRestartInfo("NO");
    EXPECT_EQ(LinesOfClose(), Traced("Close", pmrcOK, {{kDeletingCheckpoint}, Received(0)}));
    EXPECT_FALSE(FileExists(kCkFile));
    EXPECT_EQ(LinesOfClose(), Traced("Close", pmrcOK, {Received(0)}));
}

TEST_F(CheckpointClose, ShutMakesTheSameChoiceAndThenForgetsIt) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    EXPECT_EQ(LinesOfShut(), Traced("Shut", pmrcOK, {kQueueAndManager, {kPreservingCheckpoint}}));
    EXPECT_TRUE(FileExists(kCkFile));
    BeginCheckpointing();
    EXPECT_EQ(LinesOfShut(), Traced("Shut", pmrcOK, {kQueueAndManager, {kDeletingCheckpoint}}));
    EXPECT_FALSE(FileExists(kCkFile));
}

TEST_F(CheckpointClose, ThatAFileWasKeptIsRememberedBeyondShut) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(LinesOfShut(), Traced("Shut", pmrcOK, {{kPreservingCheckpoint}}));
    InitAgain();
    EXPECT_TRUE(FileExists(kCkFile));
    EXPECT_EQ(LinesOfShut(), Traced("Shut", pmrcOK, {{kDeletingCheckpoint}}));
    EXPECT_FALSE(FileExists(kCkFile));
}

TEST_F(CheckpointClose, AFileThatNoLongerExistsIsNotAFailure) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    EXPECT_EQ(Close().returnCode, pmrcOK);
    PreserveRestartInfo("NO");
    ASSERT_EQ(std::remove(kCkFile), 0);
    EXPECT_EQ(LinesOfClose(), Traced("Close", pmrcOK, {{kDeletingCheckpoint}, Received(0)}));
}

TEST_F(CheckpointClose, ADeletionThatCannotBeCarriedOutIsAWarningOnly) {
    BeginCheckpointing();
    FailDeletion(kCkFile, EACCES);
    trace.Skip();
    EXPECT_TRUE(Succeeds(Close()));
    const Lines warning = {Warning("CloseAll", "Unable to delete checkpoint file (ck.dat). Reason '" +
                                                   std::string(std::strerror(EACCES)) + "'")};
    EXPECT_EQ(trace.NewLines(),
              Traced("Close", pmrcOK, {kQueueAndManager, {kDeletingCheckpoint}, warning, Received(0)}));
    EXPECT_TRUE(FileExists(kCkFile));
    EXPECT_EQ(LinesOfClose(), Traced("Close", pmrcOK, {Received(0)})) << "it does not count as kept";
}

TEST_F(CheckpointClose, AFileStaysOpenWhenTheQueueCannotBeClosedAndShutReleasesIt) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    TakeCheckpoint();
    PassOver();
    mq.onClose.push_back({.compCode = MQCC_FAILED, .reason = 2009});
    EXPECT_EQ(Close().returnCode, pmrcFailure);
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
    EXPECT_THAT(trace.NewLines(), Not(Contains(kPreservingCheckpoint)));
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("close ck.dat"));
    EXPECT_THAT(trace.NewLines(), Contains(kPreservingCheckpoint));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1));
}

TEST_F(CheckpointClose, AFileThatAFailedCloseLeftOpenIsReleasedEvenAfterAFailedOpen) {
    for (const char* preserve : {"YES", "NO"}) {
        BeginCheckpointing();
        PreserveRestartInfo(preserve);
        mq.onClose.push_back({.compCode = MQCC_FAILED, .reason = 2009});
        EXPECT_EQ(Close().returnCode, pmrcFailure);
        mq.onConnx.push_back({.compCode = MQCC_FAILED, .reason = 2059});
        EXPECT_EQ(Open().returnCode, pmrcFailure);
        const bool kept = std::string(preserve) == "YES";
        EXPECT_EQ(LinesOfShut(), Traced("Shut", pmrcOK,
                                        {{Info("CloseAll", "closing MQ Q Manager")},
                                         {kept ? kPreservingCheckpoint : kDeletingCheckpoint}}));
        EXPECT_EQ(FileExists(kCkFile), kept);
    }
}

TEST_F(CheckpointClose, AnOpenAfterAFailedCloseFindsTheFileWithItsRecords) {
    BeginCheckpointing();
    Deliver({"first"});
    TakeCheckpoint();
    Deliver({"second"});
    mq.onClose.push_back({.compCode = MQCC_FAILED, .reason = 2009});
    EXPECT_EQ(Close().returnCode, pmrcFailure);
    PassOver();
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_THAT(trace.NewLines(),
                Contains(Info("OpenCkPtFile", "Checkpoint pathname exists, will be used for recovery")));
    EXPECT_EQ(CallsOn(kCkFile).front(), "close ck.dat") << "no stream is left behind";
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first", "second"}));
}

TEST_F(CheckpointClose, AReplayedFileIsKeptOrDeletedLikeAnyOther) {
    BeginReplay(1, {"a", "b"});
    PreserveRestartInfo("YES");
    EXPECT_TRUE(Gives(Read(), "a"));
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"a", "b"}));
}

TEST_F(CheckpointClose, AFileThatALostReplayLeftClosedIsNeitherNamedNorDeleted) {
    BeginReplay(1, {"a", "b"});
    EXPECT_TRUE(Gives(Read(), "a"));
    TakePosition();
    faults->Add({.call = FileCall::Remove, .file = kCkFile, .error = EACCES});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_THAT(LinesOfClose(),
                AllOf(Not(Contains(kDeletingCheckpoint)), Not(Contains(HasSubstr("Preserving")))));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"a", "b"}));
    EXPECT_EQ(ReadFile(TempFile()), CkBytes(2, {"a", "b"}));
}

TEST_F(CheckpointClose, AClosedLoadCanBeRestartedByAnotherProcess) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    Deliver({"zero", "one"});
    const PositionData position = TakePosition();
    Deliver({"two"});
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Shut().returnCode, pmrcOK);

    StartNewProcess();
    BeginCheckpointing();
    EXPECT_EQ(SetPos(position).returnCode, pmrcOK);
    EXPECT_THAT(ReadAll(2), ElementsAre("one", "two"));
}

}  // namespace
