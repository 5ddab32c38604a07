// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/module_messages.h"

#include <gtest/gtest.h>

using namespace mqam;

namespace {

ErrorText TextOf(const char* message, const char* failingCall) {
    ErrorText error;
    error.message = message;
    error.failingCall = failingCall;
    return error;
}

TEST(ModuleMessages, AllOfThemAreThereInOrder) {
    EXPECT_EQ(NumberedMessages().size(), 67U);
    EXPECT_GE(UnnumberedMessages().size(), 30U);
    int last = 0;
    for (const ModuleMessage& message : NumberedMessages()) {
        EXPECT_GT(message.number, last);
        last = message.number;
    }
    for (const ModuleMessage& message : UnnumberedMessages())
        EXPECT_EQ(message.number, 0);
}

TEST(ModuleMessages, ANumberFindsItsRow) {
    ASSERT_NE(FindModuleMessage(143), nullptr);
    EXPECT_EQ(MessageCodeOf(*FindModuleMessage(143)), "MQA0143");
    EXPECT_EQ(MessageTextOf(*FindModuleMessage(143)), "MQCMIT failed, reason code = %ld");
    EXPECT_EQ(FindModuleMessage(999), nullptr);
}

TEST(ModuleMessages, ATextFindsItsRowByTheFailingCallToo) {
    const ModuleMessage* written = FindModuleMessage(TextOf("checkpoint", "fwrite"));
    const ModuleMessage* flushed = FindModuleMessage(TextOf("checkpoint", "fflush"));
    ASSERT_NE(written, nullptr);
    ASSERT_NE(flushed, nullptr);
    EXPECT_NE(written, flushed);
    EXPECT_EQ(FindModuleMessage(TextOf("checkpoint", "fclose")), nullptr);
}

TEST(ModuleMessages, ATextThatOnlyBeginsLikeAMessageIsAnotherOne) {
    EXPECT_NE(FindModuleMessage(TextOf("checkpoint sequence", "fread")), nullptr);
    EXPECT_EQ(FindModuleMessage(TextOf("Queue Manager open again", "")), nullptr);
}

TEST(ModuleMessages, AVariablePartOfATextMayBeAnything) {
    const ModuleMessage* message = FindModuleMessage(TextOf("Error received from MQCONNX : 2059", ""));
    ASSERT_NE(message, nullptr);
    EXPECT_STREQ(message->format, "Error received from MQCONNX : %ld");
    EXPECT_EQ(MessageCodeOf(*message), "");
}

}  // namespace
