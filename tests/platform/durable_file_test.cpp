// SPDX-License-Identifier: Apache-2.0
#include "platform/durable_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/files.h"
#include "tests/support/test_directory.h"

namespace {

class DurableFile : public testing::Test {
  protected:
    [[nodiscard]] std::string Create(const std::string& name, const std::string& bytes) const {
        WriteFile(directory_.Path(name), bytes);
        return directory_.Path(name);
    }

    TestDirectory directory_;
    std::string error_;
};

TEST_F(DurableFile, IsRenamed) {
    const std::string from = Create("from", "bytes");
    const std::string to = directory_.Path("to");
    EXPECT_TRUE(platform::RenameDurably(from, to, error_)) << error_;
    EXPECT_FALSE(FileExists(from));
    EXPECT_EQ(ReadFile(to), "bytes");
    EXPECT_EQ(error_, "");
}

TEST_F(DurableFile, IsNotRenamedOverAnother) {
    const std::string from = Create("from", "bytes");
    const std::string to = Create("to", "others");
    EXPECT_FALSE(platform::RenameDurably(from, to, error_));
    EXPECT_NE(error_, "");
    EXPECT_EQ(ReadFile(from), "bytes");
    EXPECT_EQ(ReadFile(to), "others");
}

TEST_F(DurableFile, MovesOverAnotherOrToANewName) {
    const std::string to = directory_.Path("to");
    for (const char* bytes : {"first", "second"}) {
        const std::string from = Create("from", bytes);
        EXPECT_TRUE(platform::MoveOverDurably(from, to, error_)) << error_;
        EXPECT_FALSE(FileExists(from));
        EXPECT_EQ(ReadFile(to), bytes);
    }
    EXPECT_FALSE(platform::MoveOverDurably(directory_.Path("missing"), to, error_));
    EXPECT_NE(error_, "");
    EXPECT_EQ(ReadFile(to), "second");
}

TEST_F(DurableFile, IsDeletedOnce) {
    const std::string path = Create("file", "bytes");
    EXPECT_TRUE(platform::DeleteDurably(path, error_)) << error_;
    EXPECT_FALSE(FileExists(path));
    EXPECT_FALSE(platform::DeleteDurably(path, error_));
    EXPECT_NE(error_, "");
}

TEST_F(DurableFile, IsTruncated) {
    const std::string path = Create("file", "123456");
    EXPECT_TRUE(platform::TruncateDurably(path, 4, error_)) << error_;
    EXPECT_EQ(ReadFile(path), "1234");
    EXPECT_FALSE(platform::TruncateDurably(directory_.Path("missing"), 4, error_));
    EXPECT_NE(error_, "");
}

TEST_F(DurableFile, IsCreatedAndReplacedByWayOfTheScratchFile) {
    const std::string path = directory_.Path("file");
    const std::string scratch = directory_.Path("scratch");
    for (const std::string bytes : {"first", "second, which is longer", ""}) {
        EXPECT_TRUE(platform::ReplaceDurably(path, scratch, bytes, error_)) << error_;
        EXPECT_EQ(ReadFile(path), bytes);
        EXPECT_FALSE(FileExists(scratch));
    }
}

TEST_F(DurableFile, StaysAsItIsWhenTheScratchFileCannotBeWritten) {
    const std::string path = Create("file", "bytes");
    EXPECT_FALSE(platform::ReplaceDurably(path, directory_.Path("missing") + "/scratch", "new", error_));
    EXPECT_NE(error_, "");
    EXPECT_EQ(ReadFile(path), "bytes");
}

TEST_F(DurableFile, HasAParentDirectoryThatCanBeSynced) {
    EXPECT_TRUE(platform::SyncParentDirectory(Create("file", "bytes"), error_)) << error_;
    EXPECT_EQ(error_, "");
}

}  // namespace
