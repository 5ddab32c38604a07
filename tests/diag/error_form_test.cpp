// SPDX-License-Identifier: Apache-2.0

// Tests the error text: its forms, its size, and what happens to it when memory runs out.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/support/fault_plan.h"
#include "tests/support/module_fixture.h"
#include "tests/support/output_capture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

namespace {

class ErrorFormTest : public ModuleFixture {
  protected:
    const ExpectedError readOnly_{"PIDMMain", "Access Module is read only"};

    void StartTraced() {
        ASSERT_EQ(Init(std::string(kRequired) + " -TRCL 1 trace.txt").returnCode, pmrcOK);
        trace.Skip();
    }
    static Fault NoMemoryFor(const ExpectedError& error) {
        Fault fault{FileCall::Allocate, ""};
        fault.bytes = error.Size();
        return fault;
    }
};

TEST_F(ErrorFormTest, OfAMessage) {
    StartTraced();
    const Outcome outcome = Open(2);
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_EQ(outcome.errorText,
              "Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  --ERROR: Access Module is read only.");
    EXPECT_EQ(outcome.errorTextLength, 25U + 8 + 7 + 9 + 26 + 11);
    EXPECT_THAT(trace.NewLines(),
                ElementsAre("Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  Error message follows.",
                            "--ERROR: Access Module is read only."));
}

TEST_F(ErrorFormTest, OfAMessageAndAFailingCall) {
    const Outcome outcome = Write();
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_EQ(
        outcome.errorText,
        "Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  --ERROR: not initialized--Failing function: Write.");
    EXPECT_EQ(outcome.errorTextLength, 25U + 8 + 7 + 9 + 15 + 20 + 5 + 11);
}

TEST_F(ErrorFormTest, OfAMessageAndAFailingCallInTheTrace) {
    StartTraced();
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    trace.Skip();
    ASSERT_EQ(Write().returnCode, pmrcFailure);
    EXPECT_THAT(trace.NewLines(),
                ElementsAre("Norvane Websphere MQ AMOD/PIDMMain(!ERROR!).  Error message follows.",
                            "--ERROR: not initialized.", "--Failing function: Write."));
}

TEST_F(ErrorFormTest, OfAllPiecesCountsTheReasonTwice_Kept) {
    StartTraced();
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    trace.Skip();
    WriteFile("parms.txt", "MQEX\n");
    FaultPlan faults(module);
    faults.Add({FileCall::Read, "parms.txt"});
    const Outcome outcome = Init("-PARMFILE parms.txt");
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_EQ(
        outcome.errorText,
        "Norvane Websphere MQ AMOD/ReadParmFile(!ERROR!).  --ERROR: MQA0125: <Error occurred while reading "
        "the MQ Parameter file>--Failing function: fgets--Error occured while processing "
        "Parameter--Reason: parameter.");
    EXPECT_EQ(outcome.errorTextLength, 25U + 12 + 7 + 9 + 61 + 20 + 5 + 11 + 33 + 9 + 10 + 9 + 9);
    EXPECT_THAT(trace.NewLines(),
                ElementsAre("Norvane Websphere MQ AMOD/ReadParmFile(!ERROR!).  Error message follows.",
                            "--ERROR: MQA0125: <Error occurred while reading the MQ Parameter file>.",
                            "--Failing function: fgets.", "--Error occured while processing Parameter.",
                            "--Reason: parameter."));
}

TEST_F(ErrorFormTest, PrintsMessageNumbersWithFourDigits) {
    EXPECT_THAT(Init("-QNM Q1").errorText, HasSubstr("--ERROR: MQA0127: <"));
}

TEST_F(ErrorFormTest, SecondErrorReplacesTheFirst) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_TRUE(FailsWith(Open(2), readOnly_));
    EXPECT_TRUE(FailsWith(Init(kRequired), ExpectedError("PIDMMain", "already initialized").Calling("Init")));
}

TEST_F(ErrorFormTest, IsTheLastOfSeveralErrorsOfOneCall) {
    EXPECT_TRUE(
        FailsWith(Init("-TRCL 7"), ExpectedError("CheckParm", "MQA0164: <option 7: argument missing>")));
}

TEST_F(ErrorFormTest, IsKeptByCallsThatSucceedUntilShut) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    ASSERT_TRUE(FailsWith(Open(2), readOnly_));
    const Outcome open = Open();
    EXPECT_EQ(open.returnCode, pmrcOK);
    EXPECT_TRUE(Carries(open, readOnly_));
    EXPECT_TRUE(Carries(Id(), readOnly_));
    EXPECT_TRUE(Succeeds(Shut()));
    EXPECT_TRUE(Succeeds(Id()));
}

TEST_F(ErrorFormTest, OfAFailedInitIsFreedByShut) {
    ASSERT_TRUE(Init("-BOGUS").hasErrorText);
    EXPECT_TRUE(Succeeds(Shut()));
    EXPECT_TRUE(Succeeds(Init(kRequired)));
}

TEST_F(ErrorFormTest, WithoutMemoryIsReportedOnStandardOutput) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    FaultPlan faults(module);
    faults.Add(NoMemoryFor(readOnly_));
    OutputCapture capture;
    const Outcome outcome = Open(2);
    const std::string printed = capture.Finish();
    EXPECT_EQ(faults.Struck(), 1);
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_FALSE(outcome.hasErrorText);
    EXPECT_EQ(outcome.errorTextLength, 0U);
    const std::string report = "Norvane Websphere MQ AMOD: Error Text memory allocation failed";
    EXPECT_EQ(printed.substr(printed.size() - std::min(printed.size(), report.size())), report)
        << "there is no newline at the end";
}

TEST_F(ErrorFormTest, WithoutMemoryIsReportedInTheTraceAndNotOnStandardOutput) {
    StartTraced();
    FaultPlan faults(module);
    faults.Add(NoMemoryFor(readOnly_));
    OutputCapture capture;
    const Outcome outcome = Open(2);
    EXPECT_THAT(capture.Finish(), testing::Not(HasSubstr("memory allocation failed")));
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_FALSE(outcome.hasErrorText);
    std::vector<std::string> expected = readOnly_.TraceLines();
    expected.emplace_back("Error Text memory allocation failed");
    EXPECT_THAT(trace.NewLines(), ElementsAreArray(expected));
    EXPECT_EQ(trace.Text().back(), 'd') << "there is no newline at the end";
}

TEST_F(ErrorFormTest, WithoutMemoryLeavesNoEarlierText) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    ASSERT_TRUE(FailsWith(Open(2), readOnly_));
    FaultPlan faults(module);
    faults.Add(NoMemoryFor(readOnly_));
    EXPECT_FALSE(Open(2).hasErrorText);
    EXPECT_FALSE(Id().hasErrorText);
    EXPECT_TRUE(FailsWith(Open(2), readOnly_)) << "the next error has a text again";
}

TEST_F(ErrorFormTest, WithoutMemoryStillFailsTheKeyword) {
    const ExpectedError error("CheckParm", "MQA0100: <Error: unidentified keyword: 'BOGUS'>");
    FaultPlan faults(module);
    faults.Add(NoMemoryFor(error));
    const Outcome outcome = Init("-BOGUS");
    EXPECT_EQ(faults.Struck(), 1);
    EXPECT_EQ(outcome.returnCode, pmrcFailure);
    EXPECT_FALSE(outcome.hasErrorText);
}

TEST_F(ErrorFormTest, MessageIsCutAt1023Characters) {
    const std::string start = "MQA0100: <Error: unidentified keyword: '";
    for (const std::size_t characters : {981U, 982U, 983U, 984U, 32766U}) {
        const std::string keyword(characters, 'K');
        const std::string message = (start + keyword + "'>").substr(0, 1023);
        const Outcome outcome = Init(keyword);
        EXPECT_TRUE(FailsWith(outcome, ExpectedError("CheckParm", message))) << characters;
        EXPECT_EQ(outcome.errorText.back(), '.');
        ASSERT_EQ(Shut().returnCode, pmrcOK);
    }
}

}  // namespace
