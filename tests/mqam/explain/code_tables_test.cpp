// SPDX-License-Identifier: Apache-2.0
#include "mqam/explain/code_tables.h"

#include <gtest/gtest.h>

#include <string>

using namespace mqam;

namespace {

TEST(CodeTables, ReturnCodesAreThoseOfTheInterface) {
    const ReturnCode codes[] = {pmrcOK,          pmrcEOF,     pmrcBadVersion,   pmrcNotSupported,
                                pmrcBadAttrName, pmrcFailure, pmrcBadAttrValue, pmrcTimeout};
    ASSERT_EQ(AllReturnCodes().size(), std::size(codes));
    for (std::size_t i = 0; i < std::size(codes); ++i) {
        EXPECT_EQ(AllReturnCodes()[i].code, codes[i]);
        EXPECT_EQ(FindReturnCode(codes[i]), &AllReturnCodes()[i]);
    }
    EXPECT_EQ(FindReturnCode(1), nullptr);
}

TEST(CodeTables, ExitCodesFollowEachOtherWithoutAGap) {
    int expected = 0;
    for (const ExitCodeRow& row : AllExitCodes()) {
        EXPECT_EQ(static_cast<int>(row.code), expected++);
        EXPECT_EQ(row.isOfLoad, row.code != kExitDamaged);
        EXPECT_NE(std::string(row.meaning).back(), '.');
        EXPECT_EQ(std::string(row.causes).back(), '.');
        EXPECT_EQ(std::string(row.action).back(), '.');
    }
    EXPECT_EQ(expected, kExitNothingToDo + 1);
}

}  // namespace
