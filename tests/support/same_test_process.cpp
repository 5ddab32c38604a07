// SPDX-License-Identifier: Apache-2.0
#include "tests/support/same_test_process.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/environment.h"

namespace {

constexpr char kVariable[] = "MQAM_TEST_PART";

}  // namespace

std::string PartToPlay() {
    const char* part = std::getenv(kVariable);
    return part != nullptr ? part : "";
}

void GiveOutPart(const std::string& part) {
    platform::SetEnvironment(kVariable, part);
}

std::string ThisProgram() {
    return testing::internal::GetArgvs().front();
}

std::vector<std::string> ArgumentsForThisTest() {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    return {std::string("--gtest_filter=") + test->test_suite_name() + "." + test->name()};
}
