// SPDX-License-Identifier: Apache-2.0

// Tests the attribute files.
#include <gtest/gtest.h>

#include "spoolmq/attributes/attributes.h"

namespace spoolmq {
namespace {

TEST(AttributesTest, AFormattedFileParsesToTheSameValues) {
    QueueAttributes queue;
    queue.maxDepth = 5;
    queue.getInhibited = 1;
    queue.fileFormat = "MQSTR";
    queue.settleMs = 0;
    QueueAttributes parsed;
    Status status = ParseAttributes(FormatAttributes(queue), parsed);
    ASSERT_TRUE(status.IsOk()) << status.error;
    for (const auto& row : QueueAttributeTable()) {
        EXPECT_EQ(AttributeText(row, queue), AttributeText(row, parsed)) << row.name;
    }
    QmgrAttributes qmgr;
    qmgr.state = static_cast<std::int32_t>(QmgrState::kEnded);
    qmgr.listener = "host(1414)";
    QmgrAttributes parsedQmgr;
    status = ParseAttributes(FormatAttributes(qmgr), parsedQmgr);
    ASSERT_TRUE(status.IsOk()) << status.error;
    for (const auto& row : QmgrAttributeTable()) {
        EXPECT_EQ(AttributeText(row, qmgr), AttributeText(row, parsedQmgr)) << row.name;
    }
}

TEST(AttributesTest, EveryLimitIsEnforced) {
    for (const auto& row : QueueAttributeTable()) {
        if (row.number == nullptr || row.words != nullptr) {
            continue;
        }
        QueueAttributes values;
        EXPECT_TRUE(SetAttribute(row.name, std::to_string(row.minimum), values).IsOk()) << row.name;
        EXPECT_TRUE(SetAttribute(row.name, std::to_string(row.maximum), values).IsOk()) << row.name;
        EXPECT_EQ(row.maximum, values.*row.number);
        EXPECT_FALSE(SetAttribute(row.name, std::to_string(row.minimum - 1), values).IsOk()) << row.name;
        EXPECT_FALSE(SetAttribute(row.name, std::to_string(std::int64_t{row.maximum} + 1), values).IsOk())
            << row.name;
        EXPECT_FALSE(SetAttribute(row.name, "1x", values).IsOk()) << row.name;
    }
}

TEST(AttributesTest, AMistakeIsReportedWithItsLineAndChangesNoValue) {
    QueueAttributes values;
    values.maxDepth = 77;
    Status status = ParseAttributes("max_depth = 3\n\nget enabled\n", values);
    EXPECT_EQ(StatusCode::kFailed, status.code);
    EXPECT_EQ("line 3: no '=' between name and value", status.error);
    EXPECT_EQ(77, values.maxDepth);
    status = ParseAttributes("depth = 3\n", values);
    EXPECT_EQ(StatusCode::kFailed, status.code);
    EXPECT_EQ(0U, status.error.find("line 1: there is no attribute \"depth\"; there are: get put"))
        << status.error;
    EXPECT_TRUE(ParseAttributes("  max_depth=3 # comment\r\n# only comment\r\n", values).IsOk());
    EXPECT_EQ(3, values.maxDepth);
}

}  // namespace
}  // namespace spoolmq
