// SPDX-License-Identifier: Apache-2.0
#include "platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>

#include "tests/support/test_directory.h"

namespace {

TEST(SyncFile, SucceedsOnWhatHasNoMedium) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    EXPECT_EQ(platform::SyncFile(ends[1]), 0);
    close(ends[0]);
    close(ends[1]);
    const int null = open("/dev/null", O_WRONLY);
    EXPECT_EQ(platform::SyncFile(null), 0);
    close(null);
}

TEST(SyncFile, FailsOnAFileWhoseFileSystemDoesNotDoIt) {
    const int descriptor = open("/proc/self/comm", O_WRONLY);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(platform::SyncFile(descriptor), -1);
    EXPECT_EQ(errno, EINVAL);
    close(descriptor);
}

class FileAt : public testing::Test {
  protected:
    FileAt() {
        std::ofstream(path_) << "12345";
        descriptor_ = open(path_.c_str(), O_WRONLY);
    }
    ~FileAt() override { close(descriptor_); }

    TestDirectory folder_;
    std::string path_ = folder_.Path("file");
    int descriptor_ = -1;
};

TEST_F(FileAt, HasItsLength) {
    EXPECT_TRUE(platform::IsFileAt(descriptor_, path_, 5));
    EXPECT_FALSE(platform::IsFileAt(descriptor_, path_, 4));
    EXPECT_EQ(errno, 0);
}

TEST_F(FileAt, IsNoLongerThereWhenItWasRemovedOrAnotherHasItsPlace) {
    std::filesystem::remove(path_);
    EXPECT_FALSE(platform::IsFileAt(descriptor_, path_, 5));
    EXPECT_EQ(errno, 0);
    std::ofstream(path_) << "12345";
    EXPECT_FALSE(platform::IsFileAt(descriptor_, path_, 5));
    EXPECT_EQ(errno, 0);
}

TEST_F(FileAt, SaysSoWhenTheSystemDoesNotTell) {
    std::filesystem::remove(path_);
    std::filesystem::create_symlink(path_, path_);
    EXPECT_FALSE(platform::IsFileAt(descriptor_, path_, 5));
    EXPECT_EQ(errno, ELOOP);
}

}  // namespace
