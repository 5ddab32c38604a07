// SPDX-License-Identifier: Apache-2.0

// Tests the parameter file: it has one keyword on each line, and is read in pieces of at most 511 characters.
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tests/params/params_fixture.h"
#include "tests/support/fault_plan.h"
#include "tests/support/output_capture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

namespace {

class ParmFileTest : public ParamsFixture {
  protected:
    Outcome InitFromFile(const std::string& text) {
        WriteFile("parms.txt", text);
        return Init("-PARMFILE parms.txt");
    }
    /// Checks that Init accepts a parameter file with this text and that the report then shows the queue Q9.
    void ExpectQueueQ9(const std::string& text) {
        EXPECT_TRUE(Succeeds(InitFromFile(text)));
        EXPECT_THAT(PrintedAtOpen(), HasSubstr("     .        Queue Name: 'Q9'\n"));
    }
    static ExpectedError Unidentified(const std::string& keyword) {
        return KeywordError("MQA0100: <Error: unidentified keyword: '" + keyword + "'>");
    }
};

TEST_F(ParmFileTest, HasOneKeywordPerLineWithOrWithoutItsDashInAnyCase) {
    WriteFile("parms.txt",
              "-QMGR QM1\nqnm Q1\n-Rwait\t4\n tdm no\n-CkFile ck.dat\nLOG log.dat\nTLF no\nconvert 819\n"
              "FLUSH yes\nMQEX\nBKSZ 10\nOWAIT 2\nOTENACITY 9\n");
    ExpectedParameters parameters;
    parameters.readWait = "MQ read wait interval: 4";
    parameters.duplicates = "Terminate on duplicate message: no";
    parameters.checkpoint = "Checkpoint: File-based to pathname ck.dat";
    parameters.logging = {"Logging pathname: 'log.dat'", "Terminate on Log failure: no"};
    parameters.convert = "MQ convert message data to CCSID: 819\n";
    parameters.mediaFlush = "Media flush: Yes";
    parameters.queueOpen = "Queue open: EXCLUSIVE.";
    parameters.blockSize = "BlockSize: 10";
    parameters.waitInterval = "MQ open wait interval: 2";
    parameters.tenacity = "MQ open retry tenacity: 9";
    EXPECT_THAT(ReportOfInit("-PARMFILE parms.txt"), ElementsAreArray(parameters.TraceLines()));
}

TEST_F(ParmFileTest, MayContainTheTraceKeyword) {
    ASSERT_TRUE(Succeeds(InitFromFile("QMGR QM1\nQNM Q1\nTRCL 2 trace.txt\n")));
    EXPECT_THAT(trace.Lines(), Contains("ParseParms(info): Trace Level: 3"));
}

TEST_F(ParmFileTest, EmptyLinesAndCommentsAreIgnored) {
    ExpectQueueQ9("\n# a comment\n#QNM Q8\n   \t \n#\nQMGR QM1\n\nQNM Q9\n\n");
}

TEST_F(ParmFileTest, LineThatBeginsWithANulIsIgnored) {
    ExpectQueueQ9(std::string("QMGR QM1\n\0QNM Q8\nQNM Q9\n", 24));
}

TEST_F(ParmFileTest, LinesMayEndWithCarriageReturnAndLineFeed) {
    ExpectQueueQ9("# comment\r\n\r\nQMGR QM1\r\nQNM Q9\r\nMQEX\r\n  \r\n");
}

TEST_F(ParmFileTest, LastLineNeedsNoLineEnd) {
    ExpectQueueQ9("QMGR QM1\nQNM Q9");
}

TEST_F(ParmFileTest, KeywordMayFollowBlanks) {
    ExpectQueueQ9("   QMGR QM1\n \t QNM Q9\n");
}

TEST_F(ParmFileTest, CommentAfterBlanksIsAKeyword_Kept) {
    EXPECT_TRUE(FailsWith(InitFromFile("QMGR QM1\n  # note\n"), Unidentified("#")));
}

TEST_F(ParmFileTest, TokensAfterTheValueAreIgnored) {
    ExpectQueueQ9("QMGR QM1 -BOGUS\nQNM Q9 extra RWAIT 0\nMQEX more\n");
}

TEST_F(ParmFileTest, EmptyFileSetsNothing) {
    EXPECT_TRUE(
        FailsWith(InitFromFile(""),
                  ParametersError("MQA0127: <Queue Manager Name must be specified. Keyword: QMGR <name>>")));
}

TEST_F(ParmFileTest, DoesNotNest_Kept) {
    WriteFile("other.txt", "QNM Q1\n");
    EXPECT_TRUE(FailsWith(InitFromFile("-PARMFILE other.txt\n"), Unidentified("PARMFILE")));
}

TEST_F(ParmFileTest, BothValuesOfTrclMustBeOnItsLine) {
    EXPECT_TRUE(FailsWith(InitFromFile("QMGR QM1\nTRCL 2\ntrace.txt\n"),
                          KeywordError("MQA0164: <option 2: argument missing>")));
}

TEST_F(ParmFileTest, EndsAtItsFirstError) {
    OutputCapture capture;
    EXPECT_TRUE(FailsWith(InitFromFile("QMGR QM1\nBOGUS\nSRVR HOST\n"), Unidentified("BOGUS")));
    EXPECT_EQ(capture.Finish(), "") << "no keyword after the error is looked at";
}

TEST_F(ParmFileTest, ValuesBeforeTheErrorStayStored) {
    ASSERT_EQ(InitFromFile("MQEX\nBOGUS\n").returnCode, pmrcFailure);
    StartOver();
    ExpectedParameters parameters;
    parameters.queueOpen = "Queue open: EXCLUSIVE.";
    EXPECT_THAT(ReportOfInit(""), ElementsAreArray(parameters.TraceLines()));
}

TEST_F(ParmFileTest, LineOf511CharactersIsOneComment) {
    ExpectQueueQ9("#" + std::string(510, 'x') + "\nQMGR QM1\nQNM Q9\n");
}

TEST_F(ParmFileTest, The512thCharacterOfALineIsReadAsALineOfItsOwn_Kept) {
    EXPECT_TRUE(
        FailsWith(InitFromFile("#" + std::string(510, 'x') + "y\nQMGR QM1\nQNM Q1\n"), Unidentified("Y")));
}

TEST_F(ParmFileTest, LineOf600CharactersIsReadAsTwoLines_Kept) {
    std::string line = "#" + std::string(510, 'x') + "QNM Q9";
    line += std::string(600 - line.size(), ' ');
    ExpectQueueQ9("QMGR QM1\n" + line + "\n");
}

TEST_F(ParmFileTest, LongLineWithoutALineEndIsReadAsTwoLines) {
    ExpectQueueQ9("QMGR QM1\n#" + std::string(510, 'x') + "QNM Q9");
}

TEST_F(ParmFileTest, ValueThatCrossesThe511thCharacterIsCut) {
    const std::string path(600, 'p');  // 507 of it are on the first piece
    EXPECT_TRUE(FailsWith(InitFromFile("LOG " + path + "\n"), Unidentified(std::string(93, 'P'))));
}

TEST_F(ParmFileTest, LineOf256TokensIsNotTooLong) {
    std::string line = "X";
    for (int i = 1; i < 256; ++i)
        line += " x";
    ASSERT_EQ(line.size(), 511U);
    EXPECT_TRUE(FailsWith(InitFromFile(line + "\n"), Unidentified("X")));
}

TEST_F(ParmFileTest, ThatIsMissingFailsWithTheSystemsReason) {
    EXPECT_TRUE(FailsWith(Init("-PARMFILE missing.txt"),
                          ParameterFileError("MQA0124: <Parameter file open failed. Reason 'No such file or "
                                             "directory'>")));
}

TEST_F(ParmFileTest, ThatIsADirectoryFails) {
    std::filesystem::create_directory("subdir");
    const Outcome outcome = Init("-PARMFILE subdir");
    if (kPathDelimiter == '/') {  // can be opened, but not read
        EXPECT_TRUE(FailsWith(
            outcome, ParameterFileError("MQA0125: <Error occurred while reading the MQ Parameter file>")
                         .Calling("fgets")
                         .Processing("Parameter", "parameter")));
    } else {
        EXPECT_TRUE(FailsWith(outcome, ParameterFileError("MQA0124: <Parameter file open failed. Reason '" +
                                                          ReasonNotOpened("subdir", "r") + "'>")));
    }
}

TEST_F(ParmFileTest, ReadErrorFailsAfterTheLinesThatWereRead) {
    FaultPlan faults(module);
    Fault fault{FileCall::Read, "parms.txt"};
    fault.nth = 3;
    faults.Add(fault);
    EXPECT_TRUE(FailsWith(InitFromFile("MQEX\nQMGR QM1\nQNM Q1\n"),
                          ParameterFileError("MQA0125: <Error occurred while reading the MQ Parameter file>")
                              .Calling("fgets")
                              .Processing("Parameter", "parameter")));
    EXPECT_EQ(faults.Struck(), 1);
    EXPECT_EQ(faults.log.back(), "close parms.txt");
}

TEST_F(ParmFileTest, TokenWithoutMemoryFailsInit) {
    FaultPlan faults(module);
    Fault fault{FileCall::Allocate, ""};
    fault.bytes = 78;
    faults.Add(fault);
    EXPECT_TRUE(FailsWith(InitFromFile("LOG " + std::string(77, 'l') + "\n"),
                          ParameterFileError("memory allocation failed")));
    EXPECT_EQ(faults.Struck(), 1);
    EXPECT_EQ(faults.log.back(), "close parms.txt");
}

TEST_F(ParmFileTest, IsOpenedForReadingAndClosedWhateverItContains) {
    FaultPlan faults(module);
    ASSERT_TRUE(Succeeds(InitFromFile("QMGR QM1\nQNM Q1\n")));
    EXPECT_EQ(faults.log.front(), "open parms.txt r");
    EXPECT_EQ(faults.log.back(), "close parms.txt");
    StartOver();
    faults.log.clear();
    ASSERT_EQ(InitFromFile("BOGUS\nQMGR QM1\n").returnCode, pmrcFailure);
    EXPECT_THAT(faults.log, ElementsAre("open parms.txt r", "read parms.txt line", "close parms.txt"));
}

TEST_F(ParmFileTest, OpeningIsTracedAtTheRawLevelOfTheInitString_Kept) {
    LeaveTraceOpen();
    WriteFile("parms.txt", "BOGUS\n");
    const std::string opening = "ReadParmFile(info): Opening parameter file name: 'parms.txt'";
    ASSERT_EQ(Init("-TRCL 1 x.txt -PARMFILE parms.txt").returnCode, pmrcFailure);
    EXPECT_THAT(trace.NewLines(), Not(Contains(opening)));
    StartOver();
    ASSERT_EQ(Init("-PARMFILE parms.txt -TRCL 2 x.txt").returnCode, pmrcFailure);
    EXPECT_THAT(trace.NewLines(), Contains(opening));
}

TEST_F(ParmFileTest, LongPathIsTracedUntilTheMessageIsFull) {
    LeaveTraceOpen();
    const std::string path(32766, 'p');
    ASSERT_EQ(Init("-TRCL 2 x.txt -PARMFILE " + path).returnCode, pmrcFailure);
    EXPECT_THAT(trace.NewLines(),
                Contains("ReadParmFile(info): " + Cut("Opening parameter file name: '" + path)));
}

TEST_F(ParmFileTest, ErrorsAreTracedInAnOpenTrace) {
    LeaveTraceOpen();
    ASSERT_EQ(Init("-PARMFILE missing.txt").returnCode, pmrcFailure);
    EXPECT_THAT(
        trace.NewLines(),
        ElementsAreArray(
            ParameterFileError("MQA0124: <Parameter file open failed. Reason 'No such file or directory'>")
                .TraceLines()));
}

}  // namespace
