// SPDX-License-Identifier: Apache-2.0

// Tests the Open request: its checks, the arguments of MQOPEN, and the outputs for the host.
#include <gmock/gmock.h>

#include <cstring>

#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

std::string Bytes(const MQOD& descriptor) {
    return std::string(reinterpret_cast<const char*>(&descriptor), sizeof descriptor);
}

std::string DescriptorOf(const std::string& queue) {
    MQOD descriptor = MqodDefault();
    std::memcpy(descriptor.ObjectName, queue.data(), queue.size());
    return Bytes(descriptor);
}

template <typename T>
T Field(const Outcome& outcome, std::size_t offset) {
    T value{};
    std::memcpy(&value, outcome.data.data() + offset, sizeof value);
    return value;
}

void ExpectOutputs(const Outcome& outcome, std::uint32_t blockSize) {
    EXPECT_EQ(Field<std::uint32_t>(outcome, offsetof(OpenBlock, maxRecordBytes)), blockSize);
    EXPECT_EQ(Field<std::uint16_t>(outcome, offsetof(OpenBlock, zero0)), 0);
    EXPECT_EQ(Field<std::uint64_t>(outcome, offsetof(OpenBlock, zero1)), 0U);
}

using OpenTest = ModuleFixture;

TEST_F(OpenTest, PassesTheQueueToMqopenOnce) {
    InitAndOpen();
    ASSERT_EQ(mq.Sequence(), "CONNX OPEN");
    EXPECT_EQ(mq.calls[1].connection, 7);
    EXPECT_EQ(mq.calls[1].object, 0) << "no queue is open before";
    EXPECT_EQ(mq.calls[1].options, 8193);
    EXPECT_EQ(Bytes(mq.calls[1].objectDescriptor), DescriptorOf("Q1"));
}

TEST_F(OpenTest, OpensExclusivelyWithMqex) {
    InitAndOpen("-MQEX");
    EXPECT_EQ(mq.calls[1].options, 8196);
}

TEST_F(OpenTest, MqexOfAnEarlierInitStaysInForce) {
    InitAndOpen("-MQEX");
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    InitAndOpen();
    EXPECT_EQ(mq.Calls(Verb::Open)[1].options, 8196);
}

TEST_F(OpenTest, PassesAQueueNameOf48CharactersWhole) {
    const std::string name = "Q." + std::string(46, 'X');
    ASSERT_TRUE(Succeeds(Init("-QMGR QM1 -QNM " + name)));
    ASSERT_TRUE(Succeeds(Open()));
    EXPECT_EQ(Bytes(mq.calls[1].objectDescriptor), DescriptorOf(name));
}

TEST_F(OpenTest, ShorterQueueNameOfALaterInitLeavesNothingOfTheEarlierOne) {
    ASSERT_TRUE(Succeeds(Init("-QMGR QM1 -QNM LONGER.QUEUE.NAME")));
    ASSERT_TRUE(Succeeds(Open()));
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    InitAndOpen();
    EXPECT_EQ(Bytes(mq.Calls(Verb::Open)[1].objectDescriptor), DescriptorOf("Q1"));
}

TEST_F(OpenTest, ReturnsTheLargestRecordToTheHost) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -BKSZ 777")));
    const Outcome outcome = Open();
    EXPECT_TRUE(Succeeds(outcome));
    ExpectOutputs(outcome, 777);
}

TEST_F(OpenTest, ReturnsTheLargestRecordToTheHostEvenIfTheCheckpointFileFails) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -BKSZ 777 -CKFILE missing/ck.dat")));
    const Outcome outcome = Open();
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_THAT(outcome.errorText,
                HasSubstr("MQA0137: <Checkpoint file (missing/ck.dat) open failed. Reason '"));
    ExpectOutputs(outcome, 777);
    EXPECT_TRUE(FailsWith(Open(), ExpectedError("PIDMMain", "Access Module limited to 1 open Queue")))
        << "the queue stays open";
}

TEST_F(OpenTest, OtherModesThanReadingAreRefused) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    for (const std::int16_t mode : std::initializer_list<std::int16_t>{0, 2, 257, -1}) {
        const Outcome outcome = Open(mode);
        EXPECT_TRUE(FailsWith(outcome, ExpectedError("PIDMMain", "Access Module is read only"))) << mode;
        EXPECT_EQ(Field<std::uint8_t>(outcome, offsetof(OpenBlock, maxRecordBytes)), kHostByte);
    }
    EXPECT_THAT(mq.calls, IsEmpty());
}

TEST_F(OpenTest, PathNameDrawsAWarningAndIsIgnored) {
    InitTraced(1);
    EXPECT_TRUE(Succeeds(Open(MQAMOD_OPEN_FOR_READING, 1)));
    EXPECT_THAT(trace.NewLines(),
                ElementsAre(WarningLine("PIDMMain", "Ignoring unnecessary pathname specification at open"),
                            InfoLine("PIDMMain", "Queue Manager open"), InfoLine("PIDMMain", "Queue open")));
}

TEST_F(OpenTest, SecondTimeFailsAndLeavesTheOpenQueueUntouched) {
    InitAndOpenTraced(2);
    mq.PutMessage("record");
    mq.Forget();
    const ExpectedError error("PIDMMain", "Access Module limited to 1 open Queue");
    EXPECT_TRUE(FailsWith(Open(), error));
    EXPECT_TRUE(FailsWith(Open(0), error)) << "the queue is looked at before the mode";
    EXPECT_THAT(mq.calls, IsEmpty());
    const std::vector<std::string> lines = trace.NewLines();
    EXPECT_THAT(lines, testing::Not(testing::Contains(HasSubstr("MQA0163"))));
    EXPECT_EQ(Read().record, "record");
}

TEST_F(OpenTest, LogFileThatCannotBeOpenedEndsItBeforeTheConnect) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -LOG missing/log.dat")));
    const Outcome outcome = Open();
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_THAT(outcome.errorText, HasSubstr("MQA0141: <Log file (missing/log.dat) open failed. Reason '"));
    EXPECT_THAT(mq.calls, IsEmpty());
}

TEST_F(OpenTest, PrintsTheReportOnEveryCallBeforeAnythingIsChecked) {
    const auto report = [&] {
        OutputCapture capture;
        Open(0);
        return capture.Finish();
    };
    EXPECT_THAT(report(), HasSubstr("MQA19080 Norvane Websphere MQ AMOD")) << "not even initialized";
    ASSERT_EQ(Init(kRequired).returnCode, pmrcOK);
    const std::string first = report();
    EXPECT_THAT(first, HasSubstr("     .        Queue Manager Name: 'QM1'\n"));
    EXPECT_EQ(report(), first);
}

}  // namespace
