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

    [[nodiscard]] bool Read() { return ReadRestartFile(Path(), state_, reason_, mayPass_); }
    [[nodiscard]] bool Write(std::uint64_t records) {
        RestartState state;
        state.records = records;
        return ReplaceRestartFile(Path(), state, reason_);
    }

    TestDirectory folder_;
    std::optional<RestartState> state_ = RestartState{};
    std::string reason_;
    bool mayPass_ = false;
};

TEST_F(RestartFileTest, NoFileIsNoInformation) {
    ASSERT_TRUE(Read()) << reason_;
    EXPECT_FALSE(state_);
}

TEST_F(RestartFileTest, WhatWasWrittenIsRead) {
    ASSERT_TRUE(Write(41)) << reason_;
    ASSERT_TRUE(Write(42)) << reason_;
    ASSERT_TRUE(Read()) << reason_;
    ASSERT_TRUE(state_);
    EXPECT_EQ(state_->records, 42U);
    EXPECT_FALSE(fs::exists(Path() + ".new"));
}

TEST_F(RestartFileTest, WhatAnInterruptedReplacementLeftIsNeitherReadNorInTheWay) {
    std::ofstream(Path() + ".new") << "mqam restart informa";
    ASSERT_TRUE(Read()) << reason_;
    EXPECT_FALSE(state_);
    ASSERT_TRUE(Write(7)) << reason_;
    std::ofstream(Path() + ".new") << std::string(5000, 'x');
    ASSERT_TRUE(Read()) << reason_;
    EXPECT_EQ(state_->records, 7U);
    ASSERT_TRUE(Write(8)) << reason_;
    ASSERT_TRUE(Read()) << reason_;
    EXPECT_EQ(state_->records, 8U);
    EXPECT_FALSE(fs::exists(Path() + ".new"));
}

TEST_F(RestartFileTest, ADamagedFileIsRefusedWithWhatToDo) {
    ASSERT_TRUE(Write(7)) << reason_;
    std::string text = ReadFileIfAny(Path());
    text[text.find("records=7") + 8] = '9';
    std::ofstream(Path(), std::ios::binary) << text;
    EXPECT_FALSE(Read());
    EXPECT_FALSE(state_);
    EXPECT_EQ(reason_,
              "restart file " + Path() +
                  " is damaged: its checksum does not match its lines; give back an undamaged copy of the "
                  "file as it was last written. Without it nothing can tell which records of the checkpoint "
                  "file are loaded");
}

TEST_F(RestartFileTest, AnEmptyFileIsRefused) {
    std::ofstream(Path()) << "";
    EXPECT_FALSE(Read());
    EXPECT_THAT(reason_, HasSubstr(Path() + " is empty"));
}

TEST_F(RestartFileTest, AFileOfSomethingElseIsRefusedAndNotReadWhole) {
    std::ofstream(Path()) << std::string(3000000, 'x');
    EXPECT_FALSE(Read());
    EXPECT_THAT(reason_, HasSubstr("is not restart information of mqam"));
    EXPECT_FALSE(mayPass_);
}

TEST_F(RestartFileTest, AFolderInItsPlaceCannotBeRead) {
    fs::create_directory(Path());
    EXPECT_FALSE(Read());
    EXPECT_FALSE(state_);
    EXPECT_THAT(reason_, StartsWith("restart file " + Path() + " cannot be read: "));
    EXPECT_TRUE(mayPass_);
}

#if !defined(_WIN32)
TEST_F(RestartFileTest, APathThatCannotBeLookedAtIsNotTakenForNoInformation) {
    fs::create_symlink(Path(), Path());
    EXPECT_FALSE(Read());
    EXPECT_EQ(reason_, "restart file " + Path() + " cannot be read: " + std::strerror(ELOOP));
}
#endif

TEST_F(RestartFileTest, AFolderThatIsMissingIsToldWhenItIsWritten) {
    const std::string path = folder_.Path("none") + "/r";
    EXPECT_FALSE(ReplaceRestartFile(path, RestartState{}, reason_));
    EXPECT_THAT(reason_, StartsWith("cannot replace restart file " + path + ": "));
    ASSERT_TRUE(ReadRestartFile(path, state_, reason_, mayPass_)) << reason_;
    EXPECT_FALSE(state_);
}

TEST_F(RestartFileTest, AReplacementThatFailsLeavesTheFileBefore) {
    ASSERT_TRUE(Write(7)) << reason_;
    fs::create_directory(Path() + ".new");
    EXPECT_FALSE(Write(8));
    EXPECT_THAT(reason_, StartsWith("cannot replace restart file " + Path() + ": "));
    ASSERT_TRUE(Read()) << reason_;
    EXPECT_EQ(state_->records, 7U);
}

#if defined(__linux__)
TEST_F(RestartFileTest, AFullDiskLeavesTheFileBefore) {
    ASSERT_TRUE(Write(7)) << reason_;
    fs::create_symlink("/dev/full", Path() + ".new");
    EXPECT_FALSE(Write(8));
    EXPECT_EQ(reason_, "cannot replace restart file " + Path() + ": " + std::strerror(ENOSPC));
    ASSERT_TRUE(Read()) << reason_;
    EXPECT_EQ(state_->records, 7U);
}
#endif

}  // namespace
