// SPDX-License-Identifier: Apache-2.0
#include "mqam/base/json_writer.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/json_values.h"

using namespace mqam;

namespace {

const std::string kReplacement = "\xEF\xBF\xBD";

TEST(JsonStringTest, EscapesQuotesBackslashesAndControlCharacters) {
    EXPECT_EQ(JsonString("plain"), "\"plain\"");
    EXPECT_EQ(JsonString(""), "\"\"");
    EXPECT_EQ(JsonString("a\"b\\c/d"), "\"a\\\"b\\\\c/d\"");
    EXPECT_EQ(JsonString("1\n2\r3\t4"), "\"1\\n2\\r3\\t4\"");
    EXPECT_EQ(JsonString(std::string_view("\0\x1B\x1F\x7F", 4)), "\"\\u0000\\u001b\\u001f\\u007f\"");
}

TEST(JsonStringTest, KeepsValidUtf8) {
    const std::string text =
        "\xC2\x80 \xDF\xBF \xE0\xA0\x80 \xED\x9F\xBF \xEF\xBF\xBF \xF0\x90\x80\x80 \xF4\x8F\xBF\xBF";
    EXPECT_EQ(JsonString(text), "\"" + text + "\"");
}

TEST(JsonStringTest, ReplacesEachByteThatIsNotValidUtf8) {
    const auto replaced = [](int bytes) {
        std::string text = "\"<";
        for (int i = 0; i < bytes; ++i)
            text += kReplacement;
        return text + ">\"";
    };
    EXPECT_EQ(JsonString("<\xFF>"), replaced(1));
    EXPECT_EQ(JsonString("<\x80>"), replaced(1)) << "a continuation without a lead byte";
    EXPECT_EQ(JsonString("<\xC0\xAF>"), replaced(2)) << "an overlong form";
    EXPECT_EQ(JsonString("<\xE0\x9F\xBF>"), replaced(3)) << "an overlong form of three bytes";
    EXPECT_EQ(JsonString("<\xED\xA0\x80>"), replaced(3)) << "a surrogate";
    EXPECT_EQ(JsonString("<\xF4\x90\x80\x80>"), replaced(4)) << "above U+10FFFF";
    EXPECT_EQ(JsonString("<\xE2\x82>"), replaced(2)) << "a character that is cut short";
    EXPECT_EQ(JsonString("\xE2\x82"), "\"" + kReplacement + kReplacement + "\"") << "cut short at the end";
}

TEST(JsonWriterTest, PutsCommasBetweenMembersAndElements) {
    JsonWriter json;
    json.BeginObject().TextMember("a", "x").NumberMember("b", 18446744073709551615ULL).Key("c").BeginArray();
    json.SignedNumber(-1).Text("two").BeginObject().EndObject().BeginArray().EndArray().EndArray();
    json.BoolMember("d", true)
        .Key("e")
        .Null()
        .Key("f")
        .BeginObject()
        .BoolMember("g", false)
        .EndObject()
        .EndObject();
    EXPECT_EQ(
        json.Line(),
        R"({"a": "x", "b": 18446744073709551615, "c": [-1, "two", {}, []], "d": true, "e": null, "f": {"g": false}})");
}

TEST(JsonWriterTest, EveryByteSurvivesAReaderOrIsReplaced) {
    std::string ascii;
    std::string others;
    for (int byte = 0; byte < 256; ++byte)
        (byte < 128 ? ascii : others) += static_cast<char>(byte);
    JsonWriter json;
    json.BeginObject().TextMember("ascii", ascii).TextMember("others", others).EndObject();
    const auto values = ReadJson(json.Line());
    ASSERT_TRUE(values.has_value()) << json.Line();
    EXPECT_EQ(values->at("ascii"), ascii);
    EXPECT_EQ(values->at("others").size(), 128 * kReplacement.size());
}

// The reader of the tests must notice what is no JSON.
TEST(JsonWriterTest, TheReaderOfTheTestsIsStrict) {
    for (const char* wrong :
         {"", "{", "{\"a\": 1,}", "[1 2]", "{\"a\": 01}", "{\"a\": \"\n\"}", "{} {}", "{\"a\": nan}",
          "{\"a\": \"\xFF\"}", "{\"a\": 1, \"a\": 2}", "{\"a\": \"\\x\"}"})
        EXPECT_FALSE(ReadJson(wrong).has_value()) << wrong;
}

TEST(JsonWriterTest, EscapesKeysToo) {
    JsonWriter json;
    json.BeginObject().TextMember("a\"", "b").EndObject();
    EXPECT_EQ(json.Line(), R"({"a\"": "b"})");
}

TEST(JsonWriterTest, DecimalsHaveThreePlacesAndWhatIsNoNumberIsNull) {
    JsonWriter json;
    json.BeginArray().Decimal(0).Decimal(1.23456).Decimal(-2.5).Decimal(std::numeric_limits<double>::max());
    json.Decimal(std::numeric_limits<double>::infinity())
        .Decimal(std::numeric_limits<double>::quiet_NaN())
        .EndArray();
    const std::string line = json.Line();
    EXPECT_EQ(line.substr(0, 24), "[0.000, 1.235, -2.500, 1");
    EXPECT_EQ(line.substr(line.size() - 16), "000, null, null]") << line;
}

}  // namespace
