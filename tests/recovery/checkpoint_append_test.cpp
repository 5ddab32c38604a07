// SPDX-License-Identifier: Apache-2.0

// Tests that after the first checkpoint every message is saved in the checkpoint file before it is committed,
// and that a message that could not be saved returns to the queue.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr char kReadRequest[] = "PIDMMain";
const Lines kBackOutLine = {Info("BackOutMQ", "Backing out MQ transactions via MQBACK")};

class CheckpointAppend : public RecoveryFixture {
  protected:
    /// Takes a checkpoint after the record "first". From then on `atCommit` receives the contents of the file
    /// at every MQCMIT.
    void BeginWithCheckpoint(const std::string& keywords = "") {
        BeginCheckpointing(keywords);
        Deliver({"first"});
        TakeCheckpoint();
        PassOver();
        mq.hook = [this](const MqCall& call) {
            if (call.verb == Verb::Cmit) atCommit.push_back(ReadFile(kCkFile));
        };
    }
    static ExpectedError SaveFailed(const std::string& failingCall, const std::string& reason) {
        return ExpectedError(kReadRequest, "checkpoint")
            .Calling(failingCall)
            .Processing("Checkpoint", reason);
    }
    std::vector<std::string> atCommit;  ///< contents of the file at each MQCMIT
};

TEST_F(CheckpointAppend, BeforeTheFirstCheckpointNothingIsSavedNorCommitted) {
    BeginCheckpointing();
    Deliver({"one", "two"});
    EXPECT_EQ(ReadFile(kCkFile), "");
    EXPECT_EQ(mq.Sequence(), "GET GET");
    for (const MqCall& get : mq.Calls(Verb::Get))
        EXPECT_EQ(get.getOptions.Options, MQGMO_NO_SYNCPOINT + MQGMO_WAIT);
}

TEST_F(CheckpointAppend, EachRecordIsOnDiskWhenItIsCommitted) {
    BeginWithCheckpoint();
    const std::string binary("\0\r\n\x1A\xFF", 5);
    const std::string large(65536, 'L');
    Deliver({"second", binary, large});
    EXPECT_THAT(atCommit,
                ElementsAre(CkBytes(1, {"first", "second"}), CkBytes(1, {"first", "second", binary}),
                            CkBytes(1, {"first", "second", binary, large})));
    EXPECT_EQ(mq.Sequence(), "GET CMIT GET CMIT GET CMIT");
    for (const MqCall& get : mq.Calls(Verb::Get))
        EXPECT_EQ(get.getOptions.Options, MQGMO_SYNCPOINT + MQGMO_WAIT);
    for (const MqCall& commit : mq.Calls(Verb::Cmit))
        EXPECT_EQ(commit.connection, 7);
}

TEST_F(CheckpointAppend, ARecordIsOneWriteAndOneFlush) {
    BeginWithCheckpoint();
    Deliver({"second"});
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("tell ck.dat", "write ck.dat 14", "flush ck.dat"));
}

TEST_F(CheckpointAppend, SavingLeavesNothingInTheTrace) {
    BeginWithCheckpoint();
    Deliver({"second"});
    EXPECT_EQ(trace.NewLines(),
              Traced("Read", pmrcOK, {{Info(kReadRequest, "message length: 6, begins: second")}}));
}

TEST_F(CheckpointAppend, FlushIsNeverAskedFor) {
    BeginWithCheckpoint("-FLUSH no");
    Deliver({"second"});
    EXPECT_THAT(CallsOn(kCkFile), Contains("flush ck.dat"));
}

TEST_F(CheckpointAppend, ThePositionNamesTheStartOfTheLastRecord) {
    BeginWithCheckpoint();
    Deliver({"second"});
    EXPECT_TRUE(Is(TakeCheckpoint(), 2, 2, 4 + 13));
    Deliver({"third", "fourth"});
    EXPECT_TRUE(Is(TakePosition(), 3, 4, 4 + 14 + 13));
}

TEST_F(CheckpointAppend, AFailureToGetThePositionBacksOut) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Tell, .file = kCkFile, .error = EIO});
    const ReadOutcome read = Read();
    const ExpectedError error = SaveFailed("fgetpos", std::strerror(EIO));
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcFailure, {error.TraceLines(), kBackOutLine}));
    EXPECT_EQ(mq.Sequence(), "GET BACK");
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre("tell ck.dat"));
    EXPECT_TRUE(Is(TakePosition(), 2, 1, 0));
}

TEST_F(CheckpointAppend, AFailureToGetThePositionWithoutAStreamErrorHasAnUndefinedReason) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Tell, .file = kCkFile, .error = EIO, .streamError = false});
    EXPECT_TRUE(FailsWith(Read(), SaveFailed("fgetpos", "Undefined")));
}

TEST_F(CheckpointAppend, AShortWriteBacksOut) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Write, .file = kCkFile, .error = ENOSPC, .transferred = 13});
    const ReadOutcome read = Read();
    const ExpectedError error = SaveFailed("fwrite", std::strerror(ENOSPC));
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcFailure, {error.TraceLines(), kBackOutLine}));
    EXPECT_EQ(mq.Sequence(), "GET BACK");
    EXPECT_EQ(mq.Calls(Verb::Back)[0].connection, 7);
}

TEST_F(CheckpointAppend, AShortWriteWithoutAStreamErrorHasAnUndefinedReason) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Write, .file = kCkFile, .error = ENOSPC, .streamError = false});
    EXPECT_TRUE(FailsWith(Read(), SaveFailed("fwrite", "Undefined")));
    EXPECT_EQ(mq.Sequence(), "GET BACK");
}

TEST_F(CheckpointAppend, AFailedFlushBacksOut) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Flush, .file = kCkFile, .error = ENOSPC});
    const ReadOutcome read = Read();
    const ExpectedError error = SaveFailed("fflush", std::strerror(ENOSPC));
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcFailure, {error.TraceLines(), kBackOutLine}));
    EXPECT_EQ(mq.Sequence(), "GET BACK");
}

TEST_F(CheckpointAppend, AFailedFlushWithoutAStreamErrorHasAnUndefinedReason) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Flush, .file = kCkFile, .error = ENOSPC, .streamError = false});
    EXPECT_TRUE(FailsWith(Read(), SaveFailed("fflush", "Undefined")));
    EXPECT_EQ(mq.Sequence(), "GET BACK");
}

TEST_F(CheckpointAppend, AHeaderLostByAnUnnoticedFailureFailsTheNextRecord) {
    BeginCheckpointing();
    Deliver({"first"});
    TakePosition();
    PassOver();
    // The flush of all streams that writes the header fails unnoticed.
    faults->Add({.call = FileCall::FlushAll, .file = kCkFile, .nth = 3, .error = ENOSPC});
    // The reason reported is that of the failed flush, although errno has changed since.
    mq.onGet.push_back({.bytes = "second", .effect = [] { errno = EAGAIN; }});
    const ReadOutcome read = Read();
    EXPECT_EQ(faults->Struck(), 1);
    EXPECT_TRUE(FailsWith(read, SaveFailed("fflush", std::strerror(ENOSPC))));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(mq.Sequence(), "GET BACK");
    EXPECT_THAT(trace.NewLines(), Contains(Info("DoGetPos", "Checkpoint (GetPos) committed")));
    // Nothing may be written after the gap: a restart would read it as the missing record.
    EXPECT_EQ(CallsOn(kCkFile).back(), "tell ck.dat");
}

TEST_F(CheckpointAppend, NothingIsCommittedAfterAGapUntilTheNextCheckpoint) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Write, .file = kCkFile, .error = ENOSPC, .transferred = 3});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    mq.PutMessage("second");
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(mq.Sequence(), "GET BACK GET BACK");
    EXPECT_THAT(atCommit, ElementsAre());

    TakeCheckpoint();
    mq.Forget();
    Deliver({"third"});
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_EQ(atCommit.size(), 1U);
    EXPECT_TRUE(atCommit[0].ends_with(CkRecord("third")));
}

TEST_F(CheckpointAppend, AMessageThatWasNotSavedIsNeitherCountedNorLogged) {
    BeginWithCheckpoint("-LOG log.dat");
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Flush, .file = kCkFile, .streamError = false});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(ReadFile(kLogFile), "first");
    EXPECT_EQ(TakePosition().CkPtMsgCount, 1);
}

TEST_F(CheckpointAppend, AMessageThatWasNotSavedIsStillTheLastRecord) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Flush, .file = kCkFile, .streamError = false});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    mq.PutMessage("second", 1);
    PassOver();
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_THAT(trace.NewLines(), Contains(Warning(kReadRequest, "Message identical to previous.")));
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(2, {"second"}));
}

TEST_F(CheckpointAppend, AFailedBackOutReplacesTheErrorTextAndIsOtherwiseIgnored) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Write, .file = kCkFile, .error = ENOSPC});
    mq.onBack.push_back({.compCode = MQCC_FAILED, .reason = 2009});
    const ExpectedError saving = SaveFailed("fwrite", std::strerror(ENOSPC));
    const ExpectedError backingOut("BackOutMQ", "MQA0145: <MQBACK failed, reason code = 2009>");
    EXPECT_TRUE(FailsWith(Read(), backingOut));
    EXPECT_EQ(trace.NewLines(),
              Traced("Read", pmrcFailure, {saving.TraceLines(), kBackOutLine, backingOut.TraceLines()}));
    EXPECT_EQ(mq.Sequence(), "GET BACK");
}

TEST_F(CheckpointAppend, ABackOutWithAWarningIsReportedAsOne) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Flush, .file = kCkFile});
    mq.onBack.push_back({.compCode = MQCC_WARNING, .reason = 2003});
    EXPECT_TRUE(FailsWith(
        Read(), ExpectedError("BackOutMQ", "MQA0145: <MQBACK failed, reason code = 2003>").Warning()));
}

class CommitFailure : public CheckpointAppend, public testing::WithParamInterface<MQLONG> {};

TEST_P(CommitFailure, TheRecordIsSavedButNotReturned) {
    BeginWithCheckpoint("-LOG log.dat");
    mq.PutMessage("second");
    mq.onCmit.push_back({.compCode = GetParam(), .reason = 2003});
    const ReadOutcome read = Read();
    ExpectedError error(kReadRequest, "MQA0143: <MQCMIT failed, reason code = 2003>");
    if (GetParam() == MQCC_WARNING) error.Warning();
    EXPECT_TRUE(FailsWith(read, error));
    EXPECT_EQ(read.recordLength, 0U);
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcFailure, {error.TraceLines()}));
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first", "second"}));
    EXPECT_EQ(ReadFile(kLogFile), "first");
    EXPECT_TRUE(Is(TakePosition(), 2, 1, 4 + 13));
}

INSTANTIATE_TEST_SUITE_P(CompletionCode, CommitFailure, testing::Values(MQCC_WARNING, MQCC_FAILED));

TEST_F(CheckpointAppend, AfterAFailedCommitTheNextRecordIsSavedAfterIt) {
    BeginWithCheckpoint();
    mq.PutMessage("second");
    mq.onCmit.push_back({.compCode = MQCC_FAILED, .reason = 2009});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    Deliver({"third"});
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first", "second", "third"}));
}

TEST_F(CheckpointAppend, ARecordThatIsNotLoggedIsStillCommittedAndNotBackedOut) {
    BeginWithCheckpoint("-LOG log.dat");
    mq.PutMessage("second");
    faults->Add({.call = FileCall::Write, .file = kLogFile});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_THAT(atCommit, ElementsAre(CkBytes(1, {"first", "second"})));
}

TEST_F(CheckpointAppend, AFailedMqgetIsNotBackedOut) {
    BeginWithCheckpoint();
    mq.FailGet(MQCC_WARNING, MQRC_TRUNCATED_MSG_FAILED, "too long");
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    mq.FailGet(MQCC_FAILED, 2009, "some data");
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    mq.FailGet(MQCC_FAILED, MQRC_SYNCPOINT_LIMIT_REACHED, "");
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(mq.Sequence(), "GET GET GET");
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
}

TEST_F(CheckpointAppend, ADuplicateThatEndsTheInputIsNotSaved) {
    BeginWithCheckpoint();
    mq.PutMessage("first", 1);
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(mq.Sequence(), "GET");
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
}

TEST_F(CheckpointAppend, ThatACheckpointWasTakenOutlivesCloseAndOpen) {
    BeginWithCheckpoint();
    EXPECT_EQ(Close().returnCode, pmrcOK);
    EXPECT_EQ(Open().returnCode, pmrcOK);
    PassOver();
    // The file has no header until the next checkpoint.
    Deliver({"record"});
    EXPECT_THAT(atCommit, ElementsAre(CkRecord("record")));
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_EQ(mq.calls[0].getOptions.Options, MQGMO_NO_SYNCPOINT + MQGMO_WAIT);
}

TEST_F(CheckpointAppend, ThatACheckpointWasTakenOutlivesShutAndInit) {
    BeginWithCheckpoint();
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    BeginCheckpointing();
    Deliver({"record"});
    EXPECT_THAT(atCommit, ElementsAre(CkRecord("record")));
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
}

TEST_F(CheckpointAppend, AnotherInitWithoutTheKeywordEndsTheSaving) {
    BeginWithCheckpoint();
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    Begin("");
    Deliver({"record"});
    EXPECT_EQ(mq.Sequence(), "GET");
    EXPECT_THAT(CallsOn(kCkFile), ElementsAre());
}

// A C stream must be positioned between a read and a write. Otherwise some C libraries put the record into
// the buffer that was read ahead, and no call reports that it never reaches the file.
TEST_F(CheckpointAppend, AfterARefusedPositionTheRecordIsInTheFileWhenItIsCommitted) {
    BeginWithCheckpoint();
    Deliver({"second"});
    ASSERT_EQ(SetPos({0, 1, 4}).returnCode, pmrcFailure);
    PassOver();
    Deliver({"third", "fourth"});
    EXPECT_EQ(mq.Sequence(), "GET CMIT GET CMIT");
    EXPECT_THAT(atCommit, ElementsAre(CkBytes(1, {"first", "second"}), CkBytes(1, {"third", "second"}),
                                      CkBytes(1, {"third", "fourth"})));
    EXPECT_THAT(CallsOn(kCkFile),
                ElementsAre("tell ck.dat", "seek ck.dat 4", "write ck.dat 13", "flush ck.dat", "tell ck.dat",
                            "write ck.dat 14", "flush ck.dat"));
}

TEST_F(CheckpointAppend, AfterAReplayTheRecordIsInTheFileWhenItIsCommitted) {
    BeginWithCheckpoint();
    Deliver({"second"});
    ASSERT_EQ(SetPos({1, 1, 4}).returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "first"));
    EXPECT_TRUE(Gives(Read(), "second"));
    PassOver();
    atCommit.clear();
    Deliver({"third"});
    EXPECT_THAT(atCommit, ElementsAre(CkBytes(1, {"first", "second", "third"})));
    EXPECT_THAT(CallsOn(kCkFile), Contains("seek ck.dat 31"));
}

TEST_F(CheckpointAppend, AStreamThatCannotBePositionedBacksTheMessageOut) {
    BeginWithCheckpoint();
    ASSERT_EQ(SetPos({0, 1, 4}).returnCode, pmrcFailure);
    PassOver();
    faults->Add({.call = FileCall::Seek, .file = kCkFile, .error = EIO});
    mq.PutMessage("second");
    EXPECT_TRUE(FailsWith(Read(), SaveFailed("fsetpos", std::strerror(EIO))));
    EXPECT_EQ(mq.Sequence(), "GET BACK");
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(1, {"first"}));
}

}  // namespace
