// SPDX-License-Identifier: Apache-2.0

// Tests Read: messages, the kinds of end of input, and failures of MQGET.
#include <gmock/gmock.h>

#include <cstring>

#include "platform/library.h"
#include "tests/support/fault_plan.h"
#include "tests/support/module_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

const std::string kEofLine = InfoLine("PIDMMain", "EOF from MQGET");

class ReadTest : public ModuleFixture {
  protected:
    static void ExpectEnd(const ReadOutcome& outcome, ReturnCode code) {
        EXPECT_EQ(outcome.returnCode, code);
        EXPECT_EQ(outcome.recordLength, 0U);
        EXPECT_FALSE(outcome.hasErrorText);
    }

    static void ExpectFailure(const ReadOutcome& outcome, const ExpectedError& error) {
        EXPECT_TRUE(FailsWith(outcome, error));
        EXPECT_EQ(outcome.recordLength, 0U);
    }
};

TEST_F(ReadTest, ReturnsMessagesInOrderByteForByte) {
    InitAndOpen("-BKSZ 300");
    recordBufferBytes = 300;
    std::string allBytes;
    for (int byte = 0; byte < 256; ++byte)
        allBytes += static_cast<char>(byte);
    for (const std::string& message : {std::string("\0", 1), allBytes, std::string(300, 'x')})
        mq.PutMessage(message);
    mq.PutMessage("");
    EXPECT_THAT(ReadAll(), ElementsAre(std::string("\0", 1), allBytes, std::string(300, 'x')));
}

TEST_F(ReadTest, OneGetARecordAndNoCommit) {
    InitAndOpen();
    mq.PutMessage("first");
    mq.PutMessage("second");
    Read();
    Read();
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN GET GET");
}

TEST_F(ReadTest, WithoutAnOpenQueueFails) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    const ExpectedError error("PIDMMain",
                              "MQA0160: <Read failed.  Queue not open.  QMName = QM1. QName = Q1.>");
    ExpectFailure(Read(), error);
    ASSERT_EQ(Open().returnCode, pmrcOK);
    ASSERT_EQ(Close().returnCode, pmrcOK);
    mq.Forget();
    ExpectFailure(Read(), error);
    EXPECT_THAT(mq.calls, IsEmpty());
}

TEST_F(ReadTest, EmptyMessageEndsTheInput) {
    InitAndOpenTraced(1);
    mq.PutMessage("");
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_THAT(trace.NewLines(), ElementsAre(kEofLine));
}

TEST_F(ReadTest, EndOfInputDoesNotStick) {
    InitAndOpen();
    mq.PutMessage("");
    ExpectEnd(Read(), pmrcEOF);
    mq.PutMessage("record");
    EXPECT_EQ(Read().record, "record");
}

TEST_F(ReadTest, SyncpointLimitEndsTheInputWithAWarning) {
    InitAndOpenTraced(1);
    for (const char* bytes : {"", "data"}) {
        mq.FailGet(MQCC_FAILED, MQRC_SYNCPOINT_LIMIT_REACHED, bytes);
        ExpectEnd(Read(), pmrcEOF);
        EXPECT_THAT(trace.NewLines(),
                    ElementsAre(WarningLine("PIDMMain",
                                            "Checkpoint capacity exceeded. No more messages can be handled "
                                            "within current unit of work.  Returning EOF.")))
            << "with " << bytes;
    }
}

TEST_F(ReadTest, MessageLongerThanTheBlockSizeFailsAndStaysOnTheQueue) {
    InitAndOpenTraced(1, "-BKSZ 5");
    recordBufferBytes = 5;
    mq.PutMessage("123456");
    const ExpectedError error =
        ExpectedError("PIDMMain", "MQA0161: <Message length > blocksize (5)>").Calling("MQGET");
    ExpectFailure(Read(), error);
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(error.TraceLines()));
    ExpectFailure(Read(), error);
}

TEST_F(ReadTest, LengthBeyondTheBlockSizeIsNeverHandedOn) {
    InitAndOpen("-BKSZ 5 -CKFILE ck.dat -LOG log.dat");
    recordBufferBytes = 5;
    MqGetOutcome message;
    message.bytes = "12345";
    message.dataLength = 6;
    mq.onGet.push_back(message);
    ExpectFailure(Read(),
                  ExpectedError("PIDMMain", "MQA0161: <Message length > blocksize (5)>").Calling("MQGET"));
}

TEST_F(ReadTest, OnlyTheCompletionCodeIdentifiesAMessage) {
    InitAndOpen();
    MqGetOutcome message;
    message.bytes = "record";
    message.reason = MQRC_NO_MSG_AVAILABLE;
    mq.onGet.push_back(message);
    EXPECT_EQ(Read().record, "record");
    EXPECT_EQ(mq.Count(Verb::Get), 1U);
}

TEST_F(ReadTest, OtherReasonWithDataFails) {
    InitAndOpenTraced(1);
    const ExpectedError notConverted =
        ExpectedError("PIDMMain", "MQA0165: <Reason code = 2119>").Calling("MQGET");
    mq.FailGet(MQCC_WARNING, 2119, "data");
    ExpectFailure(Read(), notConverted);
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(notConverted.TraceLines()));
    mq.FailGet(MQCC_FAILED, 2009, "data");
    ExpectFailure(Read(), ExpectedError("PIDMMain", "MQA0165: <Reason code = 2009>").Calling("MQGET"));
    EXPECT_EQ(mq.Count(Verb::Back), 0U);
}

TEST_F(ReadTest, FailureThatReturnsNoDataEndsTheInput) {
    InitAndOpenTraced(1);
    mq.FailGet(MQCC_FAILED, 2009);
    ExpectEnd(Read(), pmrcEOF);
    EXPECT_THAT(trace.NewLines(), ElementsAre(kEofLine));
}

TEST_F(ReadTest, DataLengthSurvivesAFailureThatLeavesIt) {
    InitAndOpen();
    mq.PutMessage("record");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    MqGetOutcome failure;
    failure.compCode = MQCC_FAILED;
    failure.reason = 2009;
    failure.leaveDataLength = true;
    mq.onGet.push_back(failure);
    ExpectFailure(Read(), ExpectedError("PIDMMain", "MQA0165: <Reason code = 2009>").Calling("MQGET"));
}

TEST_F(ReadTest, ErrorOfAnEarlierReadStaysWithALaterRecord) {
    InitAndOpen();
    mq.FailGet(MQCC_FAILED, 2009, "data");
    ASSERT_EQ(Read().returnCode, pmrcFailure);
    mq.PutMessage("record");
    const ReadOutcome outcome = Read();
    EXPECT_EQ(outcome.returnCode, pmrcOK);
    EXPECT_TRUE(
        Carries(outcome, ExpectedError("PIDMMain", "MQA0165: <Reason code = 2009>").Calling("MQGET")));
}

TEST_F(ReadTest, LogWriteFailureClearsTheRecordLength) {
    FaultPlan faults(module);
    InitAndOpen("-LOG log.dat");
    mq.PutMessage("first");
    mq.PutMessage("second");
    faults.Add({.call = FileCall::Write, .file = "log.dat", .nth = 2, .error = ENOSPC});
    ASSERT_EQ(Read().record, "first");
    ExpectFailure(Read(),
                  ExpectedError("WriteLogRec", " ").Calling("fwrite").Processing("Log", strerror(ENOSPC)));
    EXPECT_EQ(ReadFile("log.dat"), "first");
}

TEST_F(ReadTest, BeginningOfTheRecordIsShownAtLevelThree) {
    InitAndOpenTraced(3);
    const std::pair<std::string, std::string> cases[] = {
        {"hello", "message length: 5, begins: hello"},
        {"0123456789012345678901234", "message length: 25, begins: 01234567890123456789"},
        {std::string("ab\0cd", 5), "message length: 5, begins: ab"},
        {std::string("\0", 1), "message length: 1, begins: "},
    };
    for (const auto& [message, text] : cases) {
        trace.Skip();
        mq.PutMessage(message);
        ASSERT_EQ(Read().returnCode, pmrcOK);
        EXPECT_THAT(trace.NewLines(),
                    ElementsAre(InfoLine("PIDMMain", "entered for option 'Read'"), InfoLine("PIDMMain", text),
                                InfoLine("PIDMMain", "Returning to Hostlink, rc=0")));
    }
}

TEST_F(ReadTest, BeginningOfTheRecordIsNotShownAtLevelTwo) {
    InitAndOpenTraced(2);
    mq.PutMessage("hello");
    ASSERT_EQ(Read().returnCode, pmrcOK);
    EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain", "entered for option 'Read'"),
                                              InfoLine("PIDMMain", "Returning to Hostlink, rc=0")));
}

TEST_F(ReadTest, TheRecordLengthIsZeroWhileTheQueueIsRead) {
    InitAndOpen();
    const auto entryPoint = reinterpret_cast<PIDMMainFunction>(platform::FindFunction(module, "PIDMMain"));
    std::vector<char> buffer(recordBufferBytes);
    RequestBlock request{};
    request.OptCode = pmiPIDMOptRead;
    ReadBlock block{};
    block.recordLength = 77;
    block.recordBuffer = buffer.data();
    std::uint32_t duringGet = 99;
    mq.hook = [&](const MqCall& call) {
        if (call.verb == Verb::Get) duringGet = block.recordLength;
    };
    mq.PutMessage("record");
    entryPoint(&request, &block);
    EXPECT_EQ(request.ReturnCode, static_cast<std::uint32_t>(pmrcOK));
    EXPECT_EQ(duringGet, 0U);
    EXPECT_EQ(std::uint32_t{block.recordLength}, 6U);
}

}  // namespace
