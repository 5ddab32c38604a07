// SPDX-License-Identifier: Apache-2.0

// Tests TRCL, which has two values. The second value is always taken as a path, even if it looks like a
// keyword, and it is read even if the first one is wrong.
#include "tests/params/params_fixture.h"

using testing::Contains;
using testing::ElementsAreArray;
using testing::Not;

namespace {

using TraceKeywordTest = ParamsFixture;

ExpectedError OutOfRange(const std::string& level) {
    return KeywordError("MQA0101: <Trace Level (TRCL) value: " + level + " must be between 0 and 4>");
}

ExpectedError TraceArgumentMissing(const std::string& token) {
    return KeywordError("MQA0164: <option " + token + ": argument missing>");
}

TEST_F(TraceKeywordTest, AcceptsLevels0To4) {
    for (const char* level : {"0", "1", "2", "3", "4", "4x"}) {
        EXPECT_TRUE(Succeeds(Init(Required(std::string("-TRCL ") + level + " trace.txt"))));
        StartOver();
    }
}

TEST_F(TraceKeywordTest, RejectsOtherLevels) {
    const std::pair<const char*, const char*> rows[] = {
        {"-1", "-1"}, {"5", "5"}, {"4294967297", "2147483647"}, {"-4294967295", "-2147483648"}};
    for (const auto& [value, shown] : rows) {
        EXPECT_TRUE(
            FailsWith(Init(Required(std::string("-TRCL ") + value + " trace.txt")), OutOfRange(shown)));
        StartOver();
    }
    EXPECT_FALSE(FileExists("trace.txt"));
}

TEST_F(TraceKeywordTest, TextWithoutDigitsIsLevel0) {
    EXPECT_TRUE(Succeeds(Init(Required("-TRCL high trace.txt"))));
    EXPECT_FALSE(FileExists("trace.txt"));
}

TEST_F(TraceKeywordTest, WithoutAPathNamesTheLevelToken_Kept) {
    EXPECT_TRUE(FailsWith(Init(Required("-TRCL 3")), TraceArgumentMissing("3")));
}

TEST_F(TraceKeywordTest, WithoutALevelNamesTheKeyword) {
    EXPECT_TRUE(FailsWith(Init(Required("-TRCL")), TraceArgumentMissing("-TRCL")));
}

TEST_F(TraceKeywordTest, BadLevelWithoutAPathReportsBothAndKeepsTheLast) {
    LeaveTraceOpen();
    EXPECT_TRUE(FailsWith(Init("-TRCL 9"), TraceArgumentMissing("9")));
    std::vector<std::string> expected = {"CheckParm(info): Keyword: TRCL"};
    for (const ExpectedError& error : {OutOfRange("9"), TraceArgumentMissing("9")}) {
        for (const std::string& line : error.TraceLines())
            expected.push_back(line);
    }
    expected.insert(expected.end(), {"PIDMMain(info): MQGMO structure version: 3",
                                     "PIDMMain(info): Returning to Hostlink, rc=34"});
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(expected)) << "the rejected level is in force";
}

TEST_F(TraceKeywordTest, BadLevelEndsTheKeywordsAfterItsPath) {
    LeaveTraceOpen();
    EXPECT_TRUE(FailsWith(Init("-TRCL 5 other.txt -MQEX"), OutOfRange("5")));
    EXPECT_THAT(trace.NewLines(), Not(Contains("CheckParm(info): Keyword: MQEX")));
    EXPECT_FALSE(FileExists("other.txt"));
}

TEST_F(TraceKeywordTest, RejectedNegativeLevelStillAdmitsWhatIsAlwaysTraced) {
    LeaveTraceOpen();
    ASSERT_EQ(Init("-TRCL -5 other.txt").returnCode, pmrcFailure);
    trace.Skip();
    EXPECT_EQ(Option(15).returnCode, pmrcNotSupported);
    EXPECT_THAT(trace.NewLines(), testing::ElementsAre("PIDMMain(info): unsupported request: 15"));
}

TEST_F(TraceKeywordTest, TakesAKeywordAsItsPath_Kept) {
    ASSERT_TRUE(Succeeds(Init(Required("-TRCL 1 -MQEX"))));
    EXPECT_THAT(TraceReader("-MQEX").Lines(), Contains("ParseParms(info): Queue open: NON-EXCLUSIVE."));
}

TEST_F(TraceKeywordTest, ThatTakesAKeywordAsItsPathLeavesItsValueUnidentified_Kept) {
    EXPECT_TRUE(FailsWith(Init("-TRCL 2 -QMGR QM1 -QNM Q1"),
                          KeywordError("MQA0100: <Error: unidentified keyword: 'QM1'>")));
}

TEST_F(TraceKeywordTest, GivenTwiceUsesTheLastPath) {
    ASSERT_TRUE(Succeeds(Init(Required("-TRCL 1 first.txt -TRCL 2 second.txt"))));
    EXPECT_FALSE(FileExists("first.txt"));
    EXPECT_THAT(TraceReader("second.txt").Lines(), Contains("ParseParms(info): Trace Level: 3"));
}

TEST_F(TraceKeywordTest, AcceptsAPathOf32766Characters) {
    EXPECT_TRUE(Succeeds(Init(Required("-TRCL 0 " + std::string(32766, 't')))));
}

TEST_F(TraceKeywordTest, RejectsALongerPath) {
    const std::string path(32767, 't');
    EXPECT_TRUE(FailsWith(Init(Required("-TRCL 0 " + path)),
                          KeywordError(Cut("MQA0103: <Trace Level (TRCL) pathname " + path))));
}

TEST_F(TraceKeywordTest, BadLevelWithALongerPathReportsBothAndKeepsTheLast) {
    LeaveTraceOpen();
    const std::string path(32767, 't');
    const ExpectedError tooLong = KeywordError(Cut("MQA0103: <Trace Level (TRCL) pathname " + path));
    EXPECT_TRUE(FailsWith(Init("-TRCL -1 " + path), tooLong));
    std::vector<std::string> expected = {"CheckParm(info): Keyword: TRCL"};
    for (const ExpectedError& error : {OutOfRange("-1"), tooLong}) {
        for (const std::string& line : error.TraceLines())
            expected.push_back(line);
    }
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(expected));
}

}  // namespace
