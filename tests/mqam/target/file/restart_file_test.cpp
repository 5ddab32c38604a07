// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/file/restart_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

class RestartFileTest : public testing::Test {
  protected:
    [[nodiscard]] std::string Path() const { return folder_.Path("a load.restart"); }

    // These return the error message, which is empty if the call succeeded.
    [[nodiscard]] std::string Read() {
        read_ = ReadRestartFile(Path(), state_);
        return read_.Error();
    }
    [[nodiscard]] std::string Write(std::uint64_t records) {
        RestartState state;
        state.records = records;
        return ReplaceRestartFile(Path(), state).Error();
    }

    TestDirectory folder_;
    std::optional<RestartState> state_ = RestartState{};
    Status read_;
};

TEST_F(RestartFileTest, NoFileIsNoInformation) {
    ASSERT_EQ(Read(), "");
    EXPECT_FALSE(state_);
}

TEST_F(RestartFileTest, WhatWasWrittenIsRead) {
    ASSERT_EQ(Write(41), "");
    ASSERT_EQ(Write(42), "");
    ASSERT_EQ(Read(), "");
    ASSERT_TRUE(state_);
    EXPECT_EQ(state_->records, 42U);
    EXPECT_FALSE(fs::exists(Path() + ".new"));
}

TEST_F(RestartFileTest, WhatAnInterruptedReplacementLeftIsNeitherReadNorInTheWay) {
    std::ofstream(Path() + ".new") << "mqam restart informa";
    ASSERT_EQ(Read(), "");
    EXPECT_FALSE(state_);
    ASSERT_EQ(Write(7), "");
    std::ofstream(Path() + ".new") << std::string(5000, 'x');
    ASSERT_EQ(Read(), "");
    EXPECT_EQ(state_->records, 7U);
    ASSERT_EQ(Write(8), "");
    ASSERT_EQ(Read(), "");
    EXPECT_EQ(state_->records, 8U);
    EXPECT_FALSE(fs::exists(Path() + ".new"));
}

TEST_F(RestartFileTest, ADamagedFileIsRefusedWithWhatToDo) {
    ASSERT_EQ(Write(7), "");
    std::string text = ReadFileIfAny(Path());
    text[text.find("records=7") + 8] = '9';
    std::ofstream(Path(), std::ios::binary) << text;
    EXPECT_NE(Read(), "");
    EXPECT_FALSE(state_);
    EXPECT_EQ(read_.Error(),
              "restart file " + Path() +
                  " is damaged: its checksum does not match its lines; restore an undamaged copy of the "
                  "file as it was last written. Without it nothing can say which records of the checkpoint "
                  "file are loaded");
}

TEST_F(RestartFileTest, AnEmptyFileIsRefused) {
    std::ofstream(Path()) << "";
    EXPECT_THAT(Read(), HasSubstr(Path() + " is empty"));
}

TEST_F(RestartFileTest, AFileOfSomethingElseIsRefusedAndNotReadWhole) {
    std::ofstream(Path()) << std::string(3000000, 'x');
    EXPECT_THAT(Read(), HasSubstr("is not restart information of mqam"));
    EXPECT_EQ(read_.Code(), StatusCode::kRefused);
}

TEST_F(RestartFileTest, ADirectoryInItsPlaceCannotBeRead) {
    fs::create_directory(Path());
    EXPECT_NE(Read(), "");
    EXPECT_FALSE(state_);
    EXPECT_THAT(read_.Error(), StartsWith("restart file " + Path() + " cannot be read: "));
    EXPECT_EQ(read_.Code(), StatusCode::kTransient);
}

#if !defined(_WIN32)
TEST_F(RestartFileTest, APathThatCannotBeExaminedIsNotTakenForNoInformation) {
    fs::create_symlink(Path(), Path());
    EXPECT_EQ(Read(), "restart file " + Path() + " cannot be read: " + std::strerror(ELOOP));
}
#endif

TEST_F(RestartFileTest, AMissingDirectoryIsReportedWhenTheFileIsWritten) {
    const std::string path = folder_.Path("none") + "/r";
    EXPECT_THAT(ReplaceRestartFile(path, RestartState{}).Error(),
                StartsWith("cannot replace restart file " + path + ": "));
    ASSERT_EQ(ReadRestartFile(path, state_).Error(), "");
    EXPECT_FALSE(state_);
}

TEST_F(RestartFileTest, AReplacementThatFailsLeavesTheFileBefore) {
    ASSERT_EQ(Write(7), "");
    fs::create_directory(Path() + ".new");
    EXPECT_THAT(Write(8), StartsWith("cannot replace restart file " + Path() + ": "));
    ASSERT_EQ(Read(), "");
    EXPECT_EQ(state_->records, 7U);
}

#if defined(__linux__)
TEST_F(RestartFileTest, AFullDiskLeavesTheFileBefore) {
    ASSERT_EQ(Write(7), "");
    fs::create_symlink("/dev/full", Path() + ".new");
    EXPECT_EQ(Write(8), "cannot replace restart file " + Path() + ": " + std::strerror(ENOSPC));
    ASSERT_EQ(Read(), "");
    EXPECT_EQ(state_->records, 7U);
}
#endif

}  // namespace
