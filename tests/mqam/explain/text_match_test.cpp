// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/text_match.h"

#include <gtest/gtest.h>

using namespace mqam;

namespace {

TEST(EditDistance, CountsInsertedDeletedReplacedAndSwappedCharacters) {
    EXPECT_EQ(EditDistance("", ""), 0U);
    EXPECT_EQ(EditDistance("QUEUE", "QUEUE"), 0U);
    EXPECT_EQ(EditDistance("QUEUE", "QUEU"), 1U);
    EXPECT_EQ(EditDistance("QUEU", "QUEUE"), 1U);
    EXPECT_EQ(EditDistance("QUEUE", "QUERE"), 1U);
    EXPECT_EQ(EditDistance("NAME", "NMAE"), 1U);
    EXPECT_EQ(EditDistance("", "ABC"), 3U);
    EXPECT_EQ(EditDistance("KITTEN", "SITTING"), 3U);
}

TEST(ToUpper, ChangesLettersOnly) {
    EXPECT_EQ(ToUpper("mqrc_2x"), "MQRC_2X");
}

}  // namespace
