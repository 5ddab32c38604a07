// SPDX-License-Identifier: Apache-2.0

// Tests PutAttribute: its names, their values and what they change.
#include <gmock/gmock.h>

#include "tests/support/module_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string kUnknown = " unknown.  Returning 'pmrcBadAttrName' to client.";

class AttributeTest : public ModuleFixture {
  protected:
    /// Runs a load with a checkpoint file and returns whether Close kept the file, which shows the value of
    /// the flag.
    bool CheckpointFileIsKept() {
        EXPECT_EQ(Open().returnCode, pmrcOK);
        EXPECT_TRUE(FileExists("ck.dat"));
        EXPECT_EQ(Close().returnCode, pmrcOK);
        return FileExists("ck.dat");
    }
};

TEST_F(AttributeTest, GenEofEndsTheInputOfAnOpenQueue) {
    InitAndOpenTraced(1);
    mq.PutMessage("record");
    EXPECT_TRUE(Succeeds(PutAttribute("GEN_EOF", "anything")));
    EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain",
                                                       "Attribute name: 'GEN_EOF' received.  The next "
                                                       "read request will return EOF")));
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(mq.Count(Verb::Get), 0U);
}

TEST_F(AttributeTest, GenEofBeforeOpenIsCancelledByOpen) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_TRUE(Succeeds(PutAttribute("GEN_EOF", "")));
    ASSERT_TRUE(Succeeds(Open()));
    mq.PutMessage("record");
    EXPECT_EQ(Read().record, "record");
}

TEST_F(AttributeTest, PreserveRestartInfoIsSetByYesAndClearedByNo) {
    InitTraced(1, "-CKFILE ck.dat");
    EXPECT_TRUE(Succeeds(PutAttribute("PRESERVE_RESTART_INFO", "YES")));
    EXPECT_THAT(trace.NewLines(),
                ElementsAre(InfoLine("PIDMMain",
                                     "Attribute name: 'PRESERVE_RESTART_INFO' received.  Checkpoint "
                                     "resources will be preserved.")));
    EXPECT_TRUE(CheckpointFileIsKept());
    trace.Skip();
    EXPECT_TRUE(Succeeds(PutAttribute("PRESERVE_RESTART_INFO", "NO")));
    EXPECT_THAT(trace.NewLines(),
                ElementsAre(InfoLine("PIDMMain",
                                     "Attribute name: 'PRESERVE_RESTART_INFO' received.  Checkpoint "
                                     "resources will NOT be preserved.")));
    EXPECT_FALSE(CheckpointFileIsKept());
}

TEST_F(AttributeTest, PreserveRestartInfoRefusesOtherValuesAndKeepsTheFlag) {
    InitTraced(1, "-CKFILE ck.dat");
    ASSERT_TRUE(Succeeds(PutAttribute("PRESERVE_RESTART_INFO", "YES")));
    trace.Skip();
    for (const char* value : {"yes", "no", "YES ", " NO", "NOT", "Y", ""}) {
        const Outcome outcome = PutAttribute("PRESERVE_RESTART_INFO", value);
        EXPECT_EQ(outcome.returnCode, pmrcBadAttrValue) << value;
        EXPECT_FALSE(outcome.hasErrorText);
        EXPECT_THAT(
            trace.NewLines(),
            ElementsAre(InfoLine("PIDMMain", std::string("Attribute name: 'PRESERVE_RESTART_INFO' received.  "
                                                         "Invalid value ('") +
                                                 value + "'). Returning 'pmrcBadAttrValue' to client.")));
    }
    EXPECT_TRUE(CheckpointFileIsKept());
}

TEST_F(AttributeTest, TextValueEndsAtItsNulOrItsLength) {
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    EXPECT_EQ(PutAttributeBytes("PRESERVE_RESTART_INFO", "YES").returnCode, pmrcOK);
    EXPECT_EQ(PutAttributeBytes("PRESERVE_RESTART_INFO", std::string("YES\0junk", 8)).returnCode, pmrcOK);
    EXPECT_EQ(PutAttributeBytes("PRESERVE_RESTART_INFO", "YE").returnCode, pmrcBadAttrValue);
    EXPECT_EQ(PutAttributeBytes("PRESERVE_RESTART_INFO", "").returnCode, pmrcBadAttrValue);
    EXPECT_EQ(PutAttributeBytes("TIMEOUT_SECONDS", "").returnCode, pmrcOK);
    EXPECT_EQ(PutAttributeBytes("GEN_EOF", "").returnCode, pmrcOK);
}

TEST_F(AttributeTest, BothOptionNumbersAreServedTheSame) {
    InitAndOpen();
    EXPECT_TRUE(Succeeds(PutAttribute("GEN_EOF", "", 14)));
    EXPECT_EQ(Read().returnCode, pmrcEOF);
    EXPECT_EQ(PutAttribute("NONE", "", 14).returnCode, pmrcBadAttrName);
}

TEST_F(AttributeTest, TimeoutIsAcknowledgedAtLevelOne) {
    InitTraced(1);
    EXPECT_TRUE(Succeeds(PutAttribute("TIMEOUT_SECONDS", "20")));
    EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain",
                                                       "Attribute name: 'TIMEOUT_SECONDS' received. "
                                                       "Enabled TimeOut Facility for responsiveness while "
                                                       "reading input data from queue.")));
}

TEST_F(AttributeTest, AcknowledgedNamesChangeNothing) {
    InitTraced(1);
    for (const char* name : {"CHARSET_NAME", "CHARSET_NUMBER", "WRITE_BOM", "BYTE_ORDER",
                             "Restart_Validation", "CHECKPOINT_INTERVAL", "EXPORT_WIDTHS"}) {
        EXPECT_TRUE(Succeeds(PutAttribute(name, "UTF8")));
        EXPECT_THAT(trace.NewLines(),
                    ElementsAre(InfoLine("PIDMMain", std::string("Received attribute '") + name +
                                                         "'='UTF8', no action taken nor required")));
    }
}

TEST_F(AttributeTest, UnknownNamesAreRefusedWithoutAnErrorText) {
    InitTraced(1);
    for (const char* name :
         {"gen_eof", "GEN_EOF ", "GEN_EO", "RESTART_VALIDATION", "zbq_hl_log_handle", ""}) {
        const Outcome outcome = PutAttribute(name, "value");
        EXPECT_EQ(outcome.returnCode, pmrcBadAttrName) << name;
        EXPECT_FALSE(outcome.hasErrorText);
        EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain", std::string("Attribute name: '") +
                                                                           name + "'" + kUnknown)));
    }
}

TEST_F(AttributeTest, NameWithoutItsNulEndsWithTheField) {
    InitTraced(1);
    const std::string name(300, 'N');
    EXPECT_EQ(PutAttribute(name, "value").returnCode, pmrcBadAttrName);
    EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain", "Attribute name: '" + name.substr(0, 255) +
                                                                       "'" + kUnknown)));
    EXPECT_EQ(GetAttribute(name).returnCode, pmrcNotSupported);
    EXPECT_THAT(trace.NewLines(),
                ElementsAre(InfoLine("PIDMMain", "Attribute name: '" + name.substr(0, 255) + "'")));
}

TEST_F(AttributeTest, LongValueIsCutToTheMessageText) {
    InitTraced(1);
    const std::string value(5000, 'v');
    EXPECT_TRUE(Succeeds(PutAttributeBytes("BYTE_ORDER", value)));
    const std::string text = "Received attribute 'BYTE_ORDER'='" + value;
    EXPECT_THAT(trace.NewLines(), ElementsAre(InfoLine("PIDMMain", text.substr(0, 1023))));
}

TEST_F(AttributeTest, NothingIsTracedBelowLevelOne) {
    InitTraced(1);
    ASSERT_EQ(Shut().returnCode, pmrcOK);
    ASSERT_TRUE(Succeeds(Init(kRequired)));
    trace.Skip();
    PutAttribute("GEN_EOF", "");
    PutAttribute("UNKNOWN", "");
    EXPECT_THAT(trace.NewLines(), IsEmpty());
}

}  // namespace
