// SPDX-License-Identifier: Apache-2.0

// Tests the formatting and parsing of descriptors.
#include <gtest/gtest.h>

#include <cstring>

#include "spoolmq/store/descriptor.h"

namespace spoolmq {
namespace {

TEST(DescriptorTest, EveryFieldSurvivesTheText) {
    mqi::MQMD md = ParseDescriptor("");
    auto* bytes = reinterpret_cast<unsigned char*>(&md);
    // Every byte of every field gets a value of its own, except BackoutCount, which the text does not contain.
    for (std::size_t i = 8; i < sizeof md; ++i) {
        bytes[i] = static_cast<unsigned char>('A' + i % 50);
    }
    md.BackoutCount = 0;
    std::memcpy(md.ReplyToQ, "a%b\nc", 5);
    const mqi::MQMD parsed = ParseDescriptor(FormatDescriptor(md));
    EXPECT_EQ(0, std::memcmp(&md, &parsed, sizeof md)) << FormatDescriptor(md);
}

TEST(DescriptorTest, DefaultsAreLeftOutAndUnknownLinesAreSkipped) {
    EXPECT_EQ("", FormatDescriptor(ParseDescriptor("")));
    const mqi::MQMD md = ParseDescriptor("Nonsense\nFormat=MQSTR\r\nColour=red\nPriority=high\nExpiry=7\n");
    EXPECT_EQ("MQSTR   ", std::string(md.Format, 8));
    EXPECT_EQ(7, md.Expiry);
    EXPECT_EQ(-1, md.Priority);
}

}  // namespace
}  // namespace spoolmq
