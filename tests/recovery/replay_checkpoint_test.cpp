// SPDX-License-Identifier: Apache-2.0

// Tests a checkpoint during a replay. The records that were not delivered yet must survive it, so they are
// copied into a temporary file, which then replaces the checkpoint file.
#include <cerrno>
#include <cstring>

#include "tests/recovery/recovery_fixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

constexpr char kResetCkptFile[] = "ResetCkptFile";
const Lines kEntry = {Info("DoGetPos", "Entry")};
const Lines kCommitted = {Info("DoGetPos", "Checkpoint (GetPos) committed")};
const Lines kNotCommitted = {Error("DoGetPos", "Checkpoint (GetPos) NOT committed")};

class ReplayCheckpoint : public RecoveryFixture {
  protected:
    /// Begins a replay of sequence 3 with the records a, bb, ccc and dddd, reads a and bb, and sends GetPos,
    /// so that a checkpoint is pending.
    void BeginInTheMiddle() {
        BeginReplay(3, {"a", "bb", "ccc", "dddd"});
        EXPECT_TRUE(Gives(Read(), "a"));
        EXPECT_TRUE(Gives(Read(), "bb"));
        EXPECT_TRUE(Is(TakePosition(), 4, 2, 4 + 9));
        PassOver();
    }
    static Lines TempNamed() { return {Info(kResetCkptFile, "FilePathTemp '" + TempFile() + "'")}; }
    static std::string Rewritten() { return CkBytes(4, {"bb", "ccc", "dddd"}); }
    static ExpectedError About(const std::string& what, const std::string& call, const std::string& kind,
                               const std::string& reason = std::strerror(EIO)) {
        return ExpectedError(kResetCkptFile, what).Calling(call).Processing(kind, reason);
    }
    static ExpectedError Named(int number, const std::string& text, int error) {
        return {kResetCkptFile,
                "MQA0" + std::to_string(number) + ": <" + text + " Reason '" + std::strerror(error) + "'>"};
    }
    /// Checks that the Read that takes the checkpoint fails with the error. `counts` is the text of the trace
    /// line about bytes read or written, if there is one.
    void ExpectRewriteFails(const ExpectedError& error, const std::string& counts = "") {
        mq.PutMessage("from the queue");
        const ReadOutcome read = Read();
        EXPECT_TRUE(FailsWith(read, error));
        EXPECT_EQ(read.recordLength, 0U);
        const Lines countLine = counts.empty() ? Lines{} : Lines{Error(kResetCkptFile, counts)};
        EXPECT_EQ(
            trace.NewLines(),
            Traced("Read", pmrcFailure, {kEntry, TempNamed(), countLine, error.TraceLines(), kNotCommitted}));
        EXPECT_EQ(mq.Sequence(), "") << "a failed checkpoint neither reads the queue nor backs out";
    }
};

TEST_F(ReplayCheckpoint, KeepsWhatWasNotDeliveredAndGoesOnWithIt) {
    BeginInTheMiddle();
    EXPECT_TRUE(Gives(Read(), "ccc"));
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK,
                                       {kEntry,
                                        TempNamed(),
                                        kCommitted,
                                        {Info("ReadFromChkPt", "Checkpoint record length: 3"),
                                         Info("PIDMMain", "message length: 3, begins: ccc")}}));
    EXPECT_EQ(ReadFile(kCkFile), Rewritten());
    EXPECT_FALSE(FileExists(TempFile()));
    EXPECT_TRUE(Gives(Read(), "dddd"));
    EXPECT_EQ(mq.Sequence(), "");
    Deliver({"new"});
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_EQ(ReadFile(kCkFile), Rewritten() + CkRecord("new"));
    EXPECT_TRUE(Is(TakePosition(), 5, 5, 4 + 10 + 11 + 12));
}

TEST_F(ReplayCheckpoint, TheOldFileIsDeletedOnlyWhenTheNewOneIsCompleteAndClosed) {
    BeginInTheMiddle();
    EXPECT_TRUE(Gives(Read(), "ccc"));
    const std::string temp = TempFile();
    const std::vector<std::string>& log = faults->log;
    const auto at = [&](const std::string& call) {
        return std::find(log.begin(), log.end(), call) - log.begin();
    };
    const auto end = static_cast<std::ptrdiff_t>(log.size());
    EXPECT_LT(at("open " + temp + " w+b"), at("write " + temp + " 4"));
    EXPECT_LT(at("write " + temp + " 12"), at("close " + temp));
    EXPECT_LT(at("close " + temp), at("remove ck.dat"));
    EXPECT_LT(at("close ck.dat"), at("remove ck.dat"));
    EXPECT_LT(at("remove ck.dat"), at("rename " + temp + " ck.dat"));
    EXPECT_LT(at("rename " + temp + " ck.dat"), at("open ck.dat rb+"));
    EXPECT_LT(at("open ck.dat rb+"), end);
    EXPECT_THAT(log, Not(Contains(testing::StartsWith("command"))));
}

TEST_F(ReplayCheckpoint, ARedundantGetPosTakesItToo) {
    BeginInTheMiddle();
    EXPECT_FALSE(GetPos().given);
    EXPECT_EQ(ReadFile(kCkFile), Rewritten());
    EXPECT_THAT(ReadAll(2), ElementsAre("ccc", "dddd"));
}

TEST_F(ReplayCheckpoint, SetPosToItsPositionTakesItTooAndStartsWithTheLastRecord) {
    BeginInTheMiddle();
    EXPECT_EQ(SetPos({4, 2, 13}).returnCode, pmrcOK);
    EXPECT_EQ(ReadFile(kCkFile), Rewritten());
    EXPECT_THAT(ReadAll(3), ElementsAre("bb", "ccc", "dddd"));
    EXPECT_EQ(TakePosition().CkPtMsgCount, 4);
}

TEST_F(ReplayCheckpoint, TheLastRecordStaysTheOneDelivered) {
    BeginInTheMiddle();
    EXPECT_FALSE(GetPos().given);
    // Another checkpoint without a Read in between writes the same records.
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(5, {"bb", "ccc", "dddd"}));
    EXPECT_THAT(ReadAll(2), ElementsAre("ccc", "dddd"));
}

TEST_F(ReplayCheckpoint, ADuplicateIsRecognisedByTheRecordDeliveredBeforeIt) {
    BeginReplay(3, {"a", "bb"});
    EXPECT_THAT(ReadAll(2), ElementsAre("a", "bb"));
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(4, {"bb"}));
    mq.PutMessage("bb", 1);
    PassOver();
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_THAT(trace.NewLines(), Contains(Warning("PIDMMain", "Message identical to previous.")));
}

TEST_F(ReplayCheckpoint, EveryRecordCanBeFollowedByACheckpoint) {
    const std::vector<std::string> records = {"a", std::string("\0\r\n", 3), "", std::string(9000, 'n'), "e"};
    BeginReplay(1, records);
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_TRUE(Gives(Read(), records[i]));
        TakeCheckpoint();
        const std::vector<std::string> rest(records.begin() + static_cast<std::ptrdiff_t>(i), records.end());
        EXPECT_EQ(ReadFile(kCkFile), CkBytes(static_cast<std::int32_t>(i) + 2, rest));
    }
    mq.PutMessage("new");
    EXPECT_TRUE(Gives(Read(), "new"));
    EXPECT_EQ(TakePosition().CkPtMsgCount, 6);
}

TEST_F(ReplayCheckpoint, ARecordLargerThanAnyStreamBufferIsCopiedAndPassedOver) {
    const std::string full(65536, 'F');
    BeginReplay(1, {full, std::string(65536, 'G'), "end"});
    EXPECT_TRUE(Gives(Read(), full));
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(2, {full, std::string(65536, 'G'), "end"}));
    EXPECT_TRUE(Gives(Read(), std::string(65536, 'G')));
    EXPECT_TRUE(Gives(Read(), "end"));
}

TEST_F(ReplayCheckpoint, BeforeTheFirstRecordAnEmptyOneIsPutInFront) {
    BeginReplay(3, {"a", "bb"});
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(4, {"", "a", "bb"}));
    EXPECT_THAT(ReadAll(2), ElementsAre("a", "bb"));
}

TEST_F(ReplayCheckpoint, AtTheEndOfTheFileOnlyTheLastRecordIsKept) {
    BeginReplay(3, {"a", "bb"});
    EXPECT_THAT(ReadAll(2), ElementsAre("a", "bb"));
    TakePosition();
    PassOver();
    mq.PutMessage("new");
    EXPECT_TRUE(Gives(Read(), "new"));
    EXPECT_EQ(trace.NewLines(), Traced("Read", pmrcOK,
                                       {kEntry,
                                        TempNamed(),
                                        kCommitted,
                                        {Info("ReadFromChkPt", "EOF on Checkpoint file"),
                                         Info("PIDMMain", "message length: 3, begins: new")}}));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(4, {"bb", "new"}));
}

TEST_F(ReplayCheckpoint, ATornLengthAtTheEndIsNotCopied) {
    WriteFile(kCkFile, CkBytes(3, {"a", "bb"}) + "torn");
    BeginCheckpointing();
    EXPECT_EQ(SetPos({3, 0, 0}).returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "a"));
    TakeCheckpoint();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(4, {"a", "bb"}));
}

TEST_F(ReplayCheckpoint, TheTemporaryFileIsNextToTheCheckpointFile) {
    std::filesystem::create_directory("sub");
    const std::string folder =
        std::string("sub") + static_cast<char>(std::filesystem::path::preferred_separator);
    WriteFile(folder + "ck.dat", CkBytes(3, {"a", "bb"}));
    Begin("-CKFILE " + folder + "ck.dat");
    EXPECT_EQ(SetPos({3, 0, 0}).returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "a"));
    TakeCheckpoint();
    EXPECT_THAT(CallsOn(TempFile()), Contains("open " + folder + TempFile() + " w+b"));
    EXPECT_EQ(ReadFile(folder + "ck.dat"), CkBytes(4, {"a", "bb"}));
    EXPECT_FALSE(FileExists(folder + TempFile()));
    EXPECT_TRUE(Gives(Read(), "bb"));
}

TEST_F(ReplayCheckpoint, AnOldTemporaryFileIsOverwritten) {
    WriteFile(TempFile(), std::string(500, 'o'));
    BeginInTheMiddle();
    EXPECT_TRUE(Gives(Read(), "ccc"));
    EXPECT_EQ(ReadFile(kCkFile), Rewritten());
}

TEST_F(ReplayCheckpoint, ATemporaryFileThatCannotBeOpenedFails) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Open, .file = "MQAMtmp", .error = EACCES});
    ExpectRewriteFails(
        Named(148, "Temp checkpoint (" + TempFile() + ") open failed.", EACCES).Calling("fopen"));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"a", "bb", "ccc", "dddd"}));
    EXPECT_TRUE(Gives(Read(), "ccc")) << "the replay goes on in the old file";
}

class TempHeader : public ReplayCheckpoint, public testing::WithParamInterface<std::size_t> {};

TEST_P(TempHeader, WrittenInPartFails) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Write, .file = "MQAMtmp", .transferred = GetParam()});
    ExpectRewriteFails(About("checkpoint file header record (seq)", "fwrite", "Temp"),
                       ShortWrite(4, static_cast<std::int64_t>(GetParam())));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"a", "bb", "ccc", "dddd"}));
}

INSTANTIATE_TEST_SUITE_P(Bytes, TempHeader, testing::Range<std::size_t>(0, 4));

TEST_F(ReplayCheckpoint, ALastRecordWrittenInPartFails) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Write, .file = "MQAMtmp", .nth = 2, .transferred = 9});
    ExpectRewriteFails(About("prepending last record read", "fwrite", "Temp"), ShortWrite(10, 9));
    EXPECT_TRUE(Gives(Read(), "ccc"));
}

TEST_F(ReplayCheckpoint, ACopyWrittenInPartFails) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Write, .file = "MQAMtmp", .nth = 4, .error = ENOSPC, .transferred = 5});
    ExpectRewriteFails(About("checkpoint", "fwrite", "Temp", std::strerror(ENOSPC)), ShortWrite(12, 5));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"a", "bb", "ccc", "dddd"}));
    EXPECT_TRUE(FileExists(TempFile()));
}

TEST_F(ReplayCheckpoint, AWriteWithoutAStreamErrorHasAnUndefinedReason) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Write, .file = "MQAMtmp", .streamError = false});
    ExpectRewriteFails(About("checkpoint file header record (seq)", "fwrite", "Temp", "Undefined"),
                       ShortWrite(4, 0));
}

TEST_F(ReplayCheckpoint, ATemporaryFileThatDoesNotReachTheDiskNeverReplacesTheOldFile) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Flush, .file = "MQAMtmp", .error = ENOSPC});
    faults->Add({.call = FileCall::Close, .file = "MQAMtmp", .error = ENOSPC});
    mq.PutMessage("from the queue");
    const ReadOutcome read = Read();
    EXPECT_EQ(read.returnCode, pmrcFailure);
    EXPECT_THAT(read.errorText, testing::HasSubstr(std::strerror(ENOSPC)));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"a", "bb", "ccc", "dddd"}));
    EXPECT_THAT(faults->log, Not(Contains("remove ck.dat")));
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(ReplayCheckpoint, AStreamInErrorNeverReplacesTheOldFileThoughEveryCallSucceeds) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Write, .file = "MQAMtmp", .nth = 4, .transferred = 12});
    ExpectRewriteFails(About("checkpoint", "fflush", "Temp"));
    EXPECT_EQ(faults->Struck(), 1);
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"a", "bb", "ccc", "dddd"}));
}

TEST_F(ReplayCheckpoint, ALengthReadInPartFails) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Read, .file = kCkFile, .transferred = 3});
    ExpectRewriteFails(About("checkpoint record length", "fread", "Checkpoint"), ShortRead(8, 3));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"a", "bb", "ccc", "dddd"}));
}

TEST_F(ReplayCheckpoint, ARecordReadInPartFails) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Read, .file = kCkFile, .nth = 4, .transferred = 2});
    ExpectRewriteFails(About("checkpoint record body", "fread", "Checkpoint"), ShortRead(4, 2));
}

TEST_F(ReplayCheckpoint, ATornRecordFails) {
    WriteFile(kCkFile, CkBytes(3, {"a", "bb", "ccc"}).substr(0, 4 + 9 + 10 + 8 + 1));
    BeginCheckpointing();
    EXPECT_EQ(SetPos({3, 0, 0}).returnCode, pmrcOK);
    EXPECT_THAT(ReadAll(2), ElementsAre("a", "bb"));
    TakePosition();
    PassOver();
    ExpectRewriteFails(About("checkpoint record body", "fread", "Checkpoint", "Undefined"), ShortRead(3, 1));
    EXPECT_EQ(ReadFile(kCkFile).size(), 32U);
}

TEST_F(ReplayCheckpoint, ALengthAboveTheBlocksizeIsNotCopied) {
    const std::string badLength("\1\0\1\0\1\0\0\0", 8);
    WriteFile(kCkFile, CkBytes(3, {"a"}) + badLength + std::string(70000, 'x'));
    BeginCheckpointing();
    EXPECT_EQ(SetPos({3, 0, 0}).returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "a"));
    TakePosition();
    PassOver();
    ExpectRewriteFails(
        ExpectedError(kResetCkptFile, "checkpoint record length").Processing("Checkpoint", "Undefined"),
        "MQA0152: <!ERROR! Invalid record length (65537), read 65536>");
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"a"}) + badLength + std::string(70000, 'x'));
}

TEST_F(ReplayCheckpoint, AtLevel1TheTemporaryFileAndATornRecordAreJobEvents) {
    WriteFile(kCkFile, CkBytes(3, {"a", "bb"}).substr(0, 4 + 9 + 8 + 1));
    BeginCheckpointing("", 1);
    EXPECT_EQ(SetPos({3, 0, 0}).returnCode, pmrcOK);
    EXPECT_TRUE(Gives(Read(), "a"));
    TakePosition();
    PassOver();
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    EXPECT_EQ(trace.NewLines(),
              Chain({TempNamed(),
                     {Error(kResetCkptFile, ShortRead(2, 1))},
                     About("checkpoint record body", "fread", "Checkpoint", "Undefined").TraceLines(),
                     kNotCommitted}));
}

TEST_F(ReplayCheckpoint, AnOldFileThatCannotBeDeletedFailsAndBothFilesStay) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Remove, .file = kCkFile, .error = EACCES});
    ExpectRewriteFails(Named(151, "Temp Checkpoint file (" + TempFile() + ") delete failed.", EACCES));
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"a", "bb", "ccc", "dddd"}));
    EXPECT_EQ(ReadFile(TempFile()), Rewritten());
    EXPECT_THAT(faults->log, Not(Contains(testing::StartsWith("rename"))));
}

TEST_F(ReplayCheckpoint, AnOldFileThatNoLongerExistsIsNotAFailure) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Remove, .file = kCkFile, .error = ENOENT, .carriedOut = true});
    EXPECT_TRUE(Gives(Read(), "ccc"));
    EXPECT_EQ(faults->Struck(), 1);
    EXPECT_EQ(ReadFile(kCkFile), Rewritten());
}

TEST_F(ReplayCheckpoint, ATemporaryFileThatCannotBeRenamedFailsAndStays) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Rename, .file = "MQAMtmp", .error = EACCES});
    ExpectRewriteFails(Named(150, "Temp Checkpoint file (" + TempFile() + ") rename failed.", EACCES));
    EXPECT_FALSE(FileExists(kCkFile));
    EXPECT_EQ(ReadFile(TempFile()), Rewritten());
    EXPECT_THAT(faults->log, Not(Contains("open ck.dat rb+")));
}

TEST_F(ReplayCheckpoint, ANewFileThatCannotBeOpenedFails) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Open, .file = kCkFile, .error = EMFILE});
    ExpectRewriteFails(Named(137, "Checkpoint file (ck.dat) open failed.", EMFILE));
    EXPECT_EQ(ReadFile(kCkFile), Rewritten());
}

TEST_F(ReplayCheckpoint, ANewFileThatCannotBeReadUpToTheUndeliveredRecordsFails) {
    BeginInTheMiddle();
    // Before this point the file has been read five times: three lengths, the last of which meets the end of
    // the file, and two records.
    faults->Add({.call = FileCall::Read, .file = kCkFile, .nth = 6, .transferred = 9});
    ExpectRewriteFails(About("'positioning' read", "fread", "Checkpoint"), ShortRead(14, 9));
    EXPECT_EQ(ReadFile(kCkFile), Rewritten());
}

TEST_F(ReplayCheckpoint, WithoutItsFileTheReplayFailsOnAndTouchesNone) {
    BeginInTheMiddle();
    faults->Add({.call = FileCall::Rename, .file = "MQAMtmp", .error = EACCES});
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    PassOver();
    mq.PutMessage("from the queue");
    EXPECT_EQ(Read().returnCode, pmrcFailure);
    TakePosition();
    EXPECT_TRUE(FailsWith(Read(), ExpectedError(kResetCkptFile, "empty checkpoint file")));
    EXPECT_EQ(SetPos({5, 0, 0}).returnCode, pmrcFailure);
    EXPECT_EQ(mq.Sequence(), "");
    EXPECT_THAT(CallsOn("MQAMtmp"), ElementsAre());
    EXPECT_EQ(ReadFile(TempFile()), Rewritten());
}

TEST_F(ReplayCheckpoint, WithoutMemoryForARecordTheCheckpointFileStaysAsItIs) {
    BeginInTheMiddle();
    const std::string before = ReadFile(kCkFile);
    faults->Add({.call = FileCall::Allocate, .bytes = 65536 + 8});
    EXPECT_TRUE(FailsWith(Read(), ExpectedError(kResetCkptFile, "memory allocation failed")));
    EXPECT_EQ(faults->Struck(), 1);
    EXPECT_EQ(ReadFile(kCkFile), before);
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(ReplayCheckpoint, ARestartAfterItReturnsTheLastRecordAndTheRest) {
    BeginInTheMiddle();
    EXPECT_TRUE(Gives(Read(), "ccc"));

    StartNewProcess();
    BeginCheckpointing();
    EXPECT_EQ(SetPos({4, 2, 13}).returnCode, pmrcOK);
    EXPECT_THAT(ReadAll(3), ElementsAre("bb", "ccc", "dddd"));
    EXPECT_EQ(TakePosition().CkPtMsgCount, 4);
}

// Whichever single call fails, one file still contains a header and the records that were not delivered.
struct Failing {
    FileCall call;
    const char* file;
    int nth;
};

class FailingRewrite : public ReplayCheckpoint, public testing::WithParamInterface<Failing> {};

TEST_P(FailingRewrite, LosesNoUndeliveredRecord) {
    BeginInTheMiddle();
    const auto& [call, file, nth] = GetParam();
    faults->Add({.call = call, .file = file, .nth = nth, .error = ENOSPC});
    const ReadOutcome read = Read();
    ASSERT_EQ(faults->Struck(), 1) << "the rewrite makes fewer such calls";
    EXPECT_EQ(read.returnCode, pmrcFailure);
    const std::string undelivered = CkRecords({"ccc", "dddd"});
    std::size_t survivors = 0;
    for (const std::string& path : {std::string(kCkFile), TempFile()}) {
        if (FileExists(path) && ReadFile(path).ends_with(undelivered)) ++survivors;
    }
    EXPECT_GE(survivors, 1U);
    EXPECT_EQ(mq.Sequence(), "");
}

INSTANTIATE_TEST_SUITE_P(
    Calls, FailingRewrite,
    testing::Values(Failing{FileCall::Open, "MQAMtmp", 1}, Failing{FileCall::Write, "MQAMtmp", 1},
                    Failing{FileCall::Write, "MQAMtmp", 2}, Failing{FileCall::Write, "MQAMtmp", 3},
                    Failing{FileCall::Write, "MQAMtmp", 4}, Failing{FileCall::Read, kCkFile, 1},
                    Failing{FileCall::Read, kCkFile, 2}, Failing{FileCall::Read, kCkFile, 3},
                    Failing{FileCall::Read, kCkFile, 4}, Failing{FileCall::Read, kCkFile, 5},
                    Failing{FileCall::Read, kCkFile, 6}, Failing{FileCall::Remove, kCkFile, 1},
                    Failing{FileCall::Rename, "MQAMtmp", 1}, Failing{FileCall::Open, kCkFile, 1}));

}  // namespace
