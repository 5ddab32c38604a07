// SPDX-License-Identifier: Apache-2.0

// Tests ID, and the identification that the first call of a process adds to the start-up report.
#include <gmock/gmock.h>

#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

namespace {

std::string Field(const Outcome& outcome, std::size_t offset) {
    return outcome.data.c_str() + offset;
}

std::size_t Occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

class IdRequestTest : public ModuleFixture {
  protected:
    static void ExpectIdentification(const Outcome& outcome) {
        EXPECT_EQ(outcome.returnCode, pmrcOK);
        EXPECT_EQ(Field(outcome, offsetof(IdBlock, identification)), "Norvane Websphere MQ AMOD");
        EXPECT_EQ(Field(outcome, offsetof(IdBlock, version)), "16.20.00.03");
        EXPECT_EQ(outcome.data.substr(offsetof(IdBlock, zero), 8), std::string(8, '\0'));
    }

    std::string ReportOfOpen() {
        OutputCapture capture;
        Open();
        return capture.Finish();
    }
};

TEST_F(IdRequestTest, IsServedInEveryState) {
    ExpectIdentification(Id());
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    ExpectIdentification(Id());
    ASSERT_TRUE(Succeeds(Open()));
    ExpectIdentification(Id());
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    ExpectIdentification(Id());
    EXPECT_EQ(mq.Sequence(), "CONNX OPEN CLOSE DISC");
}

TEST_F(IdRequestTest, IsTracedLikeEveryRequest) {
    InitTraced(2);
    Id();
    EXPECT_THAT(trace.NewLines(), testing::ElementsAre(InfoLine("PIDMMain", "entered for option 'ID'"),
                                                       InfoLine("PIDMMain", "Returning to Hostlink, rc=0")));
}

TEST_F(IdRequestTest, FirstCallOfTheProcessIdentifiesTheModuleOnce) {
    Id();
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_EQ(Occurrences(ReportOfOpen(), "MQA19080 Norvane Websphere MQ AMOD, Version 16.20.00.04\n"), 1U);

    ASSERT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_EQ(Occurrences(ReportOfOpen(), "MQA19080"), 1U) << "a new Init does not identify the module again";
}

TEST_F(IdRequestTest, UnsupportedFirstCallIdentifiesTheModuleToo) {
    Option(15);
    EXPECT_EQ(Occurrences(ReportOfOpen(), "MQA19080"), 1U);
}

TEST_F(IdRequestTest, UntracedEntryReachesTheReportOnlyWhenItsLevelAdmitsIt) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    Id();
    EXPECT_EQ(Occurrences(ReportOfOpen(), "entered for option"), 0U);
    ASSERT_EQ(Shut().returnCode, pmrcOK);

    // The level takes effect although its file could not be opened.
    ASSERT_EQ(Init(std::string(kRequired) + " -TRCL 2 missing/trace.txt").returnCode, pmrcFailure);
    Id();
    const std::string report = ReportOfOpen();
    EXPECT_EQ(Occurrences(report, "\nNorvane Websphere MQ AMOD/PIDMMain(info): entered for option 'ID'\n"),
              1U);
    EXPECT_EQ(Occurrences(report, "entered for option"), 1U);
}

}  // namespace
