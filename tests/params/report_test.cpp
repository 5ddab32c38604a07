// SPDX-License-Identifier: Apache-2.0

// Tests the report of the parameters in effect: its lines, their order, and its two forms.
#include "tests/params/params_fixture.h"
#include "tests/support/fake_clock.h"
#include "tests/support/host_log_double.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {

class ReportTest : public ParamsFixture {
  protected:
    void ExpectPrinted(const std::string& keywords, const ExpectedParameters& parameters) {
        FakeClock clock(module);
        const std::string now = TimeOfDay(clock.now);
        ASSERT_TRUE(Succeeds(Init(Required(keywords))));
        EXPECT_EQ(PrintedAtOpen(), ExpectedReport().AddBanner(now).AddParameters(now, parameters).Console());
    }
};

TEST_F(ReportTest, OfTheDefaultsIsPrintedAtOpen) {
    ExpectPrinted("", {});
}

TEST_F(ReportTest, OfEveryOtherValueIsPrintedAtOpen) {
    ExpectedParameters parameters;
    parameters.queueManager = "Queue Manager Name: 'QM.two'";
    parameters.queue = "Queue Name: 'Q/two'";
    parameters.checkpoint = "Checkpoint: File-based to pathname ck.dat";
    parameters.mediaFlush = "Media flush: Yes";
    parameters.logging = {"Logging pathname: 'log.dat'", "Terminate on Log failure: no"};
    parameters.duplicates = "Terminate on duplicate message: no";
    parameters.convert = "MQ convert message data to CCSID: 1208\n";
    parameters.queueOpen = "Queue open: EXCLUSIVE.";
    parameters.blockSize = "BlockSize: 32000";
    parameters.tenacity = "MQ open retry tenacity: 61";
    parameters.waitInterval = "MQ open wait interval: 7";
    parameters.readWait = "MQ read wait interval: indefinite";
    ExpectPrinted(
        "-QMGR QM.two -QNM Q/two -CKFILE ck.dat -FLUSH yes -LOG log.dat -TLF no -TDM no -CONVERT 1208 -MQEX "
        "-BKSZ 32000 -OTENACITY 61 -OWAIT 7 -RWAIT -1",
        parameters);
}

TEST_F(ReportTest, IsPassedToTheHostsLogInItsOwnForm) {
    HostLogDouble log;
    ExpectedParameters parameters;
    parameters.convert = "MQ convert message data to CCSID: 37\n";
    ASSERT_TRUE(Succeeds(Init(Required("-CONVERT 37"))));
    ASSERT_TRUE(Succeeds(PutAttributeBytes("ZBQ_HL_LOG_HANDLE", log.HandleBytes())));
    const ExpectedReport expected = ExpectedReport().AddBanner("").AddParameters("", parameters);
    EXPECT_EQ(log.report, expected.HostLog());
    EXPECT_EQ(PrintedAtOpen(), expected.HostLog()) << "with the host's log, Open prints that form too";
}

TEST_F(ReportTest, QueueManagerIsNotTraced_Kept) {
    EXPECT_THAT(TraceOfInit(""), Not(Contains(HasSubstr("Queue Manager Name"))));
}

TEST_F(ReportTest, HeadingHasTheTimeOfTheLastBanner_Kept) {
    FakeClock clock(module);
    const std::string first = TimeOfDay(clock.now);
    ASSERT_EQ(Id().returnCode, pmrcOK);  // the first call shows the banner
    clock.Advance(3661);
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_EQ(PrintedAtOpen(), ExpectedReport().AddBanner(first).AddParameters(first, {}).Console());
}

TEST_F(ReportTest, HeadingHasTheTimeOfTheBannerThatStartsTheTrace) {
    FakeClock clock(module);
    const std::string first = TimeOfDay(clock.now);
    ASSERT_EQ(Id().returnCode, pmrcOK);
    clock.Advance(3661);
    ASSERT_TRUE(Succeeds(Init(Required("-TRCL 1 trace.txt"))));
    EXPECT_EQ(PrintedAtOpen(),
              ExpectedReport().AddBanner(first).AddParameters(TimeOfDay(clock.now), {}).Console());
}

TEST_F(ReportTest, LongPathIsCutWhereAMessageEnds) {
    const std::string path(2000, 'k');
    ExpectedParameters parameters;
    parameters.checkpoint = Cut("Checkpoint: File-based to pathname " + path);
    parameters.logging = {Cut("Logging pathname: '" + path), "Terminate on Log failure: yes"};
    ExpectPrinted("-CKFILE " + path + " -LOG " + path, parameters);
}

}  // namespace
