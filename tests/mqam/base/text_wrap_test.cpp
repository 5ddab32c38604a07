// SPDX-License-Identifier: Apache-2.0
#include "mqam/base/text_wrap.h"

#include <gtest/gtest.h>

using namespace mqam;

namespace {

TEST(HelpFormat, TextIsBrokenAtBlanksWithinTheWidth) {
    EXPECT_EQ(WrapText("one two three", 7), "one two\nthree");
    EXPECT_EQ(WrapText("one two three", 13), "one two three");
    EXPECT_EQ(WrapText("one two three", 1), "one\ntwo\nthree");
    EXPECT_EQ(WrapText("", 10), "");
}

TEST(HelpFormat, LongWordStandsAlone) {
    EXPECT_EQ(WrapText("a bbbbbbbb c", 4), "a\nbbbbbbbb\nc");
}

TEST(HelpFormat, LineEndsOfTheTextAreKept) {
    EXPECT_EQ(WrapText("one two\nthree", 20), "one two\nthree");
}

}  // namespace
