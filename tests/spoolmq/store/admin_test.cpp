// SPDX-License-Identifier: Apache-2.0

// Tests the creation and deletion of queues.
#include <gtest/gtest.h>

#include <filesystem>

#include "spoolmq/store/admin.h"
#include "tests/support/files.h"

namespace spoolmq {
namespace {

namespace fs = std::filesystem;

class AdminTest : public testing::Test {
  protected:
    void SetUp() override {
        Status status = CreateQueueManager("spool", "QM1", {});
        ASSERT_TRUE(status.IsOk()) << status.error;
        status = CreateQueue("spool", "QM1", "Q", {});
        ASSERT_TRUE(status.IsOk()) << status.error;
    }

    TemporaryDirectory directory_;
};

TEST_F(AdminTest, DeletingAQueueDeletesItsFilesAndDirectories) {
    fs::create_directories("spool/QM1/Q/deep/deeper");
    WriteFile("spool/QM1/Q/deep/deeper/file", "x");
    WriteFile("spool/QM1/Q/message", "x");
    const Status status = DeleteQueue("spool", "QM1", "Q");
    EXPECT_TRUE(status.IsOk()) << status.error;
    EXPECT_FALSE(fs::exists("spool/QM1/Q"));
    EXPECT_TRUE(fs::exists("spool/QM1"));
}

#ifndef _WIN32
TEST_F(AdminTest, DeletingAQueueDoesNotFollowLinks) {
    fs::create_directory("elsewhere");
    WriteFile("elsewhere/file", "kept");
    const fs::path here = fs::current_path();
    fs::create_directory_symlink(here / "elsewhere", "spool/QM1/Q/directory");
    fs::create_symlink(here / "elsewhere/file", "spool/QM1/Q/file");
    fs::create_symlink("nowhere", "spool/QM1/Q/nothing");
    const Status status = DeleteQueue("spool", "QM1", "Q");
    EXPECT_TRUE(status.IsOk()) << status.error;
    EXPECT_FALSE(fs::exists("spool/QM1/Q"));
    EXPECT_EQ(ReadFile("elsewhere/file"), "kept");
}
#endif

}  // namespace
}  // namespace spoolmq
