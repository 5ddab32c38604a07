// SPDX-License-Identifier: Apache-2.0

// Tests the level of each trace statement, the form of a line, and when the streams are flushed.
#include <gmock/gmock.h>

#include <cstdio>

#include "tests/support/expected_report.h"
#include "tests/support/fake_clock.h"
#include "tests/support/flush_recorder.h"
#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

namespace {

class TraceLevelTest : public ModuleFixture {
  protected:
    /// Runs Init with a trace of that level and skips what Init wrote.
    void Start(int level, const std::string& keywords = "") {
        const std::string traced = " -TRCL " + std::to_string(level) + " trace.txt ";
        ASSERT_EQ(Init(kRequired + traced + keywords).returnCode, pmrcOK);
        trace.Skip();
    }
    std::string PrintedAtOpen() {
        OutputCapture capture("printed.txt");
        static_cast<void>(Open());
        return capture.Finish();
    }
    /// Sends GetPos, Read and GetAttribute with a log in use. Returns their trace, which at the highest level
    /// contains statements of every level.
    std::vector<std::string> TraceOfARecord(int level) {
        Start(level, "-LOG log.dat -CKFILE ck.dat");
        EXPECT_TRUE(Succeeds(Open()));
        trace.Skip();
        mq.PutMessage("record");
        EXPECT_EQ(GetPos().returnCode, pmrcOK);
        EXPECT_EQ(Read().record, "record");  // takes the pending checkpoint first
        EXPECT_EQ(GetAttribute("ANY").returnCode, pmrcNotSupported);
        return trace.NewLines();
    }
    const std::string jobEvent_ = "PIDMMain(info): Attribute name: 'ANY'";
    const std::string ioEvent_ = "PIDMMain(info): entered for option 'Read'";
    const std::string ioBuffer_ = "PIDMMain(info): message length: 6, begins: record";
    const std::string detail_ = "DoGetPos(info): Entry";
    const std::string return_ = "PIDMMain(info): Returning to Hostlink, rc=0";
};

TEST_F(TraceLevelTest, Level0WritesNoFile) {
    TraceOfARecord(0);
    EXPECT_FALSE(FileExists("trace.txt"));
}

TEST_F(TraceLevelTest, Level1WritesOnlyJobEvents) {
    const std::vector<std::string> lines = TraceOfARecord(1);
    EXPECT_THAT(lines, Contains(jobEvent_));
    for (const std::string& other : {ioEvent_, return_, ioBuffer_, detail_})
        EXPECT_THAT(lines, Not(Contains(other)));
}

TEST_F(TraceLevelTest, Level2AddsIoEvents) {
    const std::vector<std::string> lines = TraceOfARecord(2);
    for (const std::string& line : {jobEvent_, ioEvent_, return_})
        EXPECT_THAT(lines, Contains(line));
    for (const std::string& other : {ioBuffer_, detail_})
        EXPECT_THAT(lines, Not(Contains(other)));
}

TEST_F(TraceLevelTest, Level3AddsIoBuffers) {
    const std::vector<std::string> lines = TraceOfARecord(3);
    for (const std::string& line : {jobEvent_, ioEvent_, return_, ioBuffer_})
        EXPECT_THAT(lines, Contains(line));
    EXPECT_THAT(lines, Not(Contains(detail_)));
}

TEST_F(TraceLevelTest, Level4AddsDetails) {
    const std::vector<std::string> lines = TraceOfARecord(4);
    for (const std::string& line : {jobEvent_, ioEvent_, return_, ioBuffer_, detail_})
        EXPECT_THAT(lines, Contains(line));
}

TEST_F(TraceLevelTest, UnsupportedRequestIsWrittenAtEveryLevel) {
    Start(1);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_TRUE(Succeeds(Init("-TRCL 0 trace.txt")));
    trace.Skip();
    EXPECT_EQ(Option(15).returnCode, pmrcNotSupported);
    EXPECT_THAT(trace.NewLines(), ElementsAre("PIDMMain(info): unsupported request: 15"));
}

TEST_F(TraceLevelTest, ErrorsAreWrittenAtEveryLevel) {
    Start(1);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_TRUE(Succeeds(Init("-TRCL 0 trace.txt")));
    trace.Skip();
    const Outcome outcome = Open(0);
    const ExpectedError error("PIDMMain", "Access Module is read only");
    EXPECT_TRUE(FailsWith(outcome, error));
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(error.TraceLines()));
}

TEST_F(TraceLevelTest, RawLevelIsInForceAfterAFailedParse_Kept) {
    Start(1);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    for (const auto& [level, lines] : {std::pair{"2", 0U}, std::pair{"3", 2U}}) {
        ASSERT_EQ(Init(std::string("-TRCL ") + level + " x.txt -BOGUS").returnCode, pmrcFailure);
        trace.Skip();
        EXPECT_EQ(Write().returnCode, pmrcNotSupported);
        EXPECT_EQ(trace.NewLines().size(), lines) << "level " << level;
        ASSERT_EQ(Shut().returnCode, pmrcOK);
    }
}

TEST_F(TraceLevelTest, LinesHaveTheTimeOfTheirStatement) {
    FakeClock clock(module);
    Start(2);
    const std::size_t before = SplitLines(trace.Text()).size();
    clock.Advance(7);
    ASSERT_EQ(Write().returnCode, pmrcNotSupported);
    clock.Advance(3600);
    ASSERT_EQ(Open(0).returnCode, pmrcFailure);
    const std::vector<std::string> lines = SplitLines(trace.Text());
    ASSERT_EQ(lines.size(), before + 6);
    const std::string first = TimeOfDay(clock.now - 3600) + ": ";
    const std::string second = TimeOfDay(clock.now) + ": ";
    EXPECT_EQ(lines[before], first + "PIDMMain(info): entered for option 'Write'");
    EXPECT_EQ(lines[before + 1], first + "PIDMMain(info): Returning to Hostlink, rc=24");
    EXPECT_EQ(lines[before + 2], second + "PIDMMain(info): entered for option 'Open'");
    EXPECT_EQ(lines[before + 3],
              second + "Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  Error message follows.");
    EXPECT_EQ(lines[before + 4], "--ERROR: Access Module is read only.");
    EXPECT_EQ(lines[before + 5], second + "PIDMMain(info): Returning to Hostlink, rc=34");
}

TEST_F(TraceLevelTest, LinesBeginWithAnEmptyStampWhenTheTimeIsUnavailable) {
    FakeClock clock(module);
    Start(2);
    const std::size_t before = SplitLines(trace.Text()).size();
    clock.Break();
    ASSERT_EQ(Open(0).returnCode, pmrcFailure);
    const std::vector<std::string> lines = SplitLines(trace.Text());
    ASSERT_EQ(lines.size(), before + 4);
    EXPECT_EQ(lines[before], ": PIDMMain(info): entered for option 'Open'");
    EXPECT_EQ(lines[before + 1], ": Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  Error message follows.");
    EXPECT_EQ(lines[before + 3], ": PIDMMain(info): Returning to Hostlink, rc=34");
}

TEST_F(TraceLevelTest, LinesBeginWithAnEmptyStampWhenTheTimeCannotBeConverted) {
    FakeClock clock(module);
    Start(2);
    const std::size_t before = SplitLines(trace.Text()).size();
    clock.LeaveTheCalendar();
    ASSERT_EQ(Open(0).returnCode, pmrcFailure);
    const std::vector<std::string> lines = SplitLines(trace.Text());
    ASSERT_EQ(lines.size(), before + 4);
    EXPECT_EQ(lines[before], ": PIDMMain(info): entered for option 'Open'");
}

TEST_F(TraceLevelTest, InitWithoutATimeStillReports) {
    FakeClock clock(module);
    clock.Break();
    Start(1);
    EXPECT_THAT(SplitLines(trace.Text()),
                Contains(": ShowModuleID(info): Norvane Websphere MQ AMOD, Version 16.20.00.04"));
    EXPECT_THAT(PrintedAtOpen(), HasSubstr("     .        Queue Manager Name: 'QM1'\n"));
}

TEST_F(TraceLevelTest, LinesCanBeReadWhileTheProcessRuns) {
    Start(2);
    ASSERT_EQ(Write().returnCode, pmrcNotSupported);
    EXPECT_THAT(trace.NewLines(), ElementsAre("PIDMMain(info): entered for option 'Write'",
                                              "PIDMMain(info): Returning to Hostlink, rc=24"));
}

TEST_F(TraceLevelTest, EntryWithoutATraceFileReachesTheConsoleReportWhenAdmitted) {
    FakeClock clock(module);
    const std::string now = TimeOfDay(clock.now);
    ASSERT_EQ(Init(std::string(kRequired) + " -TRCL 2 missing/trace.txt").returnCode, pmrcFailure);
    ASSERT_EQ(Write().returnCode, pmrcNotSupported);
    ASSERT_EQ(PutAttribute("GEN_EOF", "").returnCode, pmrcOK);
    ExpectedReport expected;
    expected.AddBanner(now)
        .AddConsoleLine("Norvane Websphere MQ AMOD/PIDMMain(info): entered for option 'Write'")
        .AddConsoleLine("Norvane Websphere MQ AMOD/PIDMMain(info): entered for option 'PutAttribute'");
    EXPECT_EQ(PrintedAtOpen(), expected.Console()) << "printed before Open itself is traced";
    expected.AddConsoleLine("Norvane Websphere MQ AMOD/PIDMMain(info): entered for option 'Open'");
    EXPECT_EQ(PrintedAtOpen(), expected.Console());
}

TEST_F(TraceLevelTest, EntryWithoutATraceFileIsNotWrittenAtLevel1) {
    FakeClock clock(module);
    ASSERT_EQ(Init(std::string(kRequired) + " -TRCL 1 missing/trace.txt").returnCode, pmrcFailure);
    ASSERT_EQ(Write().returnCode, pmrcNotSupported);
    EXPECT_EQ(PrintedAtOpen(), ExpectedReport().AddBanner(TimeOfDay(clock.now)).Console());
}

TEST_F(TraceLevelTest, EntryWithoutATraceFileReachesTheConsoleReportAtTheRawLevel3_Kept) {
    FakeClock clock(module);
    ASSERT_EQ(Init("-TRCL 3 x.txt -BOGUS").returnCode, pmrcFailure);
    ASSERT_EQ(Write().returnCode, pmrcNotSupported);
    EXPECT_EQ(PrintedAtOpen(),
              ExpectedReport()
                  .AddBanner(TimeOfDay(clock.now))
                  .AddConsoleLine("Norvane Websphere MQ AMOD/PIDMMain(info): entered for option 'Write'")
                  .Console());
}

TEST_F(TraceLevelTest, EveryStatementFlushesAllStreamsWhetherWrittenOrNot) {
    Start(0);
    FlushRecorder flushes(module);
    ASSERT_EQ(Write().returnCode, pmrcNotSupported);
    EXPECT_EQ(flushes.Sequence(), "all all") << "the return statement, not admitted, and the end of the call";
}

TEST_F(TraceLevelTest, LinesAreFlushedAtOnceAndEntryFlushesOnlyTheTrace_Kept) {
    Start(2);
    FlushRecorder flushes(module);
    ASSERT_EQ(Write().returnCode, pmrcNotSupported);
    EXPECT_EQ(flushes.Sequence(), "one one all all one");
}

TEST_F(TraceLevelTest, ErrorReportFlushesOnlyTheTrace_Kept) {
    Start(2);
    FlushRecorder flushes(module);
    ASSERT_EQ(Init(kRequired).returnCode, pmrcFailure);  // refused: already initialized
    EXPECT_EQ(flushes.Sequence(), "one all all one") << "the level is 0 from here on";
}

TEST_F(TraceLevelTest, StreamsOfTheHostAreFlushed) {
    Start(0);
    std::FILE* own = std::fopen("own.txt", "w");
    ASSERT_NE(own, nullptr);
    std::fputs("host's line", own);
    ASSERT_EQ(ReadFile("own.txt"), "");
    ASSERT_EQ(Write().returnCode, pmrcNotSupported);
    EXPECT_EQ(ReadFile("own.txt"), "host's line");
    std::fclose(own);
}

}  // namespace
