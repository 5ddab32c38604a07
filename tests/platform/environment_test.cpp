// SPDX-License-Identifier: Apache-2.0
#include "platform/environment.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

constexpr char kVariable[] = "MQAM_TEST_VARIABLE";

TEST(Environment, AVariableIsSetChangedAndRemoved) {
    ASSERT_EQ(std::getenv(kVariable), nullptr);
    platform::SetEnvironment(kVariable, "a");
    EXPECT_STREQ(std::getenv(kVariable), "a");
    platform::SetEnvironment(kVariable, "b c");
    EXPECT_STREQ(std::getenv(kVariable), "b c");
    EXPECT_EQ(platform::ReadEnvironment(kVariable), "b c");
    platform::SetEnvironment(kVariable, "");
    EXPECT_EQ(std::getenv(kVariable), nullptr);
    EXPECT_EQ(platform::ReadEnvironment(kVariable), "");
}

TEST(Environment, AnEmptyVariableIsThereWhereTheSystemHasSuch) {
    const bool exists = platform::SetEmptyEnvironment(kVariable);
    const char* value = std::getenv(kVariable);
    if (exists) {
        EXPECT_STREQ(value, "");
    } else {
        EXPECT_EQ(value, nullptr);
    }
    platform::SetEnvironment(kVariable, "");
}

}  // namespace
