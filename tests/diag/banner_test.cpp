// SPDX-License-Identifier: Apache-2.0

// Tests the identification banner: when, where and in which form it appears.
#include <gmock/gmock.h>

#include "tests/support/expected_report.h"
#include "tests/support/fake_clock.h"
#include "tests/support/host_log_double.h"
#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

using testing::ElementsAreArray;

namespace {

class BannerTest : public ModuleFixture {
  protected:
    std::string PrintedAtOpen() {
        OutputCapture capture("printed.txt");
        static_cast<void>(Open());
        return capture.Finish();
    }
    static std::vector<std::string> TraceForm() {
        std::vector<std::string> lines;
        for (const std::string& text : BannerTexts())
            lines.push_back("ShowModuleID(info): " + text);
        return lines;
    }
    std::vector<std::string> FirstLines(std::size_t count) {
        std::vector<std::string> lines = trace.Lines();
        if (lines.size() > count) lines.resize(count);
        return lines;
    }
};

TEST_F(BannerTest, HasFiveDigitNumbersWithout19082_Kept) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    std::vector<std::string> numbers;
    for (const std::string& line : SplitLines(PrintedAtOpen())) {
        if (line.rfind("**** ", 0) == 0) numbers.push_back(line.substr(14, 8));
    }
    EXPECT_THAT(numbers, testing::ElementsAre("MQA19080", "MQA19081", "MQA19083", "MQA19084", "MQA19085",
                                              "MQA19086", "MQA19087"));
}

TEST_F(BannerTest, ShowsAModuleVersionThatDiffersFromTheCodeVersion_Kept) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    const std::string printed = PrintedAtOpen();
    EXPECT_THAT(printed, testing::HasSubstr("MQA19080 Norvane Websphere MQ AMOD, Version 16.20.00.04\n"));
    EXPECT_THAT(printed, testing::HasSubstr("MQA19083 Code version 16.20.00.03\n"));
}

TEST_F(BannerTest, NamesThePlatformItWasBuiltFor) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_THAT(PrintedAtOpen(),
                testing::HasSubstr(kPathDelimiter == '/' ? "MQA19084 Compiled for 64-bit Linux\n"
                                                         : "MQA19084 Compiled for 64-bit WIN64\n"));
}

TEST_F(BannerTest, IsShownByTheFirstCallWhateverItsOption) {
    FakeClock clock(module);
    const std::string now = TimeOfDay(clock.now);
    EXPECT_EQ(Option(99).returnCode, pmrcNotSupported);
    EXPECT_EQ(PrintedAtOpen(), ExpectedReport().AddBanner(now).Console());
}

TEST_F(BannerTest, ShowsMidnightWhenTheTimeCannotBeConverted) {
    FakeClock clock(module);
    clock.LeaveTheCalendar();
    EXPECT_EQ(PrintedAtOpen(), ExpectedReport().AddBanner("00:00:00").Console());
}

TEST_F(BannerTest, IsPrintedEvenByAnOpenThatIsTheFirstCall) {
    FakeClock clock(module);
    EXPECT_EQ(PrintedAtOpen(), ExpectedReport().AddBanner(TimeOfDay(clock.now)).Console());
}

TEST_F(BannerTest, IsNotShownAgainByLaterCallsAndInits) {
    FakeClock clock(module);
    const std::string now = TimeOfDay(clock.now);
    for (int i = 0; i < 2; ++i) {
        clock.Advance(60);
        ASSERT_TRUE(Succeeds(Id()));
        ASSERT_TRUE(Succeeds(Init(kRequired)));
        ASSERT_TRUE(Succeeds(Shut()));
    }
    const std::string first = TimeOfDay(clock.now - 60);
    EXPECT_EQ(PrintedAtOpen(),
              ExpectedReport().AddBanner(first).AddParameters(first, {}).AddParameters(first, {}).Console());
}

TEST_F(BannerTest, StartsTheTraceFileAndIsNotRepeatedInTheReportTexts) {
    FakeClock clock(module);
    HostLogDouble log;
    const std::string now = TimeOfDay(clock.now);
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -TRCL 2 trace.txt")));
    EXPECT_THAT(FirstLines(6), ElementsAreArray(TraceForm()));
    const ExpectedReport report = ExpectedReport().AddBanner(now).AddParameters(now, {});
    EXPECT_EQ(PrintedAtOpen(), report.Console());
    ASSERT_TRUE(Succeeds(PutAttributeBytes("ZBQ_HL_LOG_HANDLE", log.HandleBytes())));
    EXPECT_EQ(log.report, report.HostLog());
}

TEST_F(BannerTest, LinesInTheTraceFileHaveATime) {
    FakeClock clock(module);
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -TRCL 1 trace.txt")));
    EXPECT_EQ(SplitLines(trace.Text())[2],
              TimeOfDay(clock.now) + ": ShowModuleID(info): Code version 16.20.00.03");
}

TEST_F(BannerTest, IsWrittenByEachInitThatOpensATraceFile) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -TRCL 1 first.txt")));
    ASSERT_TRUE(Succeeds(Shut()));
    ASSERT_TRUE(Succeeds(Init("-TRCL 1 trace.txt")));
    EXPECT_THAT(FirstLines(6), ElementsAreArray(TraceForm()));
}

TEST_F(BannerTest, IsNotWrittenByAnInitAtLevel0) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -TRCL 1 trace.txt")));
    ASSERT_TRUE(Succeeds(Shut()));
    trace.Skip();
    ASSERT_TRUE(Succeeds(Init("-TRCL 0 trace.txt")));
    EXPECT_THAT(trace.NewLines(), testing::Not(testing::Contains(testing::HasSubstr("ShowModuleID"))));
}

}  // namespace
