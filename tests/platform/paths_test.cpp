// SPDX-License-Identifier: Apache-2.0
#include "platform/paths.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/test_directory.h"

namespace {

namespace fs = std::filesystem;

TEST(AbsolutePathTest, DotsAndParentFoldersAreTakenOut) {
    const std::string here = fs::current_path().string();
    const auto below = [&here](const std::string& name) { return (fs::path(here) / name).string(); };
    EXPECT_EQ(platform::AbsolutePath("file"), below("file"));
    EXPECT_EQ(platform::AbsolutePath("./a/../file"), below("file"));
    EXPECT_EQ(platform::AbsolutePath("a//b/./file"), (fs::path(here) / "a" / "b" / "file").string());
    EXPECT_EQ(platform::AbsolutePath("a/b/../../file"), below("file"));
    EXPECT_EQ(platform::AbsolutePath(below("file")), below("file"));
    const std::string root = fs::path(here).root_path().string();
    EXPECT_EQ(platform::AbsolutePath(root + "../../file"), root + "file");
}

#if !defined(_WIN32)

// Both the system and the module use the parent of the directory to which the link points.
TEST(AbsolutePathTest, AParentBehindALinkLeadsToWhereTheSystemFindsIt) {
    const TestDirectory folder;
    fs::create_directories(folder.Path("far/deep"));
    fs::create_directory_symlink(folder.Path("far/deep"), folder.Path("link"));
    std::ofstream(folder.Path("far/file")) << "x";
    EXPECT_TRUE(fs::equivalent(platform::AbsolutePath(folder.Path("link/../file")), folder.Path("far/file")));
    EXPECT_EQ(platform::AbsolutePath(folder.Path("link/../../file")), folder.Path("link/../../file"));
    EXPECT_EQ(platform::AbsolutePath(folder.Path("link/a/../file")), folder.Path("link/file"));
}

TEST(AbsolutePathTest, LinksAreFollowedToAFileThatNeedNotBeThere) {
    const TestDirectory folder;
    EXPECT_EQ(platform::FollowLinks(folder.Path("file")), folder.Path("file"));
    fs::create_directory(folder.Path("other"));
    fs::create_symlink("other/second", folder.Path("first"));
    fs::create_symlink(folder.Path("file"), folder.Path("other/second"));
    EXPECT_EQ(platform::FollowLinks(folder.Path("first")), folder.Path("file"));
    fs::create_symlink("round", folder.Path("round"));
    EXPECT_EQ(platform::FollowLinks(folder.Path("round")), folder.Path("round"));
}

#endif

}  // namespace
