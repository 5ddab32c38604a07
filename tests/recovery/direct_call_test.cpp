// SPDX-License-Identifier: Apache-2.0

// Tests what no host can reach through the entry point: a log record without bytes, and checkpoints by MQ,
// which no keyword switches on. The tests call the routines that the requests would call.
#include <cstring>

#include "diag/error_text.h"
#include "diag/trace.h"
#include "mqi/session.h"
#include "params/parameter_report.h"
#include "params/record_buffer.h"
#include "params/settings.h"
#include "platform/environment.h"
#include "queue/close.h"
#include "queue/open.h"
#include "queue/read.h"
#include "recovery/back_out.h"
#include "recovery/checkpoint.h"
#include "recovery/checkpoint_file.h"
#include "recovery/message_log.h"
#include "recovery/position.h"
#include "recovery/replay.h"
#include "recovery/restart.h"
#include "tests/recovery/recovery_fixture.h"

namespace {

using namespace mqamod;

using testing::Contains;
using testing::ElementsAre;

constexpr std::size_t kBlockBytes = 100;

class DirectCall : public testing::Test {
  protected:
    void SetUp() override {
        ResetSettings();
        writableSettings.BKSZ = kBlockBytes;
        UseTraceFile(std::fopen("trace.txt", "a"));
        ASSERT_NE(TraceFile(), nullptr);
        SetTraceLevel(5);
    }
    void TearDown() override {
        DropLogStream();
        DropCkPtFileStream();
        FreeRecordBuffer();
        FreeErrorText();
    }
    /// Sets the module up for checkpoints by MQ, with the checkpoint file `path`.
    void CheckpointByMq(const char* path) {
        writableSettings.MqCheckpointMode = true;
        std::strcpy(writableSettings.checkpointPath, path);
        ASSERT_TRUE(AllocateRecordBuffer(kBlockBytes));
        ChooseSyncpoint(MQGMO_NO_SYNCPOINT, MQGMO_NO_SYNCPOINT);
    }
    void Connect() {
        platform::SetEnvironment("MQAMOD_MQ_LIBRARY", MqDoublePath());
        ASSERT_EQ(MqiDouble::Bind(MqDoublePath()), "");
        char name[49] = "QM1";
        MQCNO options{};
        MQHCONN connection = 0;
        MQLONG compCode = -1;
        MQLONG reason = -1;
        MQCONNX(name, &options, &connection, &compCode, &reason);
        ASSERT_EQ(compCode, MQCC_OK);
        SetConnectionHandle(connection);
        mq.Forget();
    }
    /// Connects and opens the queue.
    void Open() {
        platform::SetEnvironment("MQAMOD_MQ_LIBRARY", MqDoublePath());
        ASSERT_EQ(MqiDouble::Bind(MqDoublePath()), "");
        writableSettings.OTENACITY = 1;
        writableSettings.RWAIT = 1;
        ASSERT_EQ(OpenQueue(1, 0), pmrcOK);
    }
    static testing::AssertionResult ErrorIs(const ExpectedError& error) {
        if (ErrorText() == nullptr) return testing::AssertionFailure() << "no error text";
        if (ErrorText() != error.Text() || ErrorTextLength() != error.Size())
            return testing::AssertionFailure() << ErrorText() << "\n  expected " << error.Text();
        return testing::AssertionSuccess();
    }

    TemporaryDirectory directory;
    MqiDouble mq;
    TraceReader trace;
};

TEST_F(DirectCall, ALogRecordOfNoBytesWritesNothingAndSucceeds) {
    writableSettings.LOG = true;
    std::strcpy(writableSettings.logPath, kLogFile);
    ASSERT_EQ(OpenLogFile(), pmrcOK);
    trace.Skip();
    EXPECT_EQ(WriteLogRec("", 0), pmrcOK);
    EXPECT_THAT(trace.NewLines(), ElementsAre(Info("WriteLogRec", "Logging 0 byte record."),
                                              Info("WriteLogRec", "beginning 0 chars: ")));
    EXPECT_EQ(ReadFile(kLogFile), "");
}

TEST_F(DirectCall, ByMqANewFileReservesSpaceForOneRecord) {
    CheckpointByMq(kCkFile);
    EXPECT_EQ(OpenCkPtFile(), pmrcOK);
    DropCkPtFileStream();
    EXPECT_EQ(ReadFile(kCkFile), std::string(kBlockBytes + 8, '\0'));
}

TEST_F(DirectCall, ByMqAFileThatExistsStaysAsItIs) {
    WriteFile(kCkFile, CkBytes(3, {"kept"}));
    CheckpointByMq(kCkFile);
    EXPECT_EQ(OpenCkPtFile(), pmrcOK);
    DropCkPtFileStream();
    EXPECT_EQ(ReadFile(kCkFile), CkBytes(3, {"kept"}));
}

TEST_F(DirectCall, ByMqWithoutAPathTheFileCannotBeOpened) {
    CheckpointByMq("");
    EXPECT_EQ(OpenCkPtFile(), pmrcFailure);
    EXPECT_TRUE(ErrorIs({"OpenCkPtFile", "MQA0137: <Checkpoint file () open failed. Reason '" +
                                             std::string(std::strerror(ENOENT)) + "'>"}));
}

TEST_F(DirectCall, ByMqACheckpointIsNotSupportedYetCountsAsTaken) {
    CheckpointByMq(kCkFile);
    ASSERT_EQ(OpenCkPtFile(), pmrcOK);
    const PositionData* position = nullptr;
    EXPECT_EQ(GetPosition(position), pmrcOK);
    ASSERT_NE(position, nullptr);
    EXPECT_TRUE(CkPtPending());
    trace.Skip();
    EXPECT_EQ(DoGetPos(), pmrcNotSupported);
    EXPECT_THAT(trace.NewLines(), ElementsAre(Info("DoGetPos", "Entry"),
                                              Error("DoGetPos", "Checkpoint (GetPos) NOT committed")));
    EXPECT_FALSE(CkPtPending());
    EXPECT_TRUE(CkPtTaken());
    EXPECT_EQ(TakeNextGetSync(), MQGMO_NO_SYNCPOINT) << "the syncpoint choice is left alone";
    EXPECT_EQ(mq.Sequence(), "");
}

TEST_F(DirectCall, ByMqSetPosBacksOutAndTakesTheHostsSequence) {
    CheckpointByMq(kCkFile);
    Connect();
    const PositionData position{7, 5, 0};
    EXPECT_EQ(SetPosition(&position, sizeof position), pmrcOK);
    EXPECT_EQ(mq.Sequence(), "BACK");
    EXPECT_EQ(CkPtSeq(), 7);
    EXPECT_EQ(MsgCount(), 4);
    EXPECT_EQ(TakeNextGetSync(), MQGMO_SYNCPOINT);
    EXPECT_TRUE(ReplayFromCkPt());
    char buffer[kBlockBytes];
    std::uint32_t length = 0;
    EXPECT_EQ(ReadFromChkPt(buffer, length), ReplayRead::kNotSupported);
    EndReplay();
}

TEST_F(DirectCall, ByMqASetPosThatCannotBackOutFailsButTakesTheSequence) {
    CheckpointByMq(kCkFile);
    Connect();
    mq.onBack.push_back({.compCode = MQCC_FAILED, .reason = 2009});
    const PositionData position{8, 5, 0};
    EXPECT_EQ(SetPosition(&position, sizeof position), pmrcFailure);
    EXPECT_TRUE(ErrorIs({"BackOutMQ", "MQA0145: <MQBACK failed, reason code = 2009>"}));
    EXPECT_EQ(CkPtSeq(), 8);
    EXPECT_FALSE(ReplayFromCkPt());
}

TEST_F(DirectCall, ByMqTheReportSaysSo) {
    CheckpointByMq(kCkFile);
    trace.Skip();
    ReportParametersInEffect();
    EXPECT_THAT(trace.NewLines(), Contains(Info("ParseParms", "Checkpoint: MQ based.")));
}

TEST_F(DirectCall, ByMqOpenKeepsThePreviousRecord) {
    CheckpointByMq(kCkFile);
    Open();
    mq.PutMessage("kept");
    char buffer[kBlockBytes];
    std::uint32_t length = 0;
    ASSERT_EQ(ReadRecord(buffer, length), pmrcOK);
    EXPECT_EQ(std::string(buffer, length), "kept");
    EXPECT_TRUE(EqualsKeptRecord("kept", 4));
    EXPECT_EQ(CloseAll(MQAMOD_STOP_AT_FIRST_FAILURE), pmrcOK);
}

TEST_F(DirectCall, ByMqTheReadAfterAPositionIsNotSupportedOnce) {
    CheckpointByMq(kCkFile);
    Open();
    const PositionData* position = nullptr;
    ASSERT_EQ(GetPosition(position), pmrcOK);
    mq.PutMessage("message");
    char buffer[kBlockBytes];
    std::uint32_t length = 1;
    EXPECT_EQ(ReadRecord(buffer, length), pmrcNotSupported);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(mq.Count(Verb::Get), 0U);
    EXPECT_EQ(ReadRecord(buffer, length), pmrcOK);
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN GET") << "nothing is saved or committed by MQ's means";
    EXPECT_EQ(CloseAll(MQAMOD_STOP_AT_FIRST_FAILURE), pmrcOK);
}

TEST_F(DirectCall, ByMqARedundantGetPosIsNotSupported) {
    CheckpointByMq(kCkFile);
    const PositionData* position = nullptr;
    ASSERT_EQ(GetPosition(position), pmrcOK);
    EXPECT_EQ(GetPosition(position), pmrcNotSupported);
    EXPECT_EQ(position, nullptr);
    EXPECT_TRUE(ErrorIs(ExpectedError("PIDMMain", "Redundant GetPos request tolerated").Warning()));
}

TEST_F(DirectCall, ByMqEveryReadAfterSetPosIsNotSupported) {
    CheckpointByMq(kCkFile);
    Open();
    const PositionData position{7, 5, 0};
    ASSERT_EQ(SetPosition(&position, sizeof position), pmrcOK);
    mq.PutMessage("message");
    char buffer[kBlockBytes];
    std::uint32_t length = 1;
    for (int read = 1; read <= 2; ++read)
        EXPECT_EQ(ReadRecord(buffer, length), pmrcNotSupported);
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN BACK");
    EXPECT_TRUE(ReplayFromCkPt());
    EXPECT_EQ(CloseAll(MQAMOD_STOP_AT_FIRST_FAILURE), pmrcOK);
}

// Init refuses both kinds of checkpoints at once, but only with both can a record be replayed with
// checkpoints by MQ.
TEST_F(DirectCall, ByMqARecordReturnedEndsTheReplay) {
    WriteFile(kCkFile, CkBytes(7, {"one", "two"}));
    CheckpointByMq(kCkFile);
    writableSettings.CKFILE = true;
    Open();
    const PositionData position{7, 5, 0};
    ASSERT_EQ(SetPosition(&position, sizeof position), pmrcOK);
    char buffer[kBlockBytes];
    std::uint32_t length = 0;
    ASSERT_EQ(ReadRecord(buffer, length), pmrcOK);
    EXPECT_EQ(std::string(buffer, length), "one");
    EXPECT_FALSE(ReplayFromCkPt());
    EXPECT_EQ(CloseAll(MQAMOD_STOP_AT_FIRST_FAILURE), pmrcOK);
}

TEST_F(DirectCall, ARecordWithoutBytesIsSavedAsItsLength) {
    writableSettings.CKFILE = true;
    std::strcpy(writableSettings.checkpointPath, "empty.dat");
    ASSERT_TRUE(AllocateRecordBuffer(kBlockBytes));
    ASSERT_EQ(OpenCkPtFile(), pmrcOK);
    EXPECT_EQ(SaveRecord("", 0), pmrcOK);
    DropCkPtFileStream();
    EXPECT_EQ(ReadFile("empty.dat"), std::string(8, '\0'));
}

TEST_F(DirectCall, ABackOutThatSucceedsReportsNothing) {
    Connect();
    trace.Skip();
    EXPECT_EQ(BackOutMQ(), pmrcOK);
    EXPECT_THAT(trace.NewLines(), ElementsAre(Info("BackOutMQ", "Backing out MQ transactions via MQBACK")));
    EXPECT_EQ(ErrorText(), nullptr);
    EXPECT_EQ(mq.calls[0].connection, 7);
}

}  // namespace
