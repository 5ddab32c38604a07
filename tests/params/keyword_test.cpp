// SPDX-License-Identifier: Apache-2.0

// Tests how a keyword is recognized: its dash, its case, its length, and whether its value is there.
#include "tests/params/params_fixture.h"
#include "tests/support/output_capture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

namespace {

using KeywordTest = ParamsFixture;

ExpectedError Unidentified(const std::string& keyword) {
    return KeywordError("MQA0100: <Error: unidentified keyword: '" + keyword + "'>");
}

ExpectedError ArgumentMissing(const std::string& token) {
    return KeywordError("MQA0164: <option " + token + ": argument missing>");
}

TEST_F(KeywordTest, DashIsOptionalAndCaseDoesNotMatter) {
    for (const char* keyword : {"-QMGR", "QMGR", "qmgr", "-QmGr", "-qmgr"}) {
        EXPECT_TRUE(Succeeds(Init(std::string("-QNM Q1 ") + keyword + " " + keyword))) << keyword;
        ASSERT_EQ(Open().returnCode, pmrcOK);
        EXPECT_EQ(mq.calls.front().queueManager.c_str(), std::string(keyword));
        StartOver();
        mq.Forget();
    }
}

TEST_F(KeywordTest, WithTwoDashesIsUnidentifiedAndQuotedWithOneInUpperCase) {
    EXPECT_TRUE(FailsWith(Init("--qmgr QM1"), Unidentified("-QMGR")));
}

TEST_F(KeywordTest, IsMatchedAsAWholeNeverByPrefix) {
    for (const char* keyword : {"QM", "QMGRX", "Q", "TRC", "MQE", "LOGS", "HELPME", "QN", "CK"}) {
        EXPECT_TRUE(FailsWith(Init(std::string(keyword) + " X"), Unidentified(keyword)));
        StartOver();
    }
}

TEST_F(KeywordTest, CkmqIsNotAcceptedAlthoughTheHelpMentionsIt_Kept) {
    EXPECT_TRUE(FailsWith(Init(Required("-CKMQ")), Unidentified("CKMQ")));
}

TEST_F(KeywordTest, DashAloneIsAnUnidentifiedEmptyKeyword) {
    EXPECT_TRUE(FailsWith(Init("-"), Unidentified("")));
}

TEST_F(KeywordTest, Of250CharactersIsNormalizedBeforeItIsQuoted) {
    EXPECT_TRUE(FailsWith(Init("-" + std::string(249, 'k')), Unidentified(std::string(249, 'K'))));
}

TEST_F(KeywordTest, Of251CharactersIsQuotedWithItsDash) {
    EXPECT_TRUE(FailsWith(Init("-" + std::string(250, 'K')), Unidentified("-" + std::string(250, 'K'))));
}

TEST_F(KeywordTest, Of251CharactersInTheInitStringIsQuotedInTheUpperCaseItCameIn) {
    EXPECT_TRUE(FailsWith(Init(std::string(251, 'k')), Unidentified(std::string(251, 'K'))));
}

TEST_F(KeywordTest, Of251CharactersInAFileIsQuotedUnchanged) {
    WriteFile("parms.txt", "-" + std::string(250, 'k') + "\n");
    EXPECT_TRUE(FailsWith(Init("-PARMFILE parms.txt"), Unidentified("-" + std::string(250, 'k'))));
}

TEST_F(KeywordTest, Of250CharactersInAFileIsNormalized) {
    WriteFile("parms.txt", "-" + std::string(249, 'k') + "\n");
    EXPECT_TRUE(FailsWith(Init("-PARMFILE parms.txt"), Unidentified(std::string(249, 'K'))));
}

TEST_F(KeywordTest, LongerThanAnyMessageIsQuotedUntilTheMessageIsFull) {
    const std::string keyword(40000, 'K');
    const Outcome outcome = Init(keyword);
    EXPECT_TRUE(FailsWith(outcome, KeywordError(Cut("MQA0100: <Error: unidentified keyword: '" + keyword))));
}

TEST_F(KeywordTest, IsTracedNormalizedAtEveryLevel) {
    LeaveTraceOpen();
    ASSERT_TRUE(Succeeds(Init("-qmgr QM1 qNm Q1 -Help -MQEX -trcl 0 x")));
    EXPECT_THAT(trace.NewLines(),
                ElementsAre("CheckParm(info): Keyword: QMGR", "CheckParm(info): Keyword: QNM",
                            "CheckParm(info): Keyword: HELP", "CheckParm(info): Keyword: MQEX",
                            "CheckParm(info): Keyword: TRCL", "ParseParms(info): Trace Level: 0"));
}

TEST_F(KeywordTest, ThatIsUnidentifiedIsTracedBeforeTheError) {
    LeaveTraceOpen();
    const Outcome outcome = Init("-bogus 1");
    std::vector<std::string> expected = {"CheckParm(info): Keyword: BOGUS"};
    for (const std::string& line : Unidentified("BOGUS").TraceLines())
        expected.push_back(line);
    EXPECT_TRUE(FailsWith(outcome, Unidentified("BOGUS")));
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(expected));
}

TEST_F(KeywordTest, Above250CharactersIsNotTraced) {
    LeaveTraceOpen();
    ASSERT_EQ(Init(std::string(251, 'K')).returnCode, pmrcFailure);
    EXPECT_THAT(trace.NewLines(), Not(Contains(HasSubstr("Keyword: "))));
}

TEST_F(KeywordTest, WithoutItsValueNamesTheTokenInTheUpperCaseItHasInTheInitString) {
    for (const char* keyword : {"TRCL", "BKSZ", "RWAIT", "OTENACITY", "OWAIT", "LOG", "TLF", "TDM", "CONVERT",
                                "FLUSH", "CKFILE", "QMGR", "QNM", "CHNL"}) {
        EXPECT_TRUE(FailsWith(Init(Required(keyword)), ArgumentMissing(keyword)));
        StartOver();
    }
    EXPECT_TRUE(FailsWith(Init("-rwait"), ArgumentMissing("-RWAIT")));
}

TEST_F(KeywordTest, WithoutItsValueInAFileNamesTheTokenUnchanged) {
    WriteFile("parms.txt", "-rWait\n");
    EXPECT_TRUE(FailsWith(Init("-PARMFILE parms.txt"), ArgumentMissing("-rWait")));
}

TEST_F(KeywordTest, TakesTheNextTokenAsItsValueWhateverItIs) {
    EXPECT_TRUE(FailsWith(Init("-QMGR -QNM Q1"), Unidentified("Q1")));
}

TEST_F(KeywordTest, GivenTwiceKeepsItsLastValue) {
    ExpectedParameters parameters;
    parameters.queue = "Queue Name: 'Q3'";
    parameters.readWait = "MQ read wait interval: 8";
    EXPECT_THAT(ReportOfInit("-QNM Q2 -RWAIT 7 -QNM Q3 -RWAIT 8"), ElementsAreArray(parameters.TraceLines()));
}

TEST_F(KeywordTest, MqexOpensTheQueueExclusively) {
    ExpectedParameters parameters;
    parameters.queueOpen = "Queue open: EXCLUSIVE.";
    EXPECT_THAT(ReportOfInit("-mqex"), ElementsAreArray(parameters.TraceLines()));
    ASSERT_TRUE(Succeeds(Open()));
    EXPECT_EQ(mq.Calls(Verb::Open).front().options, MQOO_INPUT_EXCLUSIVE + MQOO_FAIL_IF_QUIESCING);
}

TEST_F(KeywordTest, SrvrWritesItsNameToStandardOutput_Kept) {
    OutputCapture capture;
    ASSERT_TRUE(Succeeds(Init(Required("-srvr HOST -CHNL C"))));
    EXPECT_EQ(capture.Finish(), "keyword= SRVR\n");
}

TEST_F(KeywordTest, SrvrWritesItsNameToStandardOutputEvenWithoutItsValue_Kept) {
    OutputCapture capture;
    EXPECT_TRUE(FailsWith(Init(Required("-SRVR")), ArgumentMissing("-SRVR")));
    EXPECT_EQ(capture.Finish(), "keyword= SRVR\n");
}

TEST_F(KeywordTest, AfterAnErrorNoFurtherKeywordIsChecked) {
    OutputCapture capture;
    EXPECT_TRUE(FailsWith(Init("-BOGUS -SRVR HOST"), Unidentified("BOGUS")));
    EXPECT_EQ(capture.Finish(), "");
}

}  // namespace
