// SPDX-License-Identifier: Apache-2.0

// Tests how the initialization string is split into tokens, and -PARMFILE, the only keyword that CheckParm
// does not know.
#include "tests/params/params_fixture.h"
#include "tests/support/fault_plan.h"

using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

namespace {

class InitStringTest : public ParamsFixture {
  protected:
    ExpectedError empty_ = ParametersError("Empty initialization string");
    ExpectedError tooMany_ = ParametersError("Too many init string parameters");

    /// Sends Init with the length of the whole string, although the string contains a NUL.
    Outcome InitWithNul(const std::string& bytes) {
        return InitCounted(bytes, static_cast<std::int32_t>(bytes.size()));
    }
    static std::string Repeated(const std::string& token, int times) {
        std::string text;
        for (int i = 0; i < times; ++i)
            text += " " + token;
        return text;
    }
};

TEST_F(InitStringTest, OfLengthZeroIsEmpty) {
    EXPECT_TRUE(FailsWith(Init(""), empty_));
}

TEST_F(InitStringTest, OfLengthZeroIsEmptyWhateverItsCharacters) {
    EXPECT_TRUE(FailsWith(InitCounted(kRequired, 0), empty_));
}

TEST_F(InitStringTest, OfNegativeLengthIsEmpty) {
    EXPECT_TRUE(FailsWith(InitCounted(kRequired, -1), empty_));
    StartOver();
    EXPECT_TRUE(FailsWith(InitCounted(kRequired, INT32_MIN), empty_));
}

TEST_F(InitStringTest, NullPointerOfLengthZeroOrLessIsEmpty) {
    EXPECT_TRUE(FailsWith(InitCounted(std::nullopt, 0), empty_));
    StartOver();
    EXPECT_TRUE(FailsWith(InitCounted(std::nullopt, -7), empty_));
}

TEST_F(InitStringTest, NullPointerOfAnyLengthIsEmpty) {
    EXPECT_TRUE(FailsWith(InitCounted(std::nullopt, 20), empty_));
}

TEST_F(InitStringTest, OfDelimitersOnlyIsEmpty) {
    EXPECT_TRUE(FailsWith(Init(" \t\r\n\f  \n"), empty_));
}

TEST_F(InitStringTest, IsSplitAtFiveDelimiters) {
    ExpectedParameters parameters;
    parameters.queueOpen = "Queue open: EXCLUSIVE.";
    parameters.readWait = "MQ read wait interval: 3";
    EXPECT_THAT(ReportOfInit("\t\n-RWAIT\f3\r\n\f-MQEX \t "), ElementsAreArray(parameters.TraceLines()));
}

TEST_F(InitStringTest, OtherControlCharactersAndQuotesDelimitNothing) {
    EXPECT_TRUE(
        FailsWith(Init("-QMGR\vQM1"), KeywordError("MQA0100: <Error: unidentified keyword: 'QMGR\vQM1'>")));
    StartOver();
    EXPECT_TRUE(FailsWith(Init("-QNM 'A B'"), KeywordError("MQA0100: <Error: unidentified keyword: 'B''>")));
}

TEST_F(InitStringTest, IsReadNoFurtherThanItsLength) {
    EXPECT_TRUE(Succeeds(InitCounted("-QMGR QM1 -QNM Q1-BOGUS", 17)));
    EXPECT_EQ(Open().returnCode, pmrcOK);
    EXPECT_STREQ(mq.Calls(Verb::Open).front().objectDescriptor.ObjectName, "Q1");
}

TEST_F(InitStringTest, EndsAtANulInsideItsLength) {
    EXPECT_TRUE(Succeeds(InitWithNul(std::string("-QMGR QM1 -QNM Q1\0 -BOGUS", 25))));
}

TEST_F(InitStringTest, EndsAtANulInsideAToken) {
    EXPECT_TRUE(Succeeds(InitWithNul(std::string("-QMGR QM1 -QNM Q1\0-BOGUS", 24))));
}

TEST_F(InitStringTest, ThatBeginsWithANulIsEmpty) {
    EXPECT_TRUE(FailsWith(InitWithNul(std::string("\0-QMGR QM1 -QNM Q1", 18)), empty_));
    StartOver();
    EXPECT_TRUE(FailsWith(InitWithNul(std::string("  \0-QMGR QM1 -QNM Q1", 20)), empty_));
}

TEST_F(InitStringTest, MayHave256Tokens) {
    EXPECT_TRUE(Succeeds(Init(kRequired + Repeated("-MQEX", 252) + " ")));
}

TEST_F(InitStringTest, Of257TokensIsRefusedBeforeAnyKeywordIsChecked) {
    LeaveTraceOpen();
    EXPECT_TRUE(FailsWith(Init("-BOGUS" + Repeated("-MQEX", 256)), tooMany_));
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(tooMany_.TraceLines()));
}

TEST_F(InitStringTest, MayContainHelp200Times) {
    EXPECT_TRUE(Succeeds(Init(kRequired + Repeated("-HELP", 200))));
}

TEST_F(InitStringTest, MayContainOneVeryLongToken) {
    const std::string token(1000000, 'x');
    EXPECT_TRUE(FailsWith(Init(token), KeywordError(Cut("MQA0100: <Error: unidentified keyword: '" +
                                                        std::string(1000000, 'X')))));
}

TEST_F(InitStringTest, TokenWithoutMemoryFailsInit) {
    FaultPlan faults(module);
    Fault fault{FileCall::Allocate, ""};
    fault.bytes = 78;
    faults.Add(fault);
    EXPECT_TRUE(FailsWith(Init(Required("-LOG " + std::string(77, 'l'))),
                          ParametersError("memory allocation failed")));
    EXPECT_EQ(faults.Struck(), 1);
}

TEST_F(InitStringTest, ParmfileIsRecognizedInAnyCaseAndItsPathKeepsItsOwn) {
    WriteFile("Parms.Txt", "QNM Q7\n");
    ExpectedParameters parameters;
    parameters.queue = "Queue Name: 'Q7'";
    EXPECT_THAT(ReportOfInit("-parmFile Parms.Txt"), ElementsAreArray(parameters.TraceLines()));
}

TEST_F(InitStringTest, ParmfileNeedsItsDash_Kept) {
    WriteFile("parms.txt", "QMGR QM1\n");
    EXPECT_TRUE(FailsWith(Init("PARMFILE parms.txt"),
                          KeywordError("MQA0100: <Error: unidentified keyword: 'PARMFILE'>")));
    StartOver();
    EXPECT_TRUE(FailsWith(Init("--PARMFILE parms.txt"),
                          KeywordError("MQA0100: <Error: unidentified keyword: '-PARMFILE'>")));
}

TEST_F(InitStringTest, ParmfileWithoutAPathNamesTheUpperCasedToken) {
    EXPECT_TRUE(FailsWith(Init(Required("-parmfile")),
                          ParametersError("MQA0164: <option -PARMFILE: argument missing>")));
}

TEST_F(InitStringTest, ParmfileOfTheLongestPathIsOpened) {
    const std::string path(32766, 'p');
    EXPECT_TRUE(FailsWith(Init("-PARMFILE " + path),
                          ParameterFileError("MQA0124: <Parameter file open failed. Reason '" +
                                             ReasonNotOpened(path, "r") + "'>")));
}

TEST_F(InitStringTest, ParmfileOfALongerPathIsRefused) {
    const std::string path(32767, 'p');
    EXPECT_TRUE(
        FailsWith(Init("-PARMFILE " + path), ParametersError(Cut("MQA0126: <Parameter pathname " + path))));
}

TEST_F(InitStringTest, SecondParmfileReplacesTheFirst) {
    WriteFile("first.txt", "BOGUS\n");
    WriteFile("second.txt", "QNM Q2\n");
    ExpectedParameters parameters;
    parameters.queue = "Queue Name: 'Q2'";
    EXPECT_THAT(ReportOfInit("-PARMFILE first.txt -PARMFILE second.txt"),
                ElementsAreArray(parameters.TraceLines()));
}

TEST_F(InitStringTest, ParmfileIsReadAfterAllOtherKeywords) {
    WriteFile("parms.txt", "RWAIT 2\nQNM Q2\n");
    ExpectedParameters parameters;
    parameters.queue = "Queue Name: 'Q2'";
    parameters.readWait = "MQ read wait interval: 2";
    EXPECT_THAT(ReportOfInit("-PARMFILE parms.txt -RWAIT 1 -QNM Q3"),
                ElementsAreArray(parameters.TraceLines()));
}

TEST_F(InitStringTest, KeywordErrorKeepsTheParameterFileClosed) {
    LeaveTraceOpen();
    EXPECT_TRUE(FailsWith(Init("-TRCL 4 x -PARMFILE missing.txt -BOGUS"),
                          KeywordError("MQA0100: <Error: unidentified keyword: 'BOGUS'>")));
    EXPECT_THAT(trace.NewLines(), Not(testing::Contains(HasSubstr("Opening parameter file"))));
}

TEST_F(InitStringTest, ParmfileIsForgottenByTheNextInit) {
    WriteFile("parms.txt", "QNM Q2\n");
    ASSERT_TRUE(Succeeds(Init("-QMGR QM1 -PARMFILE parms.txt")));
    StartOver();
    WriteFile("parms.txt", "BOGUS\n");
    EXPECT_TRUE(Succeeds(Init("-QMGR QM1")));
}

}  // namespace
