// SPDX-License-Identifier: Apache-2.0

// Tests the two report texts: they only grow, they are never cleared, and they never have more than 8191
// characters.
#include <gmock/gmock.h>

#include <optional>

#include "tests/diag/expected_help.h"
#include "tests/support/expected_report.h"
#include "tests/support/fake_clock.h"
#include "tests/support/host_log_double.h"
#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

namespace {

class ReportTextTest : public ModuleFixture {
  protected:
    void SetUp() override {
        ModuleFixture::SetUp();
        if (HasFatalFailure()) return;
        clock_.emplace(module);
        now_ = TimeOfDay(clock_->now);
        expected_.AddBanner(now_);
    }
    void TearDown() override {
        clock_.reset();
        ModuleFixture::TearDown();
    }

    /// Runs Init with a log whose path has `characters` characters, and adds its report to the expected
    /// report.
    void InitWithLog(std::size_t characters) {
        const std::string path(characters, 'p');
        ASSERT_EQ(Init(std::string(kRequired) + " -LOG " + path).returnCode, pmrcOK);
        ASSERT_EQ(Shut().returnCode, pmrcOK);
        ExpectedParameters parameters;
        const std::string line = "Logging pathname: '" + path + "'";
        parameters.logging = {line.substr(0, 1023), "Terminate on Log failure: yes"};
        expected_.AddParameters(now_, parameters);
    }
    /// Returns the length of the path with which the log's line in the report of the next Init fills the
    /// console form exactly.
    [[nodiscard]] std::size_t PathLengthThatFillsTheConsole() const {
        const std::string shortest = "     .        Logging pathname: ''\n";
        ExpectedReport next = expected_;
        next.AddConsoleLine("**** " + now_ + " MQA19087 MQAM Parameters in effect:");
        for (const char* line :
             {"Queue Manager Name: 'QM1'", "Queue Name: 'Q1'", "Checkpoint: None.", "Media flush: No"})
            next.AddConsoleLine(std::string("     .        ") + line);
        return kReportTextCharacters - next.Console().size() - shortest.size();
    }
    std::string PrintedAtOpen() {
        OutputCapture capture("printed.txt");
        static_cast<void>(Open());
        return capture.Finish();
    }
    std::string PassedToTheHostsLog() {
        HostLogDouble log;
        EXPECT_EQ(Init(std::string(kRequired)).returnCode, pmrcOK);
        expected_.AddParameters(now_, {});
        EXPECT_EQ(PutAttributeBytes("ZBQ_HL_LOG_HANDLE", log.HandleBytes()).returnCode, pmrcOK);
        return log.report;
    }

    std::optional<FakeClock> clock_;
    std::string now_;
    ExpectedReport expected_;
};

TEST_F(ReportTextTest, AreNeverCleared_Kept) {
    for (int i = 0; i < 3; ++i)
        InitWithLog(10);
    EXPECT_EQ(PrintedAtOpen(), expected_.Console());
    EXPECT_EQ(PrintedAtOpen(), expected_.Console()) << "each Open prints the whole text";
    EXPECT_EQ(PassedToTheHostsLog(), expected_.HostLog());
}

TEST_F(ReportTextTest, LineThatDoesNotFitIsDroppedAsAWholeAndLaterShorterOnesAreKept) {
    for (int i = 0; i < 12; ++i)
        InitWithLog(900);
    const std::string printed = PrintedAtOpen();
    EXPECT_EQ(printed, expected_.Console());
    EXPECT_GT(printed.size(), kReportTextCharacters - 100);
    EXPECT_EQ(PassedToTheHostsLog(), expected_.HostLog());
}

TEST_F(ReportTextTest, StayWithinTheirCapacityForAnyNumberOfInits) {
    for (int i = 0; i < 60; ++i)
        InitWithLog(1 + static_cast<std::size_t>(i) * 37 % 1100);
    EXPECT_EQ(PrintedAtOpen(), expected_.Console());
    EXPECT_EQ(PassedToTheHostsLog(), expected_.HostLog());
}

TEST_F(ReportTextTest, ConsoleLineThatFillsTheTextExactlyIsKept) {
    while (expected_.Console().size() < kReportTextCharacters - 1000)
        InitWithLog(100);
    InitWithLog(PathLengthThatFillsTheConsole());
    ASSERT_EQ(expected_.Console().size(), kReportTextCharacters);
    EXPECT_EQ(PrintedAtOpen(), expected_.Console());
}

TEST_F(ReportTextTest, ConsoleLineThatIsOneCharacterTooLongIsDropped) {
    while (expected_.Console().size() < kReportTextCharacters - 1000)
        InitWithLog(100);
    InitWithLog(PathLengthThatFillsTheConsole() + 1);
    EXPECT_EQ(PrintedAtOpen(), expected_.Console());
    EXPECT_THAT(PrintedAtOpen(), testing::EndsWith("MQ read wait interval: 15\n")) << "the later lines fit";
}

TEST_F(ReportTextTest, HelpPiecesThatDoNotFitAreDroppedAsAWholeAndLaterShorterOnesAreKept) {
    while (expected_.Console().size() < kReportTextCharacters - 1900)
        InitWithLog(100);
    const std::size_t help = expected_.Console().size();
    for (const char* piece : kHelpPieces)
        expected_.AddConsoleLine(piece);
    expected_.AddParameters(now_, {});
    ASSERT_EQ(Init(std::string("-HELP ") + kRequired).returnCode, pmrcOK);
    const std::string printed = PrintedAtOpen();
    EXPECT_EQ(printed, expected_.Console());
    EXPECT_THAT(printed.substr(help), testing::HasSubstr("MQA0023:"));
    EXPECT_THAT(printed.substr(help), testing::Not(testing::HasSubstr("Neither is honored")));
}

TEST_F(ReportTextTest, EntriesThatDoNotFitAreDropped) {
    ASSERT_EQ(Init("-TRCL 3 x.txt -BOGUS").returnCode, pmrcFailure);
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(Write().returnCode, pmrcNotSupported);
        expected_.AddConsoleLine("Norvane Websphere MQ AMOD/PIDMMain(info): entered for option 'Write'");
    }
    EXPECT_EQ(PrintedAtOpen(), expected_.Console());
}

}  // namespace
