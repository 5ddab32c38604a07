// Making and deleting queues by hand.
#include <gtest/gtest.h>

#include <filesystem>

#include "spoolmq/store/admin.h"
#include "tests/support/files.h"

namespace spoolmq {
namespace {

namespace fs = std::filesystem;

class StoreAdminTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string why;
        ASSERT_EQ(StoreStatus::Ok, CreateQueueManager("spool", "QM1", {}, &why)) << why;
        ASSERT_EQ(StoreStatus::Ok, CreateQueue("spool", "QM1", "Q", {}, &why)) << why;
    }

    TemporaryDirectory directory_;
};

TEST_F(StoreAdminTest, ADeletedQueueTakesItsFilesAndFoldersAlong) {
    fs::create_directories("spool/QM1/Q/deep/deeper");
    WriteFile("spool/QM1/Q/deep/deeper/file", "x");
    WriteFile("spool/QM1/Q/message", "x");
    std::string why;
    EXPECT_EQ(StoreStatus::Ok, DeleteQueue("spool", "QM1", "Q", &why)) << why;
    EXPECT_FALSE(fs::exists("spool/QM1/Q"));
    EXPECT_TRUE(fs::exists("spool/QM1"));
}

#ifndef _WIN32
TEST_F(StoreAdminTest, ADeletedQueueLeavesAloneWhatItsLinksLeadTo) {
    fs::create_directory("elsewhere");
    WriteFile("elsewhere/file", "kept");
    const fs::path here = fs::current_path();
    fs::create_directory_symlink(here / "elsewhere", "spool/QM1/Q/folder");
    fs::create_symlink(here / "elsewhere/file", "spool/QM1/Q/file");
    fs::create_symlink("nowhere", "spool/QM1/Q/nothing");
    std::string why;
    EXPECT_EQ(StoreStatus::Ok, DeleteQueue("spool", "QM1", "Q", &why)) << why;
    EXPECT_FALSE(fs::exists("spool/QM1/Q"));
    EXPECT_EQ(ReadFile("elsewhere/file"), "kept");
}
#endif

}  // namespace
}  // namespace spoolmq
