// SPDX-License-Identifier: Apache-2.0
#include "platform/standard_streams.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/support/files.h"
#include "tests/support/test_directory.h"

namespace {

TEST(StandardStreams, OutputGoesToAFileUntilItIsRestored) {
    const TestDirectory directory;
    const std::string path = directory.Path("output");
    WriteFile(path, "old contents, longer than the new ones");
    const int original = platform::RedirectStdoutToFile(path);
    ASSERT_GE(original, 0);
    std::fputs("to the file", stdout);
    platform::RestoreStdout(original);
    std::fputs("elsewhere\n", stdout);
    std::fflush(stdout);
    EXPECT_EQ(ReadFile(path), "to the file");
}

TEST(StandardStreams, AFileThatCannotBeOpenedLeavesOutputAsItIs) {
    const TestDirectory directory;
    EXPECT_EQ(platform::RedirectStdoutToFile(directory.Path("missing") + "/output"), -1);
}

}  // namespace
