// SPDX-License-Identifier: Apache-2.0

// Tests Init: the interface versions, the state after each outcome, and its own trace lines.
#include <gmock/gmock.h>

#include "tests/support/module_fixture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kTraced[] = "-QMGR QM1 -QNM Q1 -TRCL 2 trace.txt";

std::string ClearedField(const Outcome& outcome) {
    return outcome.data.substr(offsetof(InitBlock, clearedByInit), sizeof InitBlock::clearedByInit);
}

class InitRequestTest : public ModuleFixture {
  protected:
    ExpectedError alreadyInitialized_ = ExpectedError("PIDMMain", "already initialized").Calling("Init");
};

TEST_F(InitRequestTest, ClearsItsFieldAndInitializesTheModule) {
    const Outcome outcome = Init(kRequired);
    EXPECT_TRUE(Succeeds(outcome));
    EXPECT_EQ(ClearedField(outcome), std::string(8, '\0'));
    EXPECT_EQ(Write().returnCode, pmrcNotSupported);
}

TEST_F(InitRequestTest, EndsItsTraceWithTheStructureVersionAndTheReturn) {
    ASSERT_TRUE(Succeeds(Init(kTraced)));
    std::vector<std::string> lines = trace.NewLines();
    ASSERT_GE(lines.size(), 2U);
    lines.erase(lines.begin(), lines.end() - 2);
    EXPECT_THAT(lines, ElementsAre(InfoLine("PIDMMain", "MQGMO structure version: 3"),
                                   InfoLine("PIDMMain", "Returning to Hostlink, rc=0")));
}

TEST_F(InitRequestTest, IsNotTracedOnEntry) {
    ASSERT_TRUE(Succeeds(Init(kTraced)));
    EXPECT_THAT(trace.NewLines(), Not(Contains(testing::HasSubstr("entered for option"))));
}

TEST_F(InitRequestTest, WithOtherVersionsReturnsBadVersionAndChangesNothing) {
    const std::pair<std::uint16_t, std::uint16_t> wrong[] = {
        {1001, 2000}, {1000, 2001}, {2001, 1001}, {0, 0}};
    for (const auto& [first, second] : wrong) {
        const Outcome outcome = InitWithVersions(first, second, kRequired);
        EXPECT_EQ(outcome.returnCode, pmrcBadVersion) << first << '/' << second;
        EXPECT_FALSE(outcome.hasErrorText);
        EXPECT_EQ(ClearedField(outcome), std::string(8, static_cast<char>(kHostByte)));
    }
    EXPECT_EQ(Write().returnCode, pmrcFailure) << "the module must not be initialized";
    EXPECT_EQ(Init(kRequired).returnCode, pmrcOK);
}

TEST_F(InitRequestTest, WithOtherVersionsSilencesAnOpenTrace) {
    ASSERT_TRUE(Succeeds(Init(kTraced)));
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    trace.Skip();
    EXPECT_EQ(InitWithVersions(1001, 2000, kRequired).returnCode, pmrcBadVersion);
    Id();
    EXPECT_THAT(trace.NewLines(), IsEmpty());
}

TEST_F(InitRequestTest, FailingParametersStillInitializeTheModule) {
    const Outcome outcome = Init("-QMGR QM1");
    EXPECT_TRUE(FailsWith(outcome, ExpectedError("ParseParms",
                                                 "MQA0128: <Queue Name must be specified. Keyword: "
                                                 "QNM <name>>")));
    EXPECT_EQ(ClearedField(outcome), std::string(8, '\0'));
    EXPECT_TRUE(FailsWith(Init(kRequired), alreadyInitialized_));
    EXPECT_EQ(Shut().returnCode, pmrcOK);
    EXPECT_TRUE(Succeeds(Init(kRequired)));
}

TEST_F(InitRequestTest, FailingParametersTraceTheStructureVersionAtTheRawLevel) {
    ASSERT_TRUE(Succeeds(Init(kTraced)));
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    trace.Skip();
    const std::string version = InfoLine("PIDMMain", "MQGMO structure version: 3");

    // If the parse fails, the level is the value of the keyword. It becomes one higher only if the parse
    // succeeds.
    ASSERT_EQ(Init("-TRCL 2 trace.txt -BOGUS").returnCode, pmrcFailure);
    EXPECT_THAT(trace.NewLines(), Contains(version));
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_EQ(Init("-TRCL 1 trace.txt -BOGUS").returnCode, pmrcFailure);
    EXPECT_THAT(trace.NewLines(), Not(Contains(version)));
}

TEST_F(InitRequestTest, TwiceFailsAndTheFirstOneStaysInEffect) {
    InitAndOpen();
    mq.PutMessage("record");
    const Outcome outcome = Init("-QMGR OTHER -QNM OTHER");
    EXPECT_TRUE(FailsWith(outcome, alreadyInitialized_));
    EXPECT_EQ(ClearedField(outcome), std::string(8, static_cast<char>(kHostByte)));
    EXPECT_EQ(Read().record, "record");
}

TEST_F(InitRequestTest, TwiceWithWrongVersionsIsStillAlreadyInitialized) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_TRUE(FailsWith(InitWithVersions(1001, 2000, kRequired), alreadyInitialized_));
}

TEST_F(InitRequestTest, TwiceSilencesTracingUntilTheNextSuccessfulParse) {
    InitTraced(2);
    Init(kTraced);
    // Errors are traced at every level.
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(alreadyInitialized_.TraceLines()));
    Write();
    GetAttribute("ANY");
    EXPECT_THAT(trace.NewLines(), IsEmpty());

    Shut();
    ASSERT_TRUE(Succeeds(Init(kTraced)));
    trace.Skip();
    Write();
    EXPECT_THAT(trace.NewLines(), Contains(InfoLine("PIDMMain", "entered for option 'Write'")));
}

}  // namespace
