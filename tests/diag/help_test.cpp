// SPDX-License-Identifier: Apache-2.0

// Tests the text of the keyword help, byte for byte, and when it appears.
#include <gmock/gmock.h>

#include "tests/diag/expected_help.h"
#include "tests/support/expected_report.h"
#include "tests/support/fake_clock.h"
#include "tests/support/host_log_double.h"
#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

using testing::HasSubstr;
using testing::Not;

namespace {

/// Returns the help in the form in which the console report contains it.
std::string Help() {
    std::string text;
    for (const char* piece : kHelpPieces)
        text += std::string(piece) + "\n";
    return text;
}

class HelpTest : public ModuleFixture {
  protected:
    std::string PrintedAtOpen() {
        OutputCapture capture("printed.txt");
        static_cast<void>(Open());
        return capture.Finish();
    }
    static std::string WithoutLastNewline(const std::string& text) { return text.substr(0, text.size() - 1); }
};

TEST_F(HelpTest, IsPrintedBetweenBannerAndParametersByteForByte) {
    FakeClock clock(module);
    const std::string now = TimeOfDay(clock.now);
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -help")));
    EXPECT_EQ(PrintedAtOpen(), ExpectedReport()
                                   .AddBanner(now)
                                   .AddConsoleLine(WithoutLastNewline(Help()))
                                   .AddParameters(now, {})
                                   .Console());
}

TEST_F(HelpTest, NeverShowsTheHeadingOfChannelAndServer_Kept) {
    ASSERT_TRUE(Succeeds(Init(std::string("-HELP ") + kRequired)));
    EXPECT_THAT(PrintedAtOpen(), Not(HasSubstr("Establish the MQ channel and server names")));
}

TEST_F(HelpTest, StatesATenacityOf60SecondsThatIsNotTheDefault_Kept) {
    ASSERT_TRUE(Succeeds(Init(std::string("-HELP ") + kRequired)));
    const std::string printed = PrintedAtOpen();
    EXPECT_THAT(printed, HasSubstr("where seconds = {1..6000}\n      Default is 60 seconds.\n"));
    EXPECT_THAT(printed, HasSubstr("MQ open retry tenacity: 5\n"));
}

TEST_F(HelpTest, IsShownOnceWhenGivenTwice) {
    FakeClock clock(module);
    const std::string now = TimeOfDay(clock.now);
    ASSERT_TRUE(Succeeds(Init(std::string("-HELP HELP ") + kRequired + " -HELP")));
    EXPECT_EQ(PrintedAtOpen(), ExpectedReport()
                                   .AddBanner(now)
                                   .AddConsoleLine(WithoutLastNewline(Help()))
                                   .AddParameters(now, {})
                                   .Console());
}

TEST_F(HelpTest, IsShownOnceWhenGivenInStringAndFile) {
    FakeClock clock(module);
    const std::string now = TimeOfDay(clock.now);
    WriteFile("parms.txt", "HELP\n-help\n");
    ASSERT_TRUE(Succeeds(Init(std::string("-HELP -PARMFILE parms.txt ") + kRequired)));
    EXPECT_EQ(PrintedAtOpen(), ExpectedReport()
                                   .AddBanner(now)
                                   .AddConsoleLine(WithoutLastNewline(Help()))
                                   .AddParameters(now, {})
                                   .Console());
}

TEST_F(HelpTest, IsShownEvenWhenInitFails) {
    FakeClock clock(module);
    const std::string now = TimeOfDay(clock.now);
    ASSERT_EQ(Init("-HELP").returnCode, pmrcFailure);
    EXPECT_EQ(PrintedAtOpen(),
              ExpectedReport().AddBanner(now).AddConsoleLine(WithoutLastNewline(Help())).Console());
}

TEST_F(HelpTest, ReachesNeitherTheHostsLogNorTheOutputOfAHostWithALog) {
    HostLogDouble log;
    ASSERT_TRUE(Succeeds(Init(std::string("-HELP ") + kRequired)));
    ASSERT_TRUE(Succeeds(PutAttributeBytes("ZBQ_HL_LOG_HANDLE", log.HandleBytes())));
    const std::string expected = ExpectedReport().AddBanner("").AddParameters("", {}).HostLog();
    EXPECT_EQ(log.report, expected);
    EXPECT_EQ(PrintedAtOpen(), expected);
}

TEST_F(HelpTest, ReachesNoTraceFile) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " -TRCL 4 trace.txt")));
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    trace.Skip();
    ASSERT_TRUE(Succeeds(Init("-TRCL 4 trace.txt -HELP")));
    EXPECT_THAT(trace.Text(), Not(HasSubstr("Command help")));
    EXPECT_THAT(PrintedAtOpen(), HasSubstr(Help()));
}

}  // namespace
