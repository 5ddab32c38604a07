// The store's small parts: names, descriptors, attributes.
#include <gtest/gtest.h>

#include <cstring>

#include "apps/spoolmq/attributes.h"
#include "apps/spoolmq/descriptor.h"
#include "apps/spoolmq/listing.h"
#include "apps/spoolmq/names.h"

namespace spoolmq {
namespace {

// 2026-01-31 23:59:58.123456789 UTC
constexpr std::int64_t kStamp = 1769903998123456789;

TEST(MessageNameTest, FormatsArrivalBackoutCountAndRest) {
    EXPECT_EQ("20260131-235958-123456789.msg", FormatMessageName({kStamp, 0, "msg"}));
    EXPECT_EQ("20260131-235958-123456789~12.a.b.c", FormatMessageName({kStamp, 12, "a.b.c"}));
    EXPECT_EQ("20260131-235958-123456789.msg", DescriptorName({kStamp, 12, "msg"}));
    EXPECT_EQ("19700101-000000-000000000.x", FormatMessageName({0, 0, "x"}));
}

TEST(MessageNameTest, ParsesWhatItFormats) {
    for (const MessageName& name : {MessageName{kStamp, 0, "msg"}, MessageName{0, 999999999, "~1.x"},
                                    MessageName{951827696000000001, 3, "leap day.csv"}}) {
        MessageName parsed;
        ASSERT_TRUE(ParseMessageName(FormatMessageName(name), &parsed));
        EXPECT_EQ(name.stampNs, parsed.stampNs);
        EXPECT_EQ(name.backoutCount, parsed.backoutCount);
        EXPECT_EQ(name.rest, parsed.rest);
    }
}

TEST(MessageNameTest, ACountOfMoreThanNineDigitsIsTheLargest) {
    for (const char* count : {"1000000000", "4294967297", "99999999999999999999999999999999"}) {
        MessageName name;
        ASSERT_TRUE(ParseMessageName("20260131-235958-123456789~" + std::string(count) + ".msg", &name));
        EXPECT_EQ(999999999, name.backoutCount) << count;
        EXPECT_EQ(kStamp, name.stampNs);
        EXPECT_EQ("msg", name.rest);
    }
}

TEST(MessageNameTest, AnythingElseIsAFileOfSomebodys) {
    MessageName name;
    for (const char* text :
         {"", "orders.csv", "20260131-235958-123456789", "20260131-235958-123456789.",
          "20260131-235958-12345678.msg", "20260230-235958-123456789.msg", "20260131-245958-123456789.msg",
          "20260131-235958-123456789~.msg", "20260131-235958-123456789~x.msg",
          "20260131x235958-123456789.msg", "20260131-235958-123456789~1"})
        EXPECT_FALSE(ParseMessageName(text, &name)) << text;
}

TEST(MessageNameTest, NamesSortByArrivalWhateverTheBackoutCount) {
    const std::string a = FormatMessageName({kStamp, 100, "msg"});
    const std::string b = FormatMessageName({kStamp + 1, 0, "msg"});
    EXPECT_LT(a, b);
}

TEST(MessageNameTest, AnAdoptedNameThatIsTooLongIsCutBetweenCharacters) {
    const std::string name = "\xC3\xBC" + std::string(199, 'x');
    EXPECT_EQ(std::string(199, 'x'), AdoptedName(kStamp, name).rest);
    EXPECT_EQ("short", AdoptedName(kStamp, "short").rest);
}

TEST(ObjectNameTest, FoldersOfObjectsGoBothWays) {
    for (const char* name : {"ORDERS", "A/B", "100%", ".", "..", ".hidden", "ends.", "a.b", "%2F"}) {
        ASSERT_TRUE(IsObjectName(name)) << name;
        EXPECT_EQ(name, ObjectOfFolder(FolderOfObject(name))) << name;
    }
    EXPECT_EQ("%2E%2E", FolderOfObject(".."));
    EXPECT_EQ("A%2FB", FolderOfObject("A/B"));
    for (const char* folder : {"with blank", "a%zz", ".units", "%41", ""})
        EXPECT_EQ("", ObjectOfFolder(folder)) << folder;
}

TEST(ObjectNameTest, NamesHave1To48OfTheCharactersThatMqKnows) {
    EXPECT_TRUE(IsObjectName(std::string(48, 'Q')));
    for (const std::string& name : {std::string(49, 'Q'), std::string(), std::string("A B"),
                                    std::string("A\\B"), std::string("A\0B", 3), std::string("A-B")})
        EXPECT_FALSE(IsObjectName(name)) << name;
}

TEST(DescriptorTest, EveryFieldSurvivesTheText) {
    mqi::MQMD md = ParseDescriptor("");
    auto* bytes = reinterpret_cast<unsigned char*>(&md);
    // Each byte of each field its own value; BackoutCount is not part of the text.
    for (std::size_t i = 8; i < sizeof md; ++i)
        bytes[i] = static_cast<unsigned char>('A' + i % 50);
    md.BackoutCount = 0;
    std::memcpy(md.ReplyToQ, "a%b\nc", 5);
    const mqi::MQMD parsed = ParseDescriptor(FormatDescriptor(md));
    EXPECT_EQ(0, std::memcmp(&md, &parsed, sizeof md)) << FormatDescriptor(md);
}

TEST(DescriptorTest, DefaultsAreLeftOutAndUnknownLinesPassedOver) {
    EXPECT_EQ("", FormatDescriptor(ParseDescriptor("")));
    const mqi::MQMD md = ParseDescriptor("Nonsense\nFormat=MQSTR\r\nColour=red\nPriority=high\nExpiry=7\n");
    EXPECT_EQ("MQSTR   ", std::string(md.Format, 8));
    EXPECT_EQ(7, md.Expiry);
    EXPECT_EQ(-1, md.Priority);
}

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

TEST(ListingTest, AFileIsSettledWhenItWasRenamedOrItsLastWriteIsOldEnough) {
    FileInfo file;
    file.writeTimeNs = file.changeTimeNs = 1000000000;
    EXPECT_FALSE(IsSettled(file, 1000000000 + 249000000, 250));
    EXPECT_TRUE(IsSettled(file, 1000000000 + 250000000, 250));
    file.changeTimeNs += 1;
    EXPECT_TRUE(IsSettled(file, 1000000000, 250));
}

}  // namespace
}  // namespace spoolmq
