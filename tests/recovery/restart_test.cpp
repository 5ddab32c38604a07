// SPDX-License-Identifier: Apache-2.0

// Tests SetPos after a restart: which record comes first, what is counted, and which positions are refused.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr char kMain[] = "PIDMMain";
const Lines kRewinding = {Info("RepositionFile", "Backing out via rewind of checkpoint file")};
const Lines kEof = {Info("ReadFromChkPt", "EOF on Checkpoint file")};

Lines Requested(int sequence) {
    return {Info(kMain, "Reposition requested. Requested sequence: " + std::to_string(sequence))};
}

Lines FileSequence(int sequence) {
    return {Info("RepositionFile", "Checkpoint file sequence: " + std::to_string(sequence))};
}

Lines SeekingTo(int sequence, int offset) {
    return {Info(kMain, "Repositioning file to sequence: " + std::to_string(sequence)),
            Info(kMain, "CkPtOffset: " + std::to_string(offset))};
}

Lines RecordLength(int length) {
    return {Info("ReadFromChkPt", "Checkpoint record length: " + std::to_string(length))};
}

Lines Begins(int length, const std::string& text) {
    return {Info(kMain, "message length: " + std::to_string(length) + ", begins: " + text)};
}

class Restart : public RecoveryFixture {
  protected:
    /// Sends Init and Open when a checkpoint file with these bytes exists, as after a failed run.
    void BeginWithFile(const std::string& bytes, const std::string& keywords = "") {
        WriteFile(kCkFile, bytes);
        BeginCheckpointing(keywords);
    }
    /// Checks that the next Reads get messages from the queue with the syncpoint option `sync`. The default
    /// is the one that SetPos chooses before it reads the file.
    void ExpectTheQueueIsReadNext(MQLONG sync = MQGMO_SYNCPOINT) {
        PassOver();
        Deliver({"from the queue", "likewise"});
        EXPECT_EQ(mq.Sequence(), "GET GET");
        for (const MqCall& get : mq.calls)
            EXPECT_EQ(get.getOptions.Options, sync + MQGMO_WAIT);
    }
};

TEST_F(Restart, TheSequenceOfTheFileStartsWithTheRecordAfterTheHeader) {
    BeginWithFile(CkBytes(3, {"last", "next"}));
    EXPECT_TRUE(Succeeds(SetPos({3, 10, 999})));
    EXPECT_EQ(trace.NewLines(), Traced("SetPos", pmrcOK, {Requested(3), kRewinding, FileSequence(3)}));
    EXPECT_TRUE(Gives(Read(), "last"));
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK, {RecordLength(4), Begins(4, "last")}));
    EXPECT_TRUE(Is(TakePosition(), 4, 10, 4));
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(Restart, AFileOneCheckpointOlderStartsAtTheOffsetOfThePosition) {
    BeginWithFile(CkBytes(2, {"first", "last", "next"}));
    EXPECT_TRUE(Succeeds(SetPos({3, 10, 4 + 13})));
    EXPECT_EQ(trace.NewLines(),
              Traced("SetPos", pmrcOK, {Requested(3), kRewinding, FileSequence(2), SeekingTo(3, 17)}));
    EXPECT_TRUE(Gives(Read(), "last"));
    EXPECT_TRUE(Gives(Read(), "next"));
    EXPECT_TRUE(Is(TakePosition(), 3, 11, 17 + 12));
}

TEST_F(Restart, APositionBeforeTheFileIsRefused) {
    BeginWithFile(CkBytes(4, {"last"}));
    const ExpectedError error(kMain, "requested sequence prior to checkpoint file");
    EXPECT_TRUE(FailsWith(SetPos({3, 10, 17}), error));
    EXPECT_EQ(trace.NewLines(),
              Traced("SetPos", pmrcFailure, {Requested(3), kRewinding, FileSequence(4), error.TraceLines()}));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(4, {"last"}));
    ExpectTheQueueIsReadNext();
}

TEST_F(Restart, ARefusedPositionHasMovedSequenceAndCount) {
    BeginWithFile(CkBytes(4, {"last"}));
    EXPECT_EQ(SetPos({3, 10, 17}).returnCode, pmrcFailure);
    EXPECT_TRUE(Is(TakePosition(), 5, 9, 0));
}

class PositionLength : public Restart, public testing::WithParamInterface<std::size_t> {};

TEST_P(PositionLength, PositionDataOfAnotherLengthAreRefused) {
    BeginWithFile(CkBytes(1, {"last"}));
    const ExpectedError error(kMain, "incorrect position data length");
    EXPECT_TRUE(FailsWith(SetPosBytes(std::string(GetParam(), '\1')), error));
    EXPECT_EQ(trace.NewLines(), Traced("SetPos", pmrcFailure, {error.TraceLines()}));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
    ExpectTheQueueIsReadNext(MQGMO_NO_SYNCPOINT);
    EXPECT_TRUE(Is(TakePosition(), 1, 2, 0));
}

INSTANTIATE_TEST_SUITE_P(Bytes, PositionLength, testing::Values(0, 1, 15, 17, 32));

TEST_F(Restart, SetPosBeforeInitFails) {
    EXPECT_TRUE(FailsWith(SetPos({1, 0, 0}), ExpectedError(kMain, "not initialized").Calling("SetPos")));
}

TEST_F(Restart, SetPosWithoutCheckpointingFails) {
    Begin("");
    const ExpectedError error(kMain, "Checkpoint support NOT requested");
    EXPECT_TRUE(FailsWith(SetPos({1, 0, 0}), error));
    EXPECT_EQ(trace.NewLines(), Traced("SetPos", pmrcFailure, {error.TraceLines()}));
    EXPECT_TRUE(FailsWith(SetPosBytes("short"), error));
    ExpectTheQueueIsReadNext(MQGMO_NO_SYNCPOINT);
}

TEST_F(Restart, SetPosBeforeOpenFindsNoFile) {
    WriteFile(kCkFile, CkBytes(1, {"last"}));
    ASSERT_EQ(Init("-QMGR QM1 -QNM Q1 -CKFILE ck.dat -TRCL 4 trace.txt").returnCode, pmrcOK);
    PassOver();
    const ExpectedError error("RepositionFile", "empty checkpoint file");
    EXPECT_TRUE(FailsWith(SetPos({1, 0, 0}), error));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"last"}));
}

TEST_F(Restart, ACountOf0StaysAt0) {
    BeginWithFile(CkBytes(1, {"last"}));
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
    EXPECT_TRUE(Is(TakePosition(), 2, 0, 0));
}

TEST_F(Restart, ACountOf1IsLoweredTo0) {
    BeginWithFile(CkBytes(1, {"last"}));
    EXPECT_EQ(SetPos({1, 1, 0}).returnCode, pmrcOK);
    EXPECT_TRUE(Is(TakePosition(), 2, 0, 0));
}

TEST_F(Restart, ACountBelow0IsLoweredAsWell) {
    BeginWithFile(CkBytes(1, {"last"}));
    EXPECT_EQ(SetPos({1, -1, 0}).returnCode, pmrcOK);
    EXPECT_TRUE(Is(TakePosition(), 2, -2, 0));
}

TEST_F(Restart, TheReadThatMeetsTheEndOfTheFileGoesOnToTheQueue) {
    BeginReplay(1, {"last"});
    EXPECT_TRUE(Gives(Read(), "last"));
    PassOver();
    mq.PutMessage("new");
    EXPECT_TRUE(Gives(Read(), "new"));
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK, {kEof, Begins(3, "new")}));
    EXPECT_EQ(mq.Sequence(), "GET");
    EXPECT_EQ(mq.calls[0].getOptions.Options, MQGMO_SYNCPOINT + MQGMO_WAIT);
    PassOver();
    Deliver({"newer"});
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK, {Begins(5, "newer")}));
    EXPECT_EQ(mq.calls[0].getOptions.Options, MQGMO_SYNCPOINT + MQGMO_WAIT);
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"last"})) << "no checkpoint was taken by this process";
}

TEST_F(Restart, AFileWithOnlyTheHeaderReplaysNothing) {
    BeginReplay(6, {});
    mq.PutMessage("new");
    EXPECT_TRUE(Gives(Read(), "new"));
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK, {kEof, Begins(3, "new")}));
}

TEST_F(Restart, AnEmptyFileCannotBeRestartedFrom) {
    BeginWithFile("");
    const ExpectedError error("RepositionFile", "empty checkpoint file");
    EXPECT_TRUE(FailsWith(SetPos({1, 0, 0}), error));
    EXPECT_EQ(
        trace.NewLines(),
        Traced("SetPos", pmrcFailure,
               {Requested(1), kRewinding, {Error("RepositionFile", ShortRead(4, 0))}, error.TraceLines()}));
    ExpectTheQueueIsReadNext();
}

TEST_F(Restart, AFileThatOpenCreatedCannotBeRestartedFrom) {
    BeginCheckpointing();
    EXPECT_TRUE(FailsWith(SetPos({1, 0, 0}), ExpectedError("RepositionFile", "empty checkpoint file")));
}

class TornHeader : public Restart, public testing::WithParamInterface<std::size_t> {};

TEST_P(TornHeader, ATornHeaderCannotBeRestartedFrom) {
    BeginWithFile(CkBytes(1).substr(0, GetParam()));
    const ExpectedError error = ExpectedError("RepositionFile", "checkpoint sequence")
                                    .Calling("fread")
                                    .Processing("Checkpoint", "Undefined");
    EXPECT_TRUE(FailsWith(SetPos({1, 0, 0}), error));
    const Lines counts = {Error("RepositionFile", ShortRead(4, static_cast<std::int64_t>(GetParam())))};
    EXPECT_EQ(trace.NewLines(),
              Traced("SetPos", pmrcFailure, {Requested(1), kRewinding, counts, error.TraceLines()}));
    ExpectTheQueueIsReadNext();
}

INSTANTIATE_TEST_SUITE_P(Bytes, TornHeader, testing::Range<std::size_t>(1, 4));

TEST_F(Restart, AHeaderReadInPartFailsWithTheReason) {
    BeginWithFile(CkBytes(1, {"last"}));
    faults->Add({.call = FileCall::Read, .file = kCkFile, .error = EIO, .transferred = 2});
    EXPECT_TRUE(FailsWith(SetPos({1, 0, 0}), ExpectedError("RepositionFile", "checkpoint sequence")
                                                 .Calling("fread")
                                                 .Processing("Checkpoint", std::strerror(EIO))));
}

TEST_F(Restart, AHeaderOfWhichNothingCanBeReadCountsAsAnEmptyFile) {
    BeginWithFile(CkBytes(1, {"last"}));
    faults->Add({.call = FileCall::Read, .file = kCkFile, .error = EIO});
    EXPECT_TRUE(FailsWith(SetPos({1, 0, 0}), ExpectedError("RepositionFile", "empty checkpoint file")));
}

TEST_F(Restart, AFailedSetPosCanBeRepeated) {
    BeginWithFile(CkBytes(1, {"last"}));
    faults->Add({.call = FileCall::Read, .file = kCkFile, .error = EIO});
    EXPECT_EQ(SetPos({1, 5, 0}).returnCode, pmrcFailure);
    EXPECT_EQ(SetPos({1, 5, 0}).returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "last"));
}

TEST_F(Restart, APositionThatCannotBeSoughtIsRefused) {
    BeginWithFile(CkBytes(1, {"last"}));
    faults->Add({.call = FileCall::Seek, .file = kCkFile, .error = EIO});
    const ExpectedError error =
        ExpectedError(kMain, "reposition").Calling("fsetpos").Processing("Checkpoint", std::strerror(EIO));
    EXPECT_TRUE(FailsWith(SetPos({2, 5, 4}), error));
    EXPECT_EQ(trace.NewLines(),
              Traced("SetPos", pmrcFailure,
                     {Requested(2), kRewinding, FileSequence(1), SeekingTo(2, 4), error.TraceLines()}));
    ExpectTheQueueIsReadNext();
    EXPECT_TRUE(Is(TakePosition(), 2, 6, 4)) << "the sequence is that of the file, the offset the host's";
}

TEST_F(Restart, ANegativeOffsetIsRefused) {
    BeginWithFile(CkBytes(1, {"last"}));
    EXPECT_TRUE(FailsWith(
        SetPos({2, 5, -1}),
        ExpectedError(kMain, "reposition").Calling("fsetpos").Processing("Checkpoint", "Undefined")));
    ExpectTheQueueIsReadNext();
}

TEST_F(Restart, AnOffsetPastTheEndOfTheFileReplaysNothing) {
    BeginWithFile(CkBytes(1, {"last"}));
    EXPECT_EQ(SetPos({2, 5, 1000}).returnCode, pmrcOK);
    PassOver();
    mq.PutMessage("new");
    EXPECT_TRUE(Gives(Read(), "new"));
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK, {kEof, Begins(3, "new")}));
}

TEST_F(Restart, AnOffsetAbove4GigabytesIsPrintedWith32BitsAndKeptWith64) {
    BeginWithFile(CkBytes(1, {"last"}));
    const std::int64_t offset = 0x100000005;
    EXPECT_EQ(SetPos({2, 5, offset}).returnCode, pmrcOK);
    EXPECT_THAT(trace.NewLines(), Contains(Info(kMain, "CkPtOffset: 5")));
    EXPECT_TRUE(Is(TakePosition(), 2, 4, offset));
    EXPECT_THAT(trace.NewLines(), Contains(Info(kMain, "CkPtOffset: 5")));
}

TEST_F(Restart, SetPosAgainStartsTheReplayAgain) {
    BeginReplay(1, {"a", "b", "c"});
    EXPECT_TRUE(Gives(Read(), "a"));
    EXPECT_TRUE(Gives(Read(), "b"));
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
    EXPECT_THAT(ReadAll(), ElementsAre("a", "b", "c"));
}

TEST_F(Restart, ARefusedSetPosDuringAReplayDoesNotEndTheReplay) {
    BeginReplay(2, {"a", "b"});
    EXPECT_TRUE(Gives(Read(), "a"));
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcFailure);
    // The stream is where the failure left it: after the header.
    EXPECT_THAT(ReadAll(), ElementsAre("a", "b"));
    EXPECT_EQ(mq.Sequence(), "GET");
}

TEST_F(Restart, OpenEndsAReplay) {
    BeginReplay(1, {"a", "b"});
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    ExpectTheQueueIsReadNext(MQGMO_NO_SYNCPOINT);
}

TEST_F(Restart, AReplayThatLostItsFileFailsAndTouchesNone) {
    BeginReplay(1, {"a", "b"});
    EXPECT_EQ(Close().returnCode, pmrcOK);
    PassOver();
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
}

TEST_F(Restart, AllRecordsWithinTheSameProcessComeAgainAndNewOnesAreSavedAfterThem) {
    BeginCheckpointing();
    Deliver({"zero", "one"});
    const PositionData position = TakePosition();
    Deliver({"two", std::string("\0\r\n\x1A", 4), "three"});
    const std::string kept = CkBytes(1, {"one", "two", std::string("\0\r\n\x1A", 4), "three"});
    EXPECT_EQ(ReadFile(kCkFile), kept);
    EXPECT_EQ(SetPos(position).returnCode, pmrcOK);
    EXPECT_EQ(ReadFile(kCkFile), kept);
    PassOver();
    EXPECT_THAT(ReadAll(4), ElementsAre("one", "two", std::string("\0\r\n\x1A", 4), "three"));
    EXPECT_EQ(mq.Sequence(), "");
    Deliver({"four", "five"});
    EXPECT_EQ(mq.Sequence(), "GET CMIT GET CMIT");
    EXPECT_EQ(ReadFile(kCkFile), kept + CkRecords({"four", "five"}));
    EXPECT_EQ(TakePosition().CkPtMsgCount, 7);
}

TEST_F(Restart, ARestartedProcessReceivesEverythingSinceTheCheckpoint) {
    BeginCheckpointing();
    Deliver({"zero", "one"});
    const PositionData position = TakePosition();
    Deliver({"two", "three"});

    StartNewProcess();
    BeginCheckpointing();
    EXPECT_EQ(SetPos(position).returnCode, pmrcOK);
    EXPECT_THAT(ReadAll(3), ElementsAre("one", "two", "three"));
    Deliver({"four"});
    EXPECT_TRUE(Is(TakeCheckpoint(), 2, 5, 4 + 11 + 11 + 13)) << "the offset of the end of the replay";
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(2, {"four"}));
}

TEST_F(Restart, APositionWhoseCheckpointWasNeverTakenIsServedFromTheFileBefore) {
    BeginCheckpointing();
    Deliver({"zero"});
    TakeCheckpoint();
    Deliver({"one", "two"});
    const PositionData position = TakePosition();
    EXPECT_TRUE(Is(position, 2, 3, 4 + 12 + 11));

    StartNewProcess();
    BeginCheckpointing();
    EXPECT_EQ(SetPos(position).returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "two"));
    EXPECT_TRUE(Is(TakePosition(), 2, 3, 27));
}

TEST_F(Restart, SetPosToThePositionJustHandedOutTakesItsCheckpointFirst) {
    BeginCheckpointing();
    Deliver({"zero", "one"});
    const PositionData position = TakePosition();
    PassOver();
    EXPECT_TRUE(Succeeds(SetPos(position)));
    EXPECT_EQ(trace.NewLines(),
              Traced("SetPos", pmrcOK,
                     {Requested(1),
                      {Info("DoGetPos", "Entry"),
                       Info("ResetCkptFile", "Checkpoint file starting checkpoint sequence 1"),
                       Info("DoGetPos", "Checkpoint (GetPos) committed")},
                      kRewinding,
                      FileSequence(1)}));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"one"}));
    EXPECT_TRUE(Gives(Read(), "one"));
    EXPECT_TRUE(Is(TakePosition(), 2, 2, 4));
}

// The fourth flush of all streams in the request comes after the rewrite. It fails unnoticed and loses bytes.
TEST_F(Restart, GoingBackToACheckpointThatWasLostUnnoticedDoesNotForgetTheLoss) {
    BeginCheckpointing();
    Deliver({"zero"});
    const PositionData position = TakePosition();
    faults->Add({.call = FileCall::FlushAll, .file = kCkFile, .nth = 4, .error = ENOSPC});
    EXPECT_EQ(SetPos(position).returnCode, pmrcOK);
    EXPECT_EQ(faults->Struck(), 1);
    EXPECT_TRUE(Gives(Read(), "zero"));
    PassOver();
    mq.PutMessage("one");
    // Rewinding the stream has cleared the error and with it the reason.
    EXPECT_TRUE(FailsWith(
        Read(), ExpectedError(kMain, "checkpoint").Calling("fflush").Processing("Checkpoint", "Undefined")));
    EXPECT_EQ(mq.Sequence(), "GET BACK");
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"zero"}));
}

TEST_F(Restart, NothingIsSavedAfterATornRecordThatAReplayHasPassed) {
    BeginCheckpointing();
    Deliver({"zero"});
    const PositionData position = TakeCheckpoint();
    faults->Add({.call = FileCall::Write, .file = kCkFile, .error = ENOSPC, .transferred = 3});
    mq.PutMessage("one");
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(SetPos(position).returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "zero"));
    PassOver();
    // The replay ends at a length that has only three bytes.
    mq.PutMessage("one");
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(mq.Sequence(), "GET BACK");
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"zero"}) + CkRecord("one").substr(0, 3));

    TakeCheckpoint();
    PassOver();
    Deliver({"two"});
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_TRUE(ReadFile(kCkFile).ends_with(CkRecord("two")));
}

TEST_F(Restart, AReadErrorThatTheReplayHasOvercomeDoesNotKeepRecordsFromBeingSaved) {
    BeginCheckpointing();
    Deliver({"zero"});
    const PositionData position = TakeCheckpoint();
    EXPECT_EQ(SetPos(position).returnCode, pmrcOK);
    faults->Add({.call = FileCall::Read, .file = kCkFile, .error = EIO});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_TRUE(Gives(Read(), "zero"));
    PassOver();
    Deliver({"one", "two"});
    EXPECT_EQ(mq.Sequence(), "GET CMIT GET CMIT");
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"zero", "one", "two"}));
}

TEST_F(Restart, SetPosReturnsTheFailureOfThePendingCheckpoint) {
    BeginCheckpointing();
    Deliver({"zero"});
    const PositionData position = TakePosition();
    PassOver();
    faults->Add({.call = FileCall::Open, .file = kCkFile, .error = EACCES});
    EXPECT_TRUE(
        FailsWith(SetPos(position),
                  ExpectedError("ResetCkptFile", "MQA0137: <Checkpoint file (ck.dat) open failed. Reason '" +
                                                     std::string(std::strerror(EACCES)) + "'>")));
    EXPECT_THAT(trace.NewLines(), testing::Not(Contains(kRewinding[0])));
    // The checkpoint is no longer pending, and the replay has not begun.
    EXPECT_TRUE(GetPos().given);
}

TEST_F(Restart, SetPosToThePreviousCheckpointDropsAPendingOne) {
    BeginCheckpointing();
    Deliver({"zero"});
    const PositionData before = TakeCheckpoint();
    Deliver({"one"});
    TakePosition();
    PassOver();
    EXPECT_EQ(SetPos(before).returnCode, pmrcOK);
    EXPECT_EQ(trace.NewLines(), Traced("SetPos", pmrcOK, {Requested(1), kRewinding, FileSequence(1)}));
    EXPECT_THAT(ReadAll(2), ElementsAre("zero", "one"));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"zero", "one"}));
    EXPECT_EQ(TakePosition().CkPtSeq, 2);
}

TEST_F(Restart, ARefusedSetPosLeavesAPendingCheckpointPending) {
    BeginCheckpointing();
    Deliver({"zero"});
    TakeCheckpoint();
    TakePosition();
    EXPECT_EQ(SetPos({0, 0, 0}).returnCode, pmrcFailure);
    EXPECT_FALSE(GetPos().given);
}

TEST_F(Restart, SetPosNeverBacksOut) {
    BeginWithFile(CkBytes(4, {"last"}));
    EXPECT_EQ(SetPos({3, 0, 0}).returnCode, pmrcFailure);
    EXPECT_EQ(SetPos({4, 0, 0}).returnCode, pmrcOK);
    EXPECT_EQ(SetPos({5, 0, 4}).returnCode, pmrcOK);
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(Restart, AtLevel1TheRecordsOfAReplayAreNotTraced) {
    WriteFile(kCkFile, CkBytes(1, {"last"}));
    BeginCheckpointing("", 1);
    EXPECT_EQ(SetPos({2, 0, 4}).returnCode, pmrcOK);
    EXPECT_EQ(trace.NewLines(), Chain({Requested(2), kRewinding, FileSequence(1), SeekingTo(2, 4)}));
    EXPECT_TRUE(Gives(Read(), "last"));
    EXPECT_EQ(trace.NewLines(), Lines{});
    Deliver({"new"});
    EXPECT_EQ(trace.NewLines(), kEof);
}

}  // namespace
