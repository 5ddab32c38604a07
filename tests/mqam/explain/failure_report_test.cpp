// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/failure_report.h"

#include <gtest/gtest.h>

using namespace mqam;

namespace {

std::string DescribeFully(const ModuleFailure& failure) {
    return DescribeFailure(failure, FailureDetail::kForDevelopers);
}

TEST(FailureReport, ThePlainFactComesFirstAndEachPieceIsOnALineOfItsOwn) {
    const ModuleFailure failure{
        "Read", pmrcFailure, "M/PIDMMain(!ERROR!).  --ERROR: MQA0143: <MQCMIT failed, reason code = 2009>."};
    const std::string lines = DescribeFully(failure);
    EXPECT_EQ(lines.substr(0, lines.find("  cause")),
              "the connection to the queue manager was lost\n"
              "  message   MQCMIT failed, reason code = 2009\n"
              "  number    MQA0143\n"
              "  request   Read returned 34\n"
              "  function  PIDMMain\n"
              "  reason    2009 MQRC_CONNECTION_BROKEN: the connection to the queue manager was lost\n");
    EXPECT_NE(lines.find("  cause     The last message is in the checkpoint file, but MQ did not confirm"),
              std::string::npos)
        << lines;
    EXPECT_NE(lines.find("\n  next      Keep the checkpoint file"), std::string::npos) << lines;
    EXPECT_NE(lines.find("\n  next      Check that the queue manager runs"), std::string::npos) << lines;
}

TEST(FailureReport, FileFailureNamesCallFileAndReason) {
    const ModuleFailure failure{
        "Read", pmrcFailure,
        "M/PIDMMain(!ERROR!).  --ERROR: checkpoint--Failing function: fflush--Error occured "
        "while processing Checkpoint--Reason: No space left on device."};
    const std::string lines = DescribeFully(failure);
    EXPECT_NE(lines.find("  call      fflush\n  file      Checkpoint\n  reason    No space left on device\n"),
              std::string::npos)
        << lines;
}

TEST(FailureReport, TheCauseIsLeftOutIfTheFactSaysItAll) {
    const std::string lines = DescribeFully(
        {"Init", pmrcFailure,
         "M/CheckParm(!ERROR!).  --ERROR: MQA0107: <Read wait interval (RWAIT) value: 0 out of range (-1 or "
         "1<seconds<600)>."});
    EXPECT_TRUE(lines.starts_with("the read wait interval is neither -1 nor a number from 1 to 600\n"))
        << lines;
    EXPECT_EQ(lines.find("  cause"), std::string::npos) << lines;
}

TEST(FailureReport, AMessageOfABlankIsNotShown) {
    const std::string lines =
        DescribeFully({"Read", pmrcFailure,
                       "M/WriteLogRec(!ERROR!).  --ERROR:  --Failing function: fwrite--Error occured while "
                       "processing Log--Reason: No space left on device."});
    EXPECT_TRUE(lines.starts_with("a record could not be written to the message log")) << lines;
    EXPECT_EQ(lines.find("  message"), std::string::npos) << lines;
}

TEST(FailureReport, TextOfAnotherFormIsShownWhole) {
    EXPECT_EQ(DescribeFully({"Open", pmrcFailure, "out of the ordinary"}),
              "the module failed: out of the ordinary\n  request   Open returned 34\n");
}

TEST(FailureReport, CodesWithoutTextAreNamed) {
    EXPECT_EQ(DescribeFully({"PutAttribute COLOUR", pmrcBadAttrName, ""}),
              "--attribute COLOUR: the module does not know an attribute of this name\n"
              "  request   PutAttribute COLOUR returned 33\n");
    EXPECT_NE(DescribeFully({"Init", pmrcBadVersion, ""}).find("another version"), std::string::npos);
    EXPECT_EQ(DescribeFully({"Open", pmrcFailure, ""}),
              "the module failed without an error text, opening the queue\n  request   Open returned 34\n");
}

TEST(FailureReport, OperatorsSeeNeitherRequestNorReturnCodeNorFunction) {
    const std::vector<ModuleFailure> failures = {
        {"Read", pmrcFailure, "M/PIDMMain(!ERROR!).  --ERROR: MQA0143: <MQCMIT failed, reason code = 2009>."},
        {"Open", pmrcFailure, "out of the ordinary"},
        {"PutAttribute COLOUR", pmrcBadAttrName, ""},
        {"Open", pmrcFailure, ""}};
    for (const ModuleFailure& failure : failures) {
        const std::string lines = DescribeFailure(failure, FailureDetail::kForOperators);
        for (const char* part : {"  request ", "  function ", "PIDMMain", "PutAttribute", "returned 3"})
            EXPECT_EQ(lines.find(part), std::string::npos) << lines;
    }
    EXPECT_EQ(DescribeFailure({"Read", pmrcFailure, ""}, FailureDetail::kForOperators),
              "the module failed without an error text, reading a message\n");
}

TEST(FailureReport, NoticeIsOneLineWithWhatItMeans) {
    EXPECT_EQ(DescribeNotice("M/WriteLogRec(info).  --ERROR: continuing without Log."),
              "note from the module (WriteLogRec): continuing without Log. A record could not be written to "
              "the message log. Because of TLF no the load continues, but later messages are not in the log. "
              "If the log is needed, end the load, make room on its disk, and start it again.");
    EXPECT_EQ(DescribeNotice("M/PIDMMain(!warning!).  --ERROR: MQOpen, QName = Q, reason code = 2044.")
                  .substr(0, 27),
              "warning from the module (PI");
}

}  // namespace
