// SPDX-License-Identifier: Apache-2.0

// Tests GetPos, which hands out a position, and the checkpoint itself, which the next Read or a redundant
// GetPos takes.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

constexpr char kReset[] = "ResetCkptFile";
const Lines kTakeEntry = {Info("DoGetPos", "Entry")};
const Lines kTakeCommitted = {Info("DoGetPos", "Checkpoint (GetPos) committed")};
const Lines kTakeNotCommitted = {Error("DoGetPos", "Checkpoint (GetPos) NOT committed")};

Lines Starting(int sequence) {
    return {Info(kReset, "Checkpoint file starting checkpoint sequence " + std::to_string(sequence))};
}

Lines HandedOut(int sequence, int count, int offset) {
    return {Info("PIDMMain", "CkPtOffset: " + std::to_string(offset)),
            Info("PIDMMain", "Checkpoint requested.  Checkpoint sequence: " + std::to_string(sequence)),
            Info("PIDMMain", "MsgCount: " + std::to_string(count))};
}

ExpectedError RedundantRequest() {
    return ExpectedError("PIDMMain", "Redundant GetPos request tolerated").Warning();
}

ExpectedError EmptyFile() {
    return {kReset, "empty checkpoint file"};
}

class CheckpointTake : public RecoveryFixture {
  protected:
    /// Reads a record and takes a position. The next Read carries the checkpoint out.
    void BeginWithPosition() {
        BeginCheckpointing();
        Deliver({"first"});
        TakePosition();
        PassOver();
    }
};

TEST_F(CheckpointTake, GetPosHandsOutThePositionBlock) {
    BeginCheckpointing();
    Deliver({"one", "two"});
    PassOver();
    const PositionOutcome outcome = GetPos();
    EXPECT_TRUE(Succeeds(outcome));
    EXPECT_EQ(outcome.positionLength, 16U);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&outcome.position), 16),
              std::string("\1\0\0\0\2\0\0\0\0\0\0\0\0\0\0\0", 16));
    EXPECT_EQ(trace.NewLines(), Traced("GetPos", pmrcOK, {HandedOut(1, 2, 0)}));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(CheckpointTake, APositionBeforeAnyReadMakesAFileWithOnlyTheHeader) {
    BeginCheckpointing();
    EXPECT_TRUE(Is(TakePosition(), 1, 0, 0));
    std::string atGet;
    mq.hook = [&](const MqCall& call) {
        if (call.verb == Verb::Get) atGet = ReadFile(kCkFile);
    };
    Deliver({"first"});
    EXPECT_EQ(atGet, CkBytes(1));
    EXPECT_EQ(atGet.size(), 4U);
}

TEST_F(CheckpointTake, ReadTakesTheCheckpointBeforeItReadsTheQueue) {
    BeginWithPosition();
    EXPECT_EQ(ReadFile(kCkFile), "");
    std::string atGet;
    mq.hook = [&](const MqCall& call) {
        if (call.verb == Verb::Get) atGet = ReadFile(kCkFile);
    };
    Deliver({"second"});
    EXPECT_EQ(atGet, CkBytes(1, {"first"}));
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK,
                                       {kTakeEntry,
                                        Starting(1),
                                        kTakeCommitted,
                                        {Info("PIDMMain", "message length: 6, begins: second")}}));
    EXPECT_THAT(CallsOn(kCkFile),
                ElementsAre("close ck.dat", "open ck.dat wb+", "write ck.dat 4", "write ck.dat 13",
                            "tell ck.dat", "write ck.dat 14", "flush ck.dat"));
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
}

// Before the queue is read, only the flush of all streams in each trace statement passes the checkpoint to
// the operating system. That flush happens even without a trace file.
TEST_F(CheckpointTake, WithoutATraceTheCheckpointIsStillFlushedByTheTraceStatementsBeforeTheQueueIsRead) {
    InitAndOpen("-CKFILE ck.dat");
    Deliver({"first"});
    TakePosition();
    std::string atGet = "MQGET was not called";
    mq.hook = [&](const MqCall& call) {
        if (call.verb == Verb::Get) atGet = ReadFile(kCkFile);
    };
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(atGet, CkBytes(1, {"first"}));
}

// The last flush before the queue is read is the one for the trace line "committed". If it loses the
// checkpoint's record, the next message must be backed out, not saved after the gap.
TEST_F(CheckpointTake, ARecordThatTheLastTraceStatementCouldNotFlushIsNotFollowedByAMessage) {
    BeginWithPosition();
    faults->Add({.call = FileCall::FlushAll, .file = kCkFile, .nth = 3, .error = ENOSPC});
    mq.PutMessage("second");
    EXPECT_TRUE(FailsWith(Read(), ExpectedError("PIDMMain", "checkpoint")
                                      .Calling("fflush")
                                      .Processing("Checkpoint", std::strerror(ENOSPC))));
    EXPECT_EQ(faults->Struck(), 1);
    EXPECT_EQ(mq.Sequence(), "GET BACK");
}

TEST_F(CheckpointTake, TheCheckpointIsOnDiskEvenWhenTheQueueIsEmpty) {
    BeginWithPosition();
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first"}));
    EXPECT_EQ(mq.Sequence(), "GET");
}

TEST_F(CheckpointTake, TheCheckpointIsTakenBeforeARequestedEnd) {
    BeginCheckpointing();
    Deliver({"first"});
    TakePosition();
    ASSERT_EQ(PutAttribute("GEN_EOF", "").returnCode, pmrcOK);
    mq.Forget();
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(mq.Sequence(), "");
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first"}));
}

TEST_F(CheckpointTake, EachCheckpointStartsTheFileAgain) {
    BeginCheckpointing();
    Deliver({"first"});
    TakeCheckpoint();
    Deliver({"second", "a longer third record"});
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first", "second", "a longer third record"}));
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(2, {"a longer third record"}));
    Deliver({"4"});
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(2, {"a longer third record", "4"}));
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"4"}));
}

TEST_F(CheckpointTake, TheEntryOfTheCheckpointIsADetail) {
    BeginCheckpointing("", 3);
    TakePosition();
    trace.Skip();
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(trace.NewLines(),
              Traced("Read", pmrcEOF, {Starting(1), kTakeCommitted, {Info("PIDMMain", "EOF from MQGET")}}));
}

TEST_F(CheckpointTake, AtLevel1TheCheckpointIsAJobEvent) {
    BeginCheckpointing("", 1);
    Deliver({"first"});
    TakePosition();
    EXPECT_EQ(trace.NewLines(), HandedOut(1, 1, 0));
    Deliver({"second"});
    EXPECT_EQ(trace.NewLines(), Chain({Starting(1), kTakeCommitted}));
}

TEST_F(CheckpointTake, ARedundantGetPosTakesTheCheckpointAndHandsOutNothing) {
    BeginWithPosition();
    const PositionOutcome second = GetPos();
    EXPECT_EQ(second.returnCode, pmrcOK);
    EXPECT_FALSE(second.given);
    EXPECT_TRUE(Carries(second, RedundantRequest()));
    EXPECT_EQ(
        trace.NewLines(),
        Traced("GetPos", pmrcOK, {RedundantRequest().TraceLines(), kTakeEntry, Starting(1), kTakeCommitted}));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first"}));

    const PositionOutcome third = GetPos();
    EXPECT_EQ(third.returnCode, pmrcOK);
    EXPECT_TRUE(Is(third.position, 2, 1, 0));
}

TEST_F(CheckpointTake, ARedundantGetPosReturnsTheFailureOfTheCheckpoint) {
    BeginWithPosition();
    faults->Add({.call = FileCall::Open, .file = kCkFile, .error = EACCES});
    const PositionOutcome second = GetPos();
    const ExpectedError error(kReset, "MQA0137: <Checkpoint file (ck.dat) open failed. Reason '" +
                                          std::string(std::strerror(EACCES)) + "'>");
    EXPECT_TRUE(FailsWith(second, error));
    EXPECT_FALSE(second.given);
    EXPECT_EQ(trace.NewLines(),
              Traced("GetPos", pmrcFailure,
                     {RedundantRequest().TraceLines(), kTakeEntry, error.TraceLines(), kTakeNotCommitted}));
    // The checkpoint is no longer pending.
    EXPECT_TRUE(Is(TakePosition(), 2, 1, 0));
}

TEST_F(CheckpointTake, AHeaderLostByAnUnnoticedFailureIsNotFollowedByARecord) {
    BeginWithPosition();
    // Only the flush of all streams in the trace statement after the header flushes the header. Here that
    // flush fails unnoticed.
    faults->Add({.call = FileCall::FlushAll, .file = kCkFile, .nth = 2, .error = ENOSPC});
    EXPECT_TRUE(FailsWith(Read(), ExpectedError(kReset, "appending last record read")
                                      .Calling("fwrite")
                                      .Processing("Checkpoint", std::strerror(ENOSPC))));
    EXPECT_EQ(faults->Struck(), 1);
    EXPECT_EQ(CallsOn(kCkFile).back(), "write ck.dat 4");
    EXPECT_THAT(trace.NewLines(), Contains(Error(kReset, ShortWrite(13, 0))));
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(CheckpointTake, AllPositionsAreInTheSameBlock) {
    BeginCheckpointing();
    const auto address = [](const PositionOutcome& outcome) { return outcome.data.substr(46, 8); };
    const PositionOutcome first = GetPos();
    EXPECT_FALSE(GetPos().given);
    const PositionOutcome second = GetPos();
    EXPECT_EQ(address(first), address(second));
    const PositionData* block = nullptr;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): the data holds the pointer
    std::memcpy(&block, address(second).data(), sizeof block);
    EXPECT_TRUE(Is(*block, 2, 0, 0));
    // SetPos sets the sequence number in the block to that of the file.
    EXPECT_EQ(SetPos({1, 0, 0}).returnCode, pmrcOK);
    EXPECT_EQ(block->CkPtSeq, 1);
}

TEST_F(CheckpointTake, GetPosWithoutCheckpointingFails) {
    Begin("");
    const PositionOutcome outcome = GetPos();
    const ExpectedError error("PIDMMain", "Checkpoint support NOT requested");
    EXPECT_TRUE(FailsWith(outcome, error));
    EXPECT_FALSE(outcome.given);
    EXPECT_EQ(trace.NewLines(), Traced("GetPos", pmrcFailure, {error.TraceLines()}));
    // The sequence number has not changed: Init keeps it, and nothing was opened yet.
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_EQ(Init("-QMGR QM1 -QNM Q1 -CKFILE ck.dat").returnCode, pmrcOK);
    EXPECT_TRUE(Is(TakePosition(), 1, 0, 0));
}

TEST_F(CheckpointTake, GetPosBeforeInitFails) {
    EXPECT_TRUE(FailsWith(GetPos(), ExpectedError("PIDMMain", "not initialized").Calling("GetPos")));
}

TEST_F(CheckpointTake, TheSequenceStartsAgainAtOpen) {
    BeginCheckpointing();
    TakeCheckpoint();
    EXPECT_EQ(TakeCheckpoint().CkPtSeq, 2);
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_EQ(TakePosition().CkPtSeq, 1);
}

TEST_F(CheckpointTake, TheSequenceOutlivesCloseShutAndInit) {
    BeginCheckpointing();
    TakeCheckpoint();
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(TakePosition().CkPtSeq, 2);
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_EQ(Init("-QMGR QM1 -QNM Q1 -CKFILE ck.dat").returnCode, pmrcOK);
    EXPECT_EQ(TakePosition().CkPtSeq, 3);
}

TEST_F(CheckpointTake, TheOffsetOutlivesEverything) {
    BeginCheckpointing();
    Deliver({"first"});
    TakeCheckpoint();
    Deliver({"second"});
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_TRUE(Is(TakePosition(), 1, 0, 17));
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    BeginCheckpointing();
    EXPECT_TRUE(Is(TakePosition(), 1, 0, 17));
}

TEST_F(CheckpointTake, APositionBeforeOpenIsHandedOutAndItsCheckpointTakenAfterIt) {
    ASSERT_EQ(Init("-QMGR QM1 -QNM Q1 -CKFILE ck.dat").returnCode, pmrcOK);
    EXPECT_TRUE(Is(TakePosition(), 1, 0, 0));
    EXPECT_EQ(Open().returnCode, pmrcOK);
    // Open has reset the sequence number.
    Deliver({"first"});
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(0, {"first"}));
}

TEST_F(CheckpointTake, ACheckpointBeforeOpenFindsNoFileAndTouchesNone) {
    WriteFile(kCkFile, CkBytes(7, {"kept"}));
    ASSERT_EQ(Init("-QMGR QM1 -QNM Q1 -CKFILE ck.dat -TRCL 4 trace.txt").returnCode, pmrcOK);
    TakePosition();
    PassOver();
    EXPECT_TRUE(FailsWith(GetPos(), EmptyFile()));
    EXPECT_EQ(trace.NewLines(), Traced("GetPos", pmrcFailure,
                                       {RedundantRequest().TraceLines(), kTakeEntry, EmptyFile().TraceLines(),
                                        kTakeNotCommitted}));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(7, {"kept"}));
}

TEST_F(CheckpointTake, ACheckpointAfterCloseFindsNoFileAndTouchesNone) {
    BeginCheckpointing();
    PreserveRestartInfo("YES");
    Deliver({"first"});
    TakeCheckpoint();
    EXPECT_EQ(Close().returnCode, pmrcOK);
    TakePosition();
    PassOver();
    EXPECT_TRUE(FailsWith(GetPos(), EmptyFile()));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first"}));
}

TEST_F(CheckpointTake, WithoutARecordBufferAFileThatShutLeftOpenIsNotTouched) {
    BeginCheckpointing();
    Deliver({"first"});
    TakeCheckpoint();
    mq.onClose.push_back({.compCode = MQCC_FAILED, .reason = 2009});
    EXPECT_EQ(Shut(1).returnCode, pmrcFailure);
    EXPECT_EQ(Init("-QMGR QM1 -QNM Q1 -CKFILE ck.dat -UNKNOWN").returnCode, pmrcFailure);
    TakePosition();
    faults->log.clear();
    EXPECT_TRUE(FailsWith(GetPos(), ExpectedError("ResetCkptFile", "memory allocation failed")));
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first"}));
}

TEST_F(CheckpointTake, APendingCheckpointOutlivesCloseAndOpen) {
    BeginWithPosition();
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    PassOver();
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_THAT(trace.NewLines(), Contains(Starting(0)[0]));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(0));
}

TEST_F(CheckpointTake, InitForgetsAPendingCheckpoint) {
    BeginWithPosition();
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    BeginCheckpointing();
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
}

TEST_F(CheckpointTake, AReadWithTheQueueClosedLeavesTheCheckpointPending) {
    BeginWithPosition();
    EXPECT_EQ(Close().returnCode, pmrcOK);
    PassOver();
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_THAT(trace.NewLines(), Not(Contains(kTakeEntry[0])));
    EXPECT_FALSE(GetPos().given);
}

TEST_F(CheckpointTake, AFileThatCannotBeStartedAgainFailsTheRead) {
    BeginWithPosition();
    faults->Add({.call = FileCall::Open, .file = kCkFile, .error = EMFILE});
    const ExpectedError error(kReset, "MQA0137: <Checkpoint file (ck.dat) open failed. Reason '" +
                                          std::string(std::strerror(EMFILE)) + "'>");
    const ReadOutcome read = Read();
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(trace.NewLines(),
              Traced("Read", pmrcFailure, {kTakeEntry, error.TraceLines(), kTakeNotCommitted}));
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(CheckpointTake, WithoutItsFileEachLaterMessageGoesBackToTheQueue) {
    BeginWithPosition();
    faults->Add({.call = FileCall::Open, .file = kCkFile, .error = EMFILE});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    PassOver();
    mq.PutMessage("second");
    const ReadOutcome read = Read();
    // Without a stream no call was made that could have set a reason.
    EXPECT_TRUE(FailsWith(read, ExpectedError("PIDMMain", "checkpoint").Calling("fgetpos")));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(mq.Sequence(), "GET BACK");
    EXPECT_EQ(mq.calls[0].getOptions.Options, MQGMO_SYNCPOINT + MQGMO_WAIT);
    TakePosition();
    EXPECT_TRUE(FailsWith(Read(), EmptyFile()));
}

class HeaderWritten : public CheckpointTake, public testing::WithParamInterface<std::size_t> {};

TEST_P(HeaderWritten, AHeaderWrittenInPartFailsTheRead) {
    BeginWithPosition();
    faults->Add({.call = FileCall::Write, .file = kCkFile, .error = ENOSPC, .transferred = GetParam()});
    const ExpectedError error = ExpectedError(kReset, "checkpoint file header record (seq)")
                                    .Calling("fwrite")
                                    .Processing("Checkpoint", std::strerror(ENOSPC));
    const ReadOutcome read = Read();
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    const Lines counts = {Error(kReset, ShortWrite(4, static_cast<std::int64_t>(GetParam())))};
    EXPECT_EQ(trace.NewLines(),
              Traced("Read", pmrcFailure, {kTakeEntry, counts, error.TraceLines(), kTakeNotCommitted}));
    EXPECT_EQ(mq.Sequence(), "");
}

INSTANTIATE_TEST_SUITE_P(Bytes, HeaderWritten, testing::Range<std::size_t>(0, 4));

TEST_F(CheckpointTake, ALastRecordWrittenInPartFailsTheRead) {
    BeginWithPosition();
    faults->Add({.call = FileCall::Write, .file = kCkFile, .nth = 2, .error = EIO, .transferred = 12});
    const ExpectedError error = ExpectedError(kReset, "appending last record read")
                                    .Calling("fwrite")
                                    .Processing("Checkpoint", std::strerror(EIO));
    EXPECT_TRUE(FailsWith(Read(), error));
    const Lines counts = {Error(kReset, ShortWrite(13, 12))};
    EXPECT_EQ(trace.NewLines(),
              Traced("Read", pmrcFailure,
                     {kTakeEntry, Starting(1), counts, error.TraceLines(), kTakeNotCommitted}));
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(CheckpointTake, AShortWriteWithoutAStreamErrorHasAnUndefinedReason) {
    BeginWithPosition();
    faults->Add({.call = FileCall::Write, .file = kCkFile, .error = EIO, .streamError = false});
    EXPECT_TRUE(FailsWith(Read(), ExpectedError(kReset, "checkpoint file header record (seq)")
                                      .Calling("fwrite")
                                      .Processing("Checkpoint", "Undefined")));
}

TEST_F(CheckpointTake, AFailedCheckpointStillCountsAsTaken) {
    BeginWithPosition();
    faults->Add({.call = FileCall::Write, .file = kCkFile, .streamError = false});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    PassOver();
    Deliver({"second"});
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_EQ(mq.calls[0].getOptions.Options, MQGMO_SYNCPOINT + MQGMO_WAIT);
    EXPECT_TRUE(Is(TakePosition(), 2, 2, 0));
}

TEST_F(CheckpointTake, ALastRecordOfAFullBlockIsKeptWhole) {
    BeginCheckpointing();
    const std::string full(65536, 'F');
    Deliver({"first", full});
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {full}));
}

TEST_F(CheckpointTake, ALastRecordOfNoBytesIsNotPutIntoTheFile) {
    BeginReplay(1, {"a", ""});
    EXPECT_TRUE(Gives(Read(), "a"));
    EXPECT_TRUE(Gives(Read(), ""));
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(TakeCheckpoint().CkPtSeq, 2);
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(2));
}

TEST_F(CheckpointTake, AtLevel1AFailedCheckpointIsAJobEvent) {
    BeginCheckpointing("", 1);
    Deliver({"first"});
    TakePosition();
    PassOver();
    faults->Add({.call = FileCall::Write, .file = kCkFile, .error = ENOSPC});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    const ExpectedError error = ExpectedError(kReset, "checkpoint file header record (seq)")
                                    .Calling("fwrite")
                                    .Processing("Checkpoint", std::strerror(ENOSPC));
    EXPECT_EQ(trace.NewLines(),
              Chain({{Error(kReset, ShortWrite(4, 0))}, error.TraceLines(), kTakeNotCommitted}));
}

TEST_F(CheckpointTake, AReadThatReturnsNothingLeavesTheLastRecord) {
    BeginCheckpointing();
    Deliver({"first"});
    mq.FailGet(MQCC_FAILED, 2009, "some data");
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    mq.PutMessage("first", 1);
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first"}));
}

}  // namespace
