// SPDX-License-Identifier: Apache-2.0

// Tests the names of messages, queues and queue managers on disk.
#include <gtest/gtest.h>

#include "spoolmq/store/names.h"

namespace spoolmq {
namespace {

// This is 2026-01-31 23:59:58.123456789 UTC.
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
        ASSERT_TRUE(ParseMessageName(FormatMessageName(name), parsed));
        EXPECT_EQ(name.stampNs, parsed.stampNs);
        EXPECT_EQ(name.backoutCount, parsed.backoutCount);
        EXPECT_EQ(name.rest, parsed.rest);
    }
}

TEST(MessageNameTest, ACountOfMoreThanNineDigitsIsReadAsTheLargest) {
    for (const char* count : {"1000000000", "4294967297", "99999999999999999999999999999999"}) {
        MessageName name;
        ASSERT_TRUE(ParseMessageName("20260131-235958-123456789~" + std::string(count) + ".msg", name));
        EXPECT_EQ(999999999, name.backoutCount) << count;
        EXPECT_EQ(kStamp, name.stampNs);
        EXPECT_EQ("msg", name.rest);
    }
}

TEST(MessageNameTest, AnyOtherNameIsThatOfACopiedInFile) {
    MessageName name;
    for (const char* text :
         {"", "orders.csv", "20260131-235958-123456789", "20260131-235958-123456789.",
          "20260131-235958-12345678.msg", "20260230-235958-123456789.msg", "20260131-245958-123456789.msg",
          "20260131-235958-123456789~.msg", "20260131-235958-123456789~x.msg",
          "20260131x235958-123456789.msg", "20260131-235958-123456789~1"}) {
        EXPECT_FALSE(ParseMessageName(text, name)) << text;
    }
}

TEST(MessageNameTest, NamesSortByArrivalRegardlessOfTheBackoutCount) {
    const std::string a = FormatMessageName({kStamp, 100, "msg"});
    const std::string b = FormatMessageName({kStamp + 1, 0, "msg"});
    EXPECT_LT(a, b);
}

TEST(MessageNameTest, ALongNameOfACopiedInFileIsCutBetweenCharacters) {
    const std::string name = "\xC3\xBC" + std::string(199, 'x');
    EXPECT_EQ(std::string(199, 'x'), CopiedInName(kStamp, name).rest);
    EXPECT_EQ("short", CopiedInName(kStamp, "short").rest);
}

TEST(ObjectNameTest, DirectoriesAndNamesConvertBothWays) {
    for (const char* name : {"ORDERS", "A/B", "100%", ".", "..", ".hidden", "ends.", "a.b", "%2F"}) {
        ASSERT_TRUE(IsObjectName(name)) << name;
        EXPECT_EQ(name, ObjectOfDirectory(DirectoryOfObject(name))) << name;
    }
    EXPECT_EQ("%2E%2E", DirectoryOfObject(".."));
    EXPECT_EQ("A%2FB", DirectoryOfObject("A/B"));
    for (const char* directory : {"with blank", "a%zz", ".units", "%41", ""}) {
        EXPECT_EQ("", ObjectOfDirectory(directory)) << directory;
    }
}

TEST(ObjectNameTest, ANameHas1To48OfTheCharactersThatMqAllows) {
    EXPECT_TRUE(IsObjectName(std::string(48, 'Q')));
    for (const std::string& name : {std::string(49, 'Q'), std::string(), std::string("A B"),
                                    std::string("A\\B"), std::string("A\0B", 3), std::string("A-B")}) {
        EXPECT_FALSE(IsObjectName(name)) << name;
    }
}

}  // namespace
}  // namespace spoolmq
