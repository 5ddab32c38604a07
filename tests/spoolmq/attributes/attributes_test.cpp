// Attribute files.
#include <gtest/gtest.h>

#include "spoolmq/attributes/attributes.h"

namespace spoolmq {
namespace {

TEST(AttributesTest, AFreshFileReadsBackAsItsValues) {
    QueueAttributes queue;
    queue.maxDepth = 5;
    queue.getInhibited = 1;
    queue.fileFormat = "MQSTR";
    queue.settleMs = 0;
    QueueAttributes parsed;
    std::string why;
    ASSERT_TRUE(ParseAttributes(FormatAttributes(queue), &parsed, &why)) << why;
    for (const auto& row : QueueAttributeTable())
        EXPECT_EQ(AttributeText(row, queue), AttributeText(row, parsed)) << row.name;
    QmgrAttributes qmgr;
    qmgr.state = static_cast<std::int32_t>(QmgrState::Ended);
    qmgr.listener = "host(1414)";
    QmgrAttributes parsedQmgr;
    ASSERT_TRUE(ParseAttributes(FormatAttributes(qmgr), &parsedQmgr, &why)) << why;
    for (const auto& row : QmgrAttributeTable())
        EXPECT_EQ(AttributeText(row, qmgr), AttributeText(row, parsedQmgr)) << row.name;
}

TEST(AttributesTest, EveryLimitIsHeld) {
    std::string why;
    for (const auto& row : QueueAttributeTable()) {
        if (row.number == nullptr || row.words != nullptr) continue;
        QueueAttributes values;
        EXPECT_TRUE(SetAttribute(row.name, std::to_string(row.minimum), &values, &why)) << row.name;
        EXPECT_TRUE(SetAttribute(row.name, std::to_string(row.maximum), &values, &why)) << row.name;
        EXPECT_EQ(row.maximum, values.*row.number);
        EXPECT_FALSE(SetAttribute(row.name, std::to_string(row.minimum - 1), &values, &why)) << row.name;
        EXPECT_FALSE(SetAttribute(row.name, std::to_string(std::int64_t{row.maximum} + 1), &values, &why))
            << row.name;
        EXPECT_FALSE(SetAttribute(row.name, "1x", &values, &why)) << row.name;
    }
}

TEST(AttributesTest, MistakesAreToldWithTheirLineAndLeaveTheValues) {
    QueueAttributes values;
    values.maxDepth = 77;
    std::string why;
    EXPECT_FALSE(ParseAttributes("max_depth = 3\n\nget enabled\n", &values, &why));
    EXPECT_EQ("line 3: no '=' between name and value", why);
    EXPECT_EQ(77, values.maxDepth);
    EXPECT_FALSE(ParseAttributes("depth = 3\n", &values, &why));
    EXPECT_EQ(0U, why.find("line 1: there is no attribute \"depth\"; there are: get put")) << why;
    EXPECT_TRUE(ParseAttributes("  max_depth=3 # comment\r\n# only comment\r\n", &values, &why));
    EXPECT_EQ(3, values.maxDepth);
}

}  // namespace
}  // namespace spoolmq
