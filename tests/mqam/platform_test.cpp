#include "apps/mqam/platform.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>

#include "tests/mqam/test_folder.h"

namespace {

TEST(SyncToMedium, SucceedsOnWhatHasNoMedium) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    EXPECT_EQ(SyncToMedium(ends[1]), 0);
    close(ends[0]);
    close(ends[1]);
    const int null = open("/dev/null", O_WRONLY);
    EXPECT_EQ(SyncToMedium(null), 0);
    close(null);
}

TEST(SyncToMedium, FailsOnAFileWhoseFileSystemDoesNotDoIt) {
    const int descriptor = open("/proc/self/comm", O_WRONLY);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(SyncToMedium(descriptor), -1);
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

    TestFolder folder_;
    std::string path_ = folder_.Path("file");
    int descriptor_ = -1;
};

TEST_F(FileAt, HasItsLength) {
    EXPECT_TRUE(IsFileAt(descriptor_, path_, 5));
    EXPECT_FALSE(IsFileAt(descriptor_, path_, 4));
    EXPECT_EQ(errno, 0);
}

TEST_F(FileAt, IsNoLongerThereWhenItWasRemovedOrAnotherHasItsPlace) {
    std::filesystem::remove(path_);
    EXPECT_FALSE(IsFileAt(descriptor_, path_, 5));
    EXPECT_EQ(errno, 0);
    std::ofstream(path_) << "12345";
    EXPECT_FALSE(IsFileAt(descriptor_, path_, 5));
    EXPECT_EQ(errno, 0);
}

TEST_F(FileAt, SaysSoWhenTheSystemDoesNotTell) {
    std::filesystem::remove(path_);
    std::filesystem::create_symlink(path_, path_);
    EXPECT_FALSE(IsFileAt(descriptor_, path_, 5));
    EXPECT_EQ(errno, ELOOP);
}

}  // namespace
