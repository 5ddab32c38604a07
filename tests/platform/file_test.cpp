// SPDX-License-Identifier: Apache-2.0
#include "platform/file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/clock.h"
#include "platform/file_status.h"
#include "platform/system.h"
#include "tests/support/files.h"
#include "tests/support/test_directory.h"

namespace {

using platform::FileStatus;
using platform::PathKind;

class FileTest : public testing::Test {
  protected:
    [[nodiscard]] std::string Create(const std::string& name, const std::string& bytes) const {
        WriteFile(directory_.Path(name), bytes);
        return directory_.Path(name);
    }
    [[nodiscard]] std::string Missing() const { return directory_.Path("missing"); }

    TestDirectory directory_;
    platform::FileInfo info_;
};

TEST_F(FileTest, ItsSizeAndTimesAreTold) {
    // Under Wine, and on some file systems, the clock that gives files their times may be up to a tick off.
    constexpr std::int64_t kTickNs = 20000000;
    const std::int64_t beforeNs = platform::FileClockNs() - kTickNs;
    const std::string path = Create("file", "12345");
    ASSERT_EQ(platform::StatPath(path, info_), FileStatus::kOk);
    EXPECT_EQ(info_.bytes, 5);
    EXPECT_TRUE(info_.isFile && !info_.isDirectory);
    EXPECT_GE(info_.writeTimeNs, beforeNs);
    EXPECT_GE(info_.changeTimeNs, beforeNs);
    EXPECT_LE(info_.writeTimeNs, platform::FileClockNs() + kTickNs);
    ASSERT_EQ(platform::StatPath(directory_.Root(), info_), FileStatus::kOk);
    EXPECT_TRUE(info_.isDirectory && !info_.isFile);
}

TEST_F(FileTest, AnotherFileHasAnotherIdentity) {
    platform::FileInfo other;
    ASSERT_EQ(platform::StatPath(Create("file", "1"), info_), FileStatus::kOk);
    ASSERT_EQ(platform::StatPath(Create("other", "1"), other), FileStatus::kOk);
    EXPECT_NE(info_.identity, other.identity);
}

TEST_F(FileTest, APathWithoutAnythingIsNotFound) {
    info_.bytes = 7;
    EXPECT_EQ(platform::StatPath(Missing(), info_), FileStatus::kNotFound);
    EXPECT_EQ(platform::StatPath(Missing() + "/file", info_), FileStatus::kNotFound);
    EXPECT_EQ(info_.bytes, 7);
    EXPECT_NE(platform::LastFileError(), "");
}

TEST_F(FileTest, AProbeTellsFilesFromTheRest) {
    std::uint64_t bytes = 9;
    EXPECT_EQ(platform::ProbePath(Create("file", "123"), bytes), PathKind::kFile);
    EXPECT_EQ(bytes, 3U);
    EXPECT_EQ(platform::ProbePath(directory_.Root(), bytes), PathKind::kOther);
    EXPECT_EQ(bytes, 0U);
    EXPECT_EQ(platform::ProbePath(Missing()), PathKind::kMissing);
    EXPECT_EQ(platform::ProbePath(platform::kIsWindows ? "NUL" : "/dev/null"), PathKind::kOther);
}

TEST_F(FileTest, ItIsReadFromItsStart) {
    platform::FileHandle file = platform::kNoFile;
    ASSERT_EQ(platform::OpenForReading(Create("file", "12345"), file, info_), FileStatus::kOk);
    EXPECT_EQ(info_.bytes, 5);
    std::string buffer(9, '.');
    std::size_t bytesRead = 0;
    EXPECT_EQ(platform::ReadFromStart(file, buffer.data(), 3, bytesRead), FileStatus::kOk);
    EXPECT_EQ(buffer.substr(0, bytesRead), "123");
    EXPECT_EQ(platform::ReadFromStart(file, buffer.data(), buffer.size(), bytesRead), FileStatus::kOk);
    EXPECT_EQ(buffer.substr(0, bytesRead), "12345");
    platform::CloseFile(file);
}

TEST_F(FileTest, WhatIsMissingIsNotOpened) {
    platform::FileHandle file = 0;
    EXPECT_EQ(platform::OpenForReading(Missing(), file, info_), FileStatus::kNotFound);
    EXPECT_EQ(file, platform::kNoFile);
    platform::CloseFile(file);
    std::string content = "old";
    EXPECT_EQ(platform::ReadWholeFile(Missing(), content), FileStatus::kNotFound);
    EXPECT_EQ(content, "");
}

TEST_F(FileTest, ItCanBeRenamedAndDeletedWhileItIsRead) {
    const std::string path = Create("file", "12345");
    platform::FileHandle file = platform::kNoFile;
    ASSERT_EQ(platform::OpenForReading(path, file, info_), FileStatus::kOk);
    EXPECT_EQ(platform::RenameNoReplace(path, directory_.Path("renamed")), FileStatus::kOk);
    EXPECT_EQ(platform::RemoveFile(directory_.Path("renamed")), FileStatus::kOk);
    std::string buffer(5, '.');
    std::size_t bytesRead = 0;
    EXPECT_EQ(platform::ReadFromStart(file, buffer.data(), 5, bytesRead), FileStatus::kOk);
    EXPECT_EQ(buffer, "12345");
    platform::CloseFile(file);
}

TEST_F(FileTest, ANewOneIsWrittenAndReadWhole) {
    const std::string path = directory_.Path("file");
    const std::string bytes("a\0b\r\n", 5);
    for (const bool sync : {false, true}) {
        EXPECT_EQ(platform::WriteNewFile(path, bytes.data(), bytes.size(), sync), FileStatus::kOk);
        std::string content;
        EXPECT_EQ(platform::ReadWholeFile(path, content), FileStatus::kOk);
        EXPECT_EQ(content, bytes);
        EXPECT_EQ(platform::RemoveFile(path), FileStatus::kOk);
        EXPECT_FALSE(FileExists(path));
    }
}

TEST_F(FileTest, ANewOneReplacesNoOther) {
    const std::string path = Create("file", "old");
    EXPECT_EQ(platform::WriteNewFile(path, "new", 3, false), FileStatus::kExists);
    EXPECT_EQ(ReadFile(path), "old");
    EXPECT_EQ(platform::WriteNewFile(Missing() + "/file", "new", 3, false), FileStatus::kNotFound);
}

TEST_F(FileTest, RemovingWhatIsMissingSucceeds) {
    EXPECT_EQ(platform::RemoveFile(Missing()), FileStatus::kOk);
}

TEST_F(FileTest, ItIsNotRenamedOverAnother) {
    const std::string from = Create("from", "bytes");
    const std::string to = Create("to", "others");
    EXPECT_EQ(platform::RenameNoReplace(from, to), FileStatus::kExists);
    EXPECT_EQ(ReadFile(from), "bytes");
    EXPECT_EQ(ReadFile(to), "others");
    EXPECT_EQ(platform::RenameNoReplace(Missing(), directory_.Path("new")), FileStatus::kNotFound);
    EXPECT_EQ(platform::RenameNoReplace(from, directory_.Path("new")), FileStatus::kOk);
    EXPECT_FALSE(FileExists(from));
}

}  // namespace
