// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/option_values.h"

#include <gtest/gtest.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

namespace mqam {
namespace {

constexpr NumberRule kWait = {NumberUnit::kSeconds, 1, 600, true};
constexpr NumberRule kSize = {NumberUnit::kBytes, 1, 16777216};
constexpr NumberRule kCount = {};

// Returns the number, or the error.
std::string Read(const std::string& text, const NumberRule& rule) {
    std::int64_t number = 0;
    const Status read = ReadNumber(text, rule, number);
    return read.IsOk() ? std::to_string(number) : read.Error();
}

TEST(OptionValues, DurationsHaveTheUnitsSMHAndD) {
    constexpr NumberRule kAny = {NumberUnit::kSeconds, 1, kLargestSeconds};
    EXPECT_EQ(Read("90", kAny), "90");
    EXPECT_EQ(Read("90s", kAny), "90");
    EXPECT_EQ(Read("5m", kAny), "300");
    EXPECT_EQ(Read("2h", kAny), "7200");
    EXPECT_EQ(Read("1d", kAny), "86400");
}

TEST(OptionValues, SizesHaveBinaryUnits) {
    constexpr NumberRule kAny = {NumberUnit::kBytes, 1};
    EXPECT_EQ(Read("1k", kAny), "1024");
    EXPECT_EQ(Read("1K", kAny), "1024");
    EXPECT_EQ(Read("16M", kAny), "16777216");
    EXPECT_EQ(Read("3G", kAny), "3221225472");
    EXPECT_EQ(Read("16M", kSize), "16777216");
}

TEST(OptionValues, MinusOneIsOnlyTakenWhereItMeansForever) {
    EXPECT_EQ(Read("-1", kWait), "-1");
    EXPECT_EQ(Read("-1", kCount), "'-1' is negative; use 0 or more");
    EXPECT_EQ(Read("-2", kWait), "'-2' is negative; use " + DescribeNumbers(kWait));
}

TEST(OptionValues, WhatIsNoWholeNumberIsRefusedWithTheReason) {
    EXPECT_EQ(Read("abc", kCount), "'abc' is not a number; use 0 or more");
    EXPECT_EQ(Read("", kCount), "'' is not a number; use 0 or more");
    EXPECT_EQ(Read("-", kCount), "'-' is not a number; use 0 or more");
    EXPECT_EQ(Read(" 1", kCount), "' 1' is not a number; use 0 or more");
    EXPECT_EQ(Read("+1", kCount), "'+1' is not a number; use 0 or more");
    EXPECT_EQ(Read("1 ", kCount), "'1 ' is not a number; use 0 or more");
    EXPECT_EQ(Read("0x10", kCount), "'0x10' is not a number; use 0 or more");
    EXPECT_EQ(Read("1.5", kCount), "'1.5' is not a whole number; use 0 or more");
    EXPECT_EQ(Read("1k", kCount), "'1k' is not a number; use 0 or more");
    EXPECT_EQ(Read("1m", kSize), "1048576");
    EXPECT_EQ(
        Read("1h", kSize),
        "'1h' has a unit that this option does not know; use 1 to 16777216 bytes (or with a unit: k, M, G)");
    EXPECT_EQ(Read("1MB", kSize), "'1MB' is not a number; use 1 to 16777216 bytes (or with a unit: k, M, G)");
}

TEST(OptionValues, NumbersBeyondTheLimitsAreRefusedAlsoThoseThatOverflow) {
    EXPECT_EQ(Read("600", kWait), "600");
    EXPECT_EQ(Read("10m", kWait), "600");
    for (const char* text :
         {"0", "601", "11m", "9223372036854775807d", "9223372036854775808", "1000000000000000000000"})
        EXPECT_EQ(Read(text, kWait),
                  "'" + std::string(text) + "' is out of range; use " + DescribeNumbers(kWait));
    EXPECT_EQ(Read("9223372036854775807", kCount), "9223372036854775807");
    EXPECT_EQ(Read("9223372036854775808", kCount), "'9223372036854775808' is out of range; use 0 or more");
}

TEST(OptionValues, LimitsAreDescribedBriefly) {
    EXPECT_EQ(DescribeNumbers(kWait), "1 to 600 seconds (or with a unit: s, m, h, d), or -1 to wait forever");
    EXPECT_EQ(DescribeNumbers({NumberUnit::kSeconds, 1, kLargestSeconds}),
              "1 second or more (or with a unit: s, m, h, d)");
    EXPECT_EQ(DescribeNumbers({NumberUnit::kNone, 1}), "1 or more");
    EXPECT_EQ(DescribeNumbers({NumberUnit::kNone, 0, 100}), "0 to 100");
}

TEST(OptionValues, AMisspelledWordIsRefusedWithTheChoicesAndASuggestion) {
    const std::vector<std::string> words = {"lines", "length", "raw"};
    EXPECT_EQ(DescribeWrongWord("lnes", words),
              "'lnes' is not a choice; use lines, length or raw (did you mean lines?)");
    EXPECT_EQ(DescribeWrongWord("xml", words), "'xml' is not a choice; use lines, length or raw");
}

TEST(OptionValues, SuggestionsAreCloseToWhatWasTyped) {
    const std::vector<std::string> words = {"load", "check", "checkpoint", "queue"};
    EXPECT_EQ(SuggestWord("laod", words), "load");
    EXPECT_EQ(SuggestWord("LOAD", words), "load");
    EXPECT_EQ(SuggestWord("chekpoint", words), "checkpoint");
    EXPECT_EQ(SuggestWord("chekc", words), "check");
    EXPECT_EQ(SuggestWord("x", words), "");
    EXPECT_EQ(SuggestWord("print", words), "");
}

TEST(OptionValues, TransformationsGiveOptionsTheNumberAndTheEnumerator) {
    enum class Colour { kRed = 3, kBlue = 5 };
    CLI::App app;
    int seconds = 0;
    Colour colour = Colour::kRed;
    app.add_option("--wait", seconds)->transform(NumberIn({NumberUnit::kSeconds, 1, 3600}));
    app.add_option("--colour", colour)
        ->transform(EnumeratorIn<Colour>({{"red", Colour::kRed}, {"blue", Colour::kBlue}}));
    app.parse("--wait 2m --colour BLUE");
    EXPECT_EQ(seconds, 120);
    EXPECT_EQ(colour, Colour::kBlue);
    EXPECT_THROW(app.parse("--wait 2x"), CLI::ValidationError);
    EXPECT_THROW(app.parse("--colour green"), CLI::ValidationError);
}

}  // namespace
}  // namespace mqam
