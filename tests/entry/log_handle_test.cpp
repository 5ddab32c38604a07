// SPDX-License-Identifier: Apache-2.0

// Tests the host's log handle: how the log routine of the host is called, and what remains after a refusal.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>

#include "tests/support/fault_plan.h"
#include "tests/support/host_log_double.h"
#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kName[] = "ZBQ_HL_LOG_HANDLE";
constexpr char kHostLogLine[] = "MQ_ACCESSMODULE: ZBQ19080 Norvane Websphere MQ AMOD, Version 16.20.00.04\n";

class LogHandleTest : public ModuleFixture {
  protected:
    std::string ReportOfOpen() {
        OutputCapture capture;
        Open();
        return capture.Finish();
    }

    /// Checks that the value is refused, and that the trace line quotes it up to its first NUL, but at most 8
    /// bytes of it.
    void ExpectRefusal(const std::string& value) {
        trace.Skip();
        const std::string before = trace.Text();
        const Outcome outcome = PutAttributeBytes(kName, value);
        EXPECT_EQ(outcome.returnCode, pmrcBadAttrValue);
        EXPECT_FALSE(outcome.hasErrorText);
        const std::string quoted = value.substr(0, std::min<std::size_t>(value.find('\0'), 8));
        EXPECT_THAT(trace.Text().substr(before.size()),
                    testing::EndsWith(InfoLine("PIDMMain",
                                               "Attribute name: 'ZBQ_HL_LOG_HANDLE' received.  Invalid "
                                               "value ('" +
                                                   WithPlainLineEnds(quoted) +
                                                   "'). Returning 'pmrcBadAttrValue' to client.\n")));
    }

    HostLogDouble log;
};

TEST_F(LogHandleTest, ReceivesTheReportAtOnce) {
    InitTraced(1);
    EXPECT_TRUE(Succeeds(PutAttributeBytes(kName, log.HandleBytes())));
    ASSERT_EQ(log.calls, 1);
    std::string handle(sizeof(void*), '\0');
    std::memcpy(handle.data(), &log.handle, sizeof(void*));
    EXPECT_EQ(handle, log.HandleBytes());
    EXPECT_THAT(log.numbers, ElementsAre(19003, 2, 3));
    EXPECT_EQ(log.firstCount, 5);
    EXPECT_EQ(log.firstByte, 0);
    EXPECT_EQ(log.secondCount, 5);
    EXPECT_TRUE(log.endedByNull);
    EXPECT_THAT(log.report, testing::StartsWith(kHostLogLine));
    EXPECT_THAT(log.report, HasSubstr("MQ_ACCESSMODULE: ZBQ19087 MQAM Parameters in effect:\n"));
    EXPECT_THAT(trace.NewLines(), IsEmpty()) << "acceptance has no trace line of its own";
}

TEST_F(LogHandleTest, MakesOpenPrintTheHostLogForm) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    ASSERT_TRUE(Succeeds(PutAttributeBytes(kName, log.HandleBytes())));
    EXPECT_EQ(ReportOfOpen(), log.report);
    EXPECT_EQ(log.calls, 1);
}

TEST_F(LogHandleTest, RefusedByTheHostStillMakesOpenPrintTheHostLogForm) {
    InitTraced(1);
    log.answer = 7;
    ExpectRefusal(log.HandleBytes());
    EXPECT_EQ(log.calls, 1);
    EXPECT_EQ(ReportOfOpen(), log.report);
}

TEST_F(LogHandleTest, NullIsRefusedAndNothingIsCalled) {
    InitTraced(1);
    ExpectRefusal(std::string(8, '\0'));
    EXPECT_EQ(log.calls, 0);
    EXPECT_THAT(ReportOfOpen(), Not(HasSubstr("**** ")));
}

TEST_F(LogHandleTest, WithoutAFunctionTableIsRefused) {
    InitTraced(1);
    log.DropTable();
    ExpectRefusal(log.HandleBytes());
    EXPECT_EQ(log.calls, 0);
}

TEST_F(LogHandleTest, WithoutALogRoutineIsRefused) {
    InitTraced(1);
    log.DropRoutine();
    ExpectRefusal(log.HandleBytes());
    EXPECT_EQ(log.calls, 0);
}

TEST_F(LogHandleTest, LongerValueIsCutToEightBytes) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_EQ(PutAttributeBytes(kName, log.HandleBytes() + std::string(56, 'x')).returnCode, pmrcOK);
    EXPECT_EQ(log.calls, 1);
}

TEST_F(LogHandleTest, ShorterValueKeepsNothingOfAnEarlierHandle) {
    InitTraced(1);
    ASSERT_EQ(PutAttributeBytes(kName, log.HandleBytes()).returnCode, pmrcOK);
    ExpectRefusal("");
    ExpectRefusal(std::string(4, '\0'));
    EXPECT_EQ(log.calls, 1);
}

TEST_F(LogHandleTest, WithoutMemoryFailsButIsNoted) {
    FaultPlan faults(module);
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    faults.Add({.call = FileCall::Allocate, .file = "", .bytes = 5});
    EXPECT_TRUE(FailsWith(PutAttributeBytes(kName, log.HandleBytes()),
                          ExpectedError("PIDMMain", "memory allocation failed")));
    EXPECT_EQ(faults.Struck(), 1);
    EXPECT_EQ(log.calls, 0);
    EXPECT_THAT(ReportOfOpen(), testing::StartsWith(kHostLogLine));
}

TEST_F(LogHandleTest, LastsThroughShutAndInit) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    ASSERT_TRUE(Succeeds(PutAttributeBytes(kName, log.HandleBytes())));
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_THAT(ReportOfOpen(), testing::StartsWith(kHostLogLine));
    EXPECT_EQ(log.calls, 1);
}

}  // namespace
