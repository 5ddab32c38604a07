// SPDX-License-Identifier: Apache-2.0

// Implements the lines of a trail: the steps of the table in trail_player.cpp.
#include <algorithm>

#include "tests/recovery/trails/trail_player.h"

// ---- what the host does

void Trail::InitOpen(const Numbers&) {
    if (!initialized) InitModule(Keywords(), true);
    EXPECT_FALSE(Keeps("H21") && queue.AnyInLimbo()) << "Open would have failed with 2042";
    EXPECT_TRUE(Succeeds(OpenModule()));
}

void Trail::InitOpenUnpreserved(const Numbers&) {
    InitModule(Keywords(), false);
    EXPECT_TRUE(Succeeds(OpenModule()));
}

void Trail::InitOpenUnreachable(const Numbers&) {
    InitModule(Keywords(), true);
    MqOutcome failure;
    failure.compCode = MQCC_FAILED;
    failure.reason = MQRC_Q_MGR_NOT_AVAILABLE;
    mq.onConnx.push_back(failure);
    EXPECT_EQ(OpenModule().returnCode, pmrcFailure);
}

void Trail::OpenAgain(const Numbers&) {
    EXPECT_EQ(OpenModule().returnCode, pmrcOK);
    running = true;
}

void Trail::GetPosition(const Numbers& numbers) {
    if (!initialized) InitModule(Keywords(), true);
    TakePosition();
    ASSERT_TRUE(given.has_value());
    EXPECT_EQ(given->data.CkPtSeq, numbers[0]);
    if (dies_ && Keeps("T2")) durable = target.size();
}

void Trail::GetPositionAgain(const Numbers&) {
    EXPECT_FALSE(GetPos().given);
}

void Trail::Store(const Numbers& numbers) {
    if (Keeps("T2")) durable = target.size();
    StorePosition();
    EXPECT_EQ(stored->data.CkPtSeq, numbers[0]);
    EXPECT_EQ(stored->records, static_cast<std::size_t>(numbers[1]));
}

void Trail::LeaveStored(const Numbers& numbers) {
    ASSERT_TRUE(given && stored);
    EXPECT_EQ(given->data.CkPtSeq, numbers[0]);
    EXPECT_EQ(stored->data.CkPtSeq, numbers[0]);
    given.reset();
}

void Trail::SetPosition(const Numbers& numbers) {
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->data.CkPtSeq, numbers[0]);
    GoBack();
}

void Trail::ReadRecord(const Numbers&) {
    ReadOne(meets_, slowly_);
}

void Trail::CheckRepeat(const Numbers& numbers) {
    EXPECT_EQ(NameOf(repeat), std::to_string(numbers[0]));
    ASSERT_FALSE(target.empty());
    EXPECT_EQ(target.back(), repeat);
}

void Trail::CloseLoad(const Numbers&) {
    EXPECT_EQ(CloseModule().returnCode, pmrcOK);
    if (dies_ && !Keeps("H24")) PutRestartFiles({});
}

void Trail::EndWithoutClose(const Numbers&) {
    EndProcess();
}

void Trail::StopLoad(const Numbers&) {}

void Trail::LoseToOther(const Numbers& numbers) {
    QueuedMessage& message = queue.messages[numbers[0]];
    EXPECT_EQ(message.stands, Stands::OnQueue);
    message.stands = Stands::Gone;
    message.takenByOther = true;
}

void Trail::CallDone(const Numbers& numbers) {
    EXPECT_EQ(target.size(), static_cast<std::size_t>(numbers[0]));
    done = true;
}

// ---- what happens inside a request

void Trail::DieAfterGet(const Numbers&) {
    DieAt("after GET");
}

void Trail::DieInSave(const Numbers&) {
    DieAt(std::string("flush ") + kCheckpointFile);
}

void Trail::DieAfterCommit(const Numbers&) {
    DieAt("after CMIT");
}

/// Makes the process die after it wrote the checkpoint file again: in a Read before MQGET, in any other
/// request before the next flush of all streams.
void Trail::DieAfterRewrite(const Numbers&) {
    const std::string rewrite = std::string("write ") + kCheckpointFile;
    DieAt(request_ == "Read" ? "before GET" : "flush all", rewrite);
}

void Trail::DieInTemporary(const Numbers&) {
    DieAt(std::string("flush ") + kTemporaryPrefix);
    leaves = Leaves::Flushed;
}

void Trail::DieBeforeRename(const Numbers&) {
    DieAt(std::string("rename ") + kTemporaryPrefix);
    leaves = Leaves::Flushed;
}

void Trail::DieAfterRename(const Numbers&) {
    DieAt(std::string("open ") + kCheckpointFile + " rb+");
    leaves = Leaves::Flushed;
}

void Trail::DieInHost(const Numbers&) {
    dies_ = true;
}

void Trail::LeaveBytes(const Numbers& numbers) {
    ASSERT_EQ(numbers[0], 0);
    leaves = Leaves::Flushed;
}

void Trail::CheckBytes(const Numbers& numbers) {
    EXPECT_EQ(ReadFile(kCheckpointFile).size(), static_cast<std::size_t>(numbers[0]));
}

void Trail::LeaveRecordShort(const Numbers&) {
    leaves = Leaves::RecordInPart;
}

void Trail::LoseLastRecord(const Numbers&) {
    losesLastRecord_ = true;
}

void Trail::StayUnnoticed(const Numbers&) {
    noticed = false;
}

void Trail::MeetFailure(const Numbers&) {
    meets_ = GetMeets::FailureConnected;
}

void Trail::MeetBrokenConnection(const Numbers&) {
    meets_ = GetMeets::FailureBroken;
}

void Trail::MeetWarning(const Numbers&) {
    meets_ = GetMeets::Warning;
}

void Trail::MeetTimeout(const Numbers&) {
    meets_ = GetMeets::Timeout;
    EXPECT_TRUE(Succeeds(PutAttribute("TIMEOUT_SECONDS", std::to_string(kTimeoutSeconds))));
}

void Trail::FailFile(FileCall call, int nth, const std::string& file) {
    faults->Add({.call = call, .file = file, .nth = nth});
}

void Trail::FailRewrite(const Numbers&) {
    FailFile(FileCall::Write, 1);
}

void Trail::FailTemporary(const Numbers&) {
    FailFile(FileCall::Flush, 1, kTemporaryPrefix);
}

/// Makes the second read fail: the first one reads the length of the record, the second one its bytes.
void Trail::FailReplay(const Numbers&) {
    FailFile(FileCall::Read, 2);
}

void Trail::FailSetPos(const Numbers&) {
    FailFile(FileCall::Read, 1);
}

/// Makes the next ftell fail. Unlike a failed write, it does not set the stream's error indicator, after
/// which nothing would be committed.
void Trail::FailPlace(const Numbers&) {
    faults->Add({.call = FileCall::Tell, .file = kCheckpointFile, .streamError = false});
}

void Trail::FailBackOut(const Numbers&) {
    MqOutcome failure;
    failure.compCode = MQCC_FAILED;
    failure.reason = 2195;
    mq.onBack.push_back(failure);
}

void Trail::FailLog(const Numbers&) {
    FailFile(FileCall::Write, 1, kMessageLog);
}

void Trail::CommitOfSender(const Numbers& numbers) {
    EXPECT_EQ(queue.messages[numbers[0]].stands, Stands::Unsent);
    queue.messages[numbers[0]].stands = Stands::OnQueue;
}

void Trail::BackOutLate(const Numbers& numbers) {
    EXPECT_EQ(queue.messages[numbers[0]].stands, Stands::InLimbo);
    queue.NoticeDeaths();
}

void Trail::BeSlow(const Numbers&) {
    slowly_ = true;
}

/// Makes an end of input that would be quick late, as if the clock were wrong. One that is late anyway needs
/// no preparation.
void Trail::BeSlowByClock(const Numbers&) {
    if (Defined("CLOCK", 1) == 0) slowly_ = true;
}

void Trail::CheckRewrite(const Numbers& numbers) {
    const auto& log = faults->log;
    EXPECT_NE(std::find(log.begin(), log.end(), std::string("open ") + kCheckpointFile + " wb+"), log.end());
    if (running) {
        EXPECT_EQ(PictureOf(ReadFile(kCheckpointFile)).sequence, numbers[0]);
    }
}

void Trail::CheckReplacement(const Numbers& numbers) {
    const CheckpointPicture picture = PictureOf(ReadFile(kCheckpointFile));
    EXPECT_EQ(picture.sequence, numbers[0]);
    EXPECT_GT(picture.offsets.size(), static_cast<std::size_t>(numbers[1]));
}

void Trail::CheckDelivered(const Numbers& numbers) {
    EXPECT_EQ(queue.Delivered(), numbers[0]);
}

void Trail::CheckRecord(const Numbers& numbers) {
    EXPECT_EQ(lastRead.returnCode, pmrcOK) << lastRead.errorText;
    EXPECT_EQ(NameOf(lastRead.record), numbers[0] == 0 ? "\"\"" : std::to_string(numbers[0]));
}

void Trail::CheckSlowEnd(const Numbers&) {
    EXPECT_EQ(lastRead.returnCode, pmrcEOF) << lastRead.errorText;
    EXPECT_TRUE(lastReadSlow);
}

void Trail::CheckQuickEnd(const Numbers&) {
    EXPECT_EQ(lastRead.returnCode, pmrcEOF) << lastRead.errorText;
    EXPECT_FALSE(lastReadSlow);
}

void Trail::CheckTimeout(const Numbers&) {
    EXPECT_EQ(lastRead.returnCode, pmrcTimeout);
}

/// Checks that the last Read failed, or the SetPos if that was the attempt's only request.
void Trail::CheckFailure(const Numbers&) {
    EXPECT_EQ(lastSetPos.returnCode == pmrcFailure ? lastSetPos.returnCode : lastRead.returnCode,
              pmrcFailure);
}

void Trail::CheckReplayBegins(const Numbers& numbers) {
    EXPECT_EQ(lastSetPos.returnCode, pmrcOK) << lastSetPos.errorText;
    const CheckpointPicture picture = PictureOf(ReadFile(kCheckpointFile));
    EXPECT_EQ(picture.sequence, numbers[0]);
    EXPECT_EQ(picture.offsets.size(), static_cast<std::size_t>(numbers[2]));
    std::size_t first = 1;
    if (stored->data.CkPtSeq != picture.sequence) {
        const auto offset = static_cast<std::size_t>(stored->data.CkPtOffset);
        first += static_cast<std::size_t>(
            std::lower_bound(picture.offsets.begin(), picture.offsets.end(), offset) -
            picture.offsets.begin());
    }
    EXPECT_EQ(first, static_cast<std::size_t>(numbers[1]));
}
