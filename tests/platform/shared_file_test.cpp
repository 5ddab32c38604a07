// SPDX-License-Identifier: Apache-2.0
#include "platform/shared_file.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "platform/file_status.h"
#include "tests/support/files.h"
#include "tests/support/test_directory.h"

namespace {

using platform::FileStatus;

constexpr std::size_t kBytes = 64;

class SharedFileTest : public testing::Test {
  protected:
    ~SharedFileTest() override {
        platform::UnmapSharedFile(first_);
        platform::UnmapSharedFile(second_);
    }
    [[nodiscard]] std::string Path() const { return directory_.Path("file"); }

    TestDirectory directory_;
    platform::SharedFile first_;
    platform::SharedFile second_;
};

TEST_F(SharedFileTest, IsCreatedAndFilledWithZeros) {
    ASSERT_EQ(platform::MapSharedFile(Path(), kBytes, first_), FileStatus::kOk);
    EXPECT_EQ(first_.bytes, kBytes);
    EXPECT_EQ(std::string(static_cast<const char*>(first_.memory), kBytes), std::string(kBytes, '\0'));
    EXPECT_EQ(std::filesystem::file_size(Path()), kBytes);
}

TEST_F(SharedFileTest, HasWhatTheFileContained) {
    WriteFile(Path(), "kept");
    ASSERT_EQ(platform::MapSharedFile(Path(), kBytes, first_), FileStatus::kOk);
    EXPECT_EQ(std::string(static_cast<const char*>(first_.memory), 5), std::string("kept\0", 5));
}

TEST_F(SharedFileTest, IsTheSameMemoryForAll) {
    ASSERT_EQ(platform::MapSharedFile(Path(), kBytes, first_), FileStatus::kOk);
    ASSERT_EQ(platform::MapSharedFile(Path(), kBytes, second_), FileStatus::kOk);
    std::memcpy(first_.memory, "new", 4);
    EXPECT_STREQ(static_cast<const char*>(second_.memory), "new");
}

TEST_F(SharedFileTest, CanBeTouchedAfterItWasTruncated) {
    ASSERT_EQ(platform::MapSharedFile(Path(), kBytes, first_), FileStatus::kOk);
    std::error_code ignored;  // Windows refuses to truncate it
    std::filesystem::resize_file(Path(), 0, ignored);
    ASSERT_TRUE(platform::EnsureFileSize(first_));
    static_cast<char*>(first_.memory)[kBytes - 1] = 'x';
    EXPECT_EQ(std::filesystem::file_size(Path()), kBytes);
}

TEST_F(SharedFileTest, InADirectoryThatIsMissingIsAnError) {
    EXPECT_EQ(platform::MapSharedFile(directory_.Path("missing") + "/file", kBytes, first_),
              FileStatus::kNotFound);
    EXPECT_EQ(first_.memory, nullptr);
    platform::UnmapSharedFile(first_);
}

}  // namespace
