// SPDX-License-Identifier: Apache-2.0
#include "platform/directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "platform/file_status.h"
#include "tests/support/files.h"
#include "tests/support/test_directory.h"

namespace {

using platform::FileStatus;

TEST(ListDirectory, ReturnsTheNamesOfFilesAndDirectories) {
    const TestDirectory directory;
    std::ofstream(directory.Path("file")) << "x";
    std::filesystem::create_directory(directory.Path("inner"));
    for (const std::string& path : {directory.Root(), directory.Root() + "/"}) {
        std::vector<platform::DirectoryEntry> entries = {{"old", false, true}};
        EXPECT_EQ(platform::ListDirectory(path, entries), FileStatus::kOk);
        ASSERT_EQ(entries.size(), 2U);
        std::sort(entries.begin(), entries.end(),
                  [](const auto& left, const auto& right) { return left.name < right.name; });
        EXPECT_EQ(entries[0].name, "file");
        EXPECT_TRUE(entries[0].isFile && !entries[0].isDirectory);
        EXPECT_EQ(entries[1].name, "inner");
        EXPECT_TRUE(entries[1].isDirectory && !entries[1].isFile);
    }
}

TEST(ListDirectory, AnEmptyPathIsTheCurrentDirectory) {
    const TemporaryDirectory current;
    WriteFile("file", "x");
    std::vector<platform::DirectoryEntry> entries;
    EXPECT_EQ(platform::ListDirectory("", entries), FileStatus::kOk);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].name, "file");
}

TEST(ListDirectory, KeepsNamesThatAreNotAscii) {
    const TestDirectory directory;
    const std::string name = "gr\xC3\xBC\xC3\x9F";
    EXPECT_EQ(platform::MakeDirectory(directory.Root() + "/" + name), FileStatus::kOk);
    std::vector<platform::DirectoryEntry> entries;
    EXPECT_EQ(platform::ListDirectory(directory.Root(), entries), FileStatus::kOk);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].name, name);
}

TEST(ListDirectory, ReturnsNothingForADirectoryThatIsMissing) {
    const TestDirectory directory;
    std::vector<platform::DirectoryEntry> entries = {{"old", false, true}};
    EXPECT_EQ(platform::ListDirectory(directory.Path("missing"), entries), FileStatus::kNotFound);
    EXPECT_TRUE(entries.empty());
    EXPECT_NE(platform::LastFileError(), "");
}

TEST(MakeDirectory, CreatesADirectoryOrKeepsTheOneThatExists) {
    const TestDirectory directory;
    const std::string path = directory.Path("inner");
    EXPECT_EQ(platform::MakeDirectory(path), FileStatus::kOk);
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_EQ(platform::MakeDirectory(path), FileStatus::kOk);
}

TEST(MakeDirectory, FailsWhereAFileHasItsNameOrItsParentIsMissing) {
    const TestDirectory directory;
    WriteFile(directory.Path("file"), "x");
    EXPECT_EQ(platform::MakeDirectory(directory.Path("file")), FileStatus::kExists);
    EXPECT_EQ(platform::MakeDirectory(directory.Path("missing") + "/inner"), FileStatus::kNotFound);
}

TEST(RemoveEmptyDirectory, RemovesAnEmptyDirectoryAndNoOther) {
    const TestDirectory directory;
    const std::string path = directory.Path("inner");
    EXPECT_EQ(platform::RemoveEmptyDirectory(path), FileStatus::kOk);
    std::filesystem::create_directory(path);
    WriteFile(path + "/file", "x");
    EXPECT_NE(platform::RemoveEmptyDirectory(path), FileStatus::kOk);
    EXPECT_TRUE(FileExists(path + "/file"));
    std::filesystem::remove(path + "/file");
    EXPECT_EQ(platform::RemoveEmptyDirectory(path), FileStatus::kOk);
    EXPECT_FALSE(FileExists(path));
}

TEST(SyncDirectory, SucceedsOnADirectory) {
    const TestDirectory directory;
    EXPECT_EQ(platform::SyncDirectory(directory.Root()), FileStatus::kOk);
}

}  // namespace
