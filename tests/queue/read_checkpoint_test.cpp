// SPDX-License-Identifier: Apache-2.0

// Tests that a record is saved in the checkpoint file before its message is committed, and what happens if
// the record cannot be saved or the message cannot be committed.
#include <gmock/gmock.h>

#include <cstring>
#include <memory>

#include "tests/support/fault_plan.h"
#include "tests/support/module_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

/// Returns a record in the form of the checkpoint file.
std::string Stored(const std::string& record) {
    std::string bytes(8, '\0');
    const std::uint64_t length = record.size();
    std::memcpy(bytes.data(), &length, sizeof length);
    return bytes + record;
}

const std::string kFirstHeader("\1\0\0\0", 4);

class ReadCheckpointTest : public ModuleFixture {
  protected:
    void SetUp() override {
        ModuleFixture::SetUp();
        faults = std::make_unique<FaultPlan>(module);
        mq.hook = [this](const MqCall& call) {
            if (call.verb == Verb::Cmit) atCommit.push_back(ReadFile("ck.dat"));
        };
    }

    void TearDown() override {
        faults.reset();
        ModuleFixture::TearDown();
    }

    /// Reads one record, takes a checkpoint and reads another record, which is the first to be saved and
    /// committed.
    void StartCheckpointed(const std::string& keywords = "") {
        InitAndOpenTraced(1, "-CKFILE ck.dat " + keywords);
        mq.PutMessage("first");
        ASSERT_EQ(Read().record, "first");
        ASSERT_EQ(GetPos().returnCode, pmrcOK);
        mq.PutMessage("second");
        ASSERT_EQ(Read().record, "second");
        mq.Forget();
        atCommit.clear();
        trace.Skip();
        mq.PutMessage("third");
    }

    void ExpectFailedSave(const Fault& fault, const std::string& call, const std::string& reason,
                          const std::string& verbs) {
        StartCheckpointed();
        faults->Add(fault);
        const ReadOutcome outcome = Read();
        EXPECT_EQ(faults->Struck(), 1);
        EXPECT_EQ(outcome.recordLength, 0U);
        const ExpectedError error =
            ExpectedError("PIDMMain", "checkpoint").Calling(call).Processing("Checkpoint", reason);
        EXPECT_TRUE(FailsWith(outcome, error));
        EXPECT_EQ(mq.Sequence(), verbs);
        std::vector<std::string> lines = error.TraceLines();
        if (verbs == "GET BACK") {
            lines.push_back(InfoLine("BackOutMQ", "Backing out MQ transactions via MQBACK"));
        }
        EXPECT_THAT(trace.NewLines(), ElementsAreArray(lines));
    }

    std::unique_ptr<FaultPlan> faults;
    std::vector<std::string> atCommit;  ///< contents of the checkpoint file at each MQCMIT
};

TEST_F(ReadCheckpointTest, NothingIsSavedOrCommittedBeforeTheFirstCheckpoint) {
    InitAndOpen("-CKFILE ck.dat");
    mq.PutMessage("first");
    mq.PutMessage("second");
    Read();
    Read();
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN GET GET");
    EXPECT_EQ(ReadFile("ck.dat"), "");
}

TEST_F(ReadCheckpointTest, EachMessageIsGotUnderSyncpointSavedAndThenCommitted) {
    StartCheckpointed();
    ASSERT_EQ(Read().record, "third");
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_EQ(mq.calls[0].getOptions.Options, 3);
    EXPECT_EQ(mq.calls[1].connection, 7);
    EXPECT_THAT(atCommit, ElementsAre(kFirstHeader + Stored("first") + Stored("second") + Stored("third")));
}

TEST_F(ReadCheckpointTest, FirstSavedMessageFollowsTheHeaderAndTheLastRecord) {
    InitAndOpen("-CKFILE ck.dat");
    mq.PutMessage("first");
    Read();
    GetPos();
    mq.PutMessage("second");
    ASSERT_EQ(Read().record, "second");
    EXPECT_THAT(atCommit, ElementsAre(kFirstHeader + Stored("first") + Stored("second")));
}

TEST_F(ReadCheckpointTest, FailureToGetThePositionFailsAndBacksOut) {
    ExpectFailedSave({.call = FileCall::Tell, .file = "ck.dat", .error = EIO}, "fgetpos", strerror(EIO),
                     "GET BACK");
}

TEST_F(ReadCheckpointTest, ShortWriteFailsAndBacksOut) {
    ExpectFailedSave({.call = FileCall::Write, .file = "ck.dat", .error = ENOSPC, .transferred = 4}, "fwrite",
                     strerror(ENOSPC), "GET BACK");
}

TEST_F(ReadCheckpointTest, ShortWriteWithoutAStreamErrorHasAnUndefinedReason) {
    ExpectFailedSave(
        {.call = FileCall::Write, .file = "ck.dat", .error = ENOSPC, .transferred = 4, .streamError = false},
        "fwrite", "Undefined", "GET BACK");
}

TEST_F(ReadCheckpointTest, FailedFlushFailsAndBacksOut) {
    ExpectFailedSave({.call = FileCall::Flush, .file = "ck.dat", .error = ENOSPC}, "fflush", strerror(ENOSPC),
                     "GET BACK");
}

TEST_F(ReadCheckpointTest, FailedBackOutReplacesTheErrorText) {
    StartCheckpointed();
    faults->Add({.call = FileCall::Write, .file = "ck.dat", .error = ENOSPC});
    mq.onBack.push_back({MQCC_FAILED, 2009});
    EXPECT_TRUE(
        FailsWith(Read(), ExpectedError("BackOutMQ", "MQA0145: <MQBACK failed, reason code = 2009>")));
}

TEST_F(ReadCheckpointTest, FailedCommitIsAnError) {
    StartCheckpointed();
    mq.onCmit.push_back({MQCC_FAILED, 2003});
    const ReadOutcome outcome = Read();
    const ExpectedError error("PIDMMain", "MQA0143: <MQCMIT failed, reason code = 2003>");
    EXPECT_TRUE(FailsWith(outcome, error));
    EXPECT_EQ(outcome.recordLength, 0U);
    EXPECT_EQ(mq.Sequence(), "GET CMIT");
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(error.TraceLines()));
}

TEST_F(ReadCheckpointTest, CommitThatWarnsFailsTheReadWithAWarning) {
    StartCheckpointed();
    mq.onCmit.push_back({MQCC_WARNING, 2408});
    EXPECT_TRUE(FailsWith(
        Read(), ExpectedError("PIDMMain", "MQA0143: <MQCMIT failed, reason code = 2408>").Warning()));
}

TEST_F(ReadCheckpointTest, RecordOfTheFullBlockSizeIsSavedWhole) {
    recordBufferBytes = 8;
    StartCheckpointed("-BKSZ 8");
    mq.onGet.clear();
    mq.PutMessage("01234567");
    ASSERT_EQ(Read().record, "01234567");
    EXPECT_THAT(atCommit.back(), testing::EndsWith(Stored("01234567")));
}

TEST_F(ReadCheckpointTest, EndOfInputNeitherSavesNorCommits) {
    StartCheckpointed();
    mq.onGet.clear();
    mq.PutMessage("");
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(mq.Sequence(), "GET");
    EXPECT_EQ(ReadFile("ck.dat"), kFirstHeader + Stored("first") + Stored("second"));
}

}  // namespace
