// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "install_layout.h"
#include "mqam/module/module_session.h"
#include "platform/library.h"

namespace mqam {
namespace {

namespace fs = std::filesystem;

/// Makes a directory with the layout of an installation, with or without the module in each of its places.
class FindModuleTest : public ::testing::Test {
  protected:
    FindModuleTest()
        : root_(fs::temp_directory_path() /
                ("find_module." + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name())),
          programDirectory_((root_ / "bin" / "").string()) {
        fs::remove_all(root_);
        fs::create_directories(programDirectory_);
        fs::create_directories(programDirectory_ + kInstalledModuleDirectory);
    }
    ~FindModuleTest() override { fs::remove_all(root_); }

    std::string NextToProgram() const { return programDirectory_ + platform::LibraryFileName("mqamod"); }
    std::string Installed() const {
        return programDirectory_ + kInstalledModuleDirectory + platform::LibraryFileName("mqamod");
    }
    static void MakeFile(const std::string& path) { std::ofstream(path) << "module"; }

    fs::path root_;
    std::string programDirectory_;
};

TEST_F(FindModuleTest, TheOneInTheProgramsDirectoryIsTaken) {
    MakeFile(NextToProgram());
    EXPECT_EQ(FindModule(programDirectory_), NextToProgram());
}

TEST_F(FindModuleTest, AnInstalledOneIsFoundFromTheProgramsDirectory) {
    MakeFile(Installed());
    const std::string found = FindModule(programDirectory_);
    ASSERT_TRUE(fs::exists(found)) << found;
    EXPECT_TRUE(fs::equivalent(found, Installed())) << found;
}

TEST_F(FindModuleTest, TheProgramsDirectoryComesBeforeTheInstallation) {
    MakeFile(Installed());
    MakeFile(NextToProgram());
    EXPECT_EQ(FindModule(programDirectory_), NextToProgram());
}

TEST_F(FindModuleTest, WithoutAModuleThePathInTheProgramsDirectoryIsReported) {
    EXPECT_EQ(FindModule(programDirectory_), NextToProgram());
}

}  // namespace
}  // namespace mqam
