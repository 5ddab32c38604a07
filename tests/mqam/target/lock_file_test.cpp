// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/lock_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/file.h"
#include "platform/process.h"
#include "tests/support/program_runner.h"
#include "tests/support/same_test_process.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::StartsWith;

// These are the parts of the other process. Each is followed by the path of a lock: the process acquires it,
// reports that, holds it until a file "go" appears next to it, and ends as its part says.
constexpr char kHoldAndRelease[] = "release:";
constexpr char kHoldAndEnd[] = "end:";
constexpr char kHoldForever[] = "hold:";

bool WaitForFile(const std::string& path) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!fs::exists(path)) {
        if (std::chrono::steady_clock::now() > limit) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

void PlayTheOther(const std::string& part) {
    const std::size_t colon = part.find(':');
    const std::string how = part.substr(0, colon + 1);
    const std::string path = part.substr(colon + 1);
    if (!AcquireLockFile(path, 0).IsOk()) platform::ExitImmediately(70);
    std::ofstream(path + ".held") << "x";
    if (!WaitForFile(path + ".go") && how != kHoldForever) platform::ExitImmediately(71);
    if (how == kHoldAndRelease) ReleaseLockFile(path);
    platform::ExitImmediately(0);
}

class LockFileTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!PartToPlay().empty()) PlayTheOther(PartToPlay());
    }

    [[nodiscard]] std::string Path() const { return folder_.Path("a load.lock"); }

    // Starts the other process and waits until it holds the lock.
    [[nodiscard]] std::unique_ptr<RunningProgram> StartOther(const char* how) const {
        GiveOutPart(how + Path());
        auto other = std::make_unique<RunningProgram>(ThisProgram(), ArgumentsForThisTest(),
                                                      std::map<std::string, std::string>{}, folder_.Root());
        GiveOutPart("");
        EXPECT_TRUE(WaitForFile(Path() + ".held"));
        return other;
    }
    void LetOtherGo() const { std::ofstream(Path() + ".go") << "x"; }

    TestDirectory folder_;
};

TEST_F(LockFileTest, AcquiredAndReleasedItLeavesNoFile) {
    ASSERT_EQ(AcquireLockFile(Path(), 0).Error(), "");
    EXPECT_TRUE(fs::exists(Path()));
    ReleaseLockFile(Path());
    EXPECT_FALSE(fs::exists(Path()));
    ASSERT_EQ(AcquireLockFile(Path(), 0).Error(), "");
    ReleaseLockFile(Path());
}

TEST_F(LockFileTest, AFileThatIsLeftOverLocksNoOneOut) {
    std::ofstream(Path()) << "";
    ASSERT_EQ(AcquireLockFile(Path(), 0).Error(), "");
    ReleaseLockFile(Path());
    EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(LockFileTest, AFileThatIsNotEmptyIsNoLockAndStays) {
    std::ofstream(Path()) << "someone's";
    const Status refused = AcquireLockFile(Path(), 0);
    EXPECT_EQ(refused.Code(), StatusCode::kRefused);
    EXPECT_EQ(refused.Error(),
              Path() +
                  " is not the lock of a load, because it has other contents, and is left alone; move it "
                  "away, then run the same command again");
    ReleaseLockFile(Path());
    EXPECT_EQ(ReadFileIfAny(Path()), "someone's");
}

// A process that was killed while it wrote leaves a part of the contents.
TEST_F(LockFileTest, AFileThatAKilledProcessLeftLocksNoOneOut) {
    const std::string whole = "mqam lock\nprocess=1\nhost=h\nstarted=2026-01-01 00:00:00 UTC\n";
    for (const std::size_t bytes :
         {whole.size(), whole.size() - 1, std::size_t{12}, std::size_t{9}, std::size_t{1}}) {
        std::ofstream(Path(), std::ios::binary) << whole.substr(0, bytes);
        ASSERT_EQ(AcquireLockFile(Path(), 0).Error(), "") << bytes;
        EXPECT_EQ(ReadFileIfAny(Path()).find("process=1\n"), std::string::npos) << bytes;
        ReleaseLockFile(Path());
        EXPECT_FALSE(fs::exists(Path()));
    }
}

#if !defined(_WIN32)
TEST_F(LockFileTest, OnlyItsOwnerMayUseIt) {
    ASSERT_EQ(AcquireLockFile(Path(), 0).Error(), "");
    EXPECT_EQ(fs::status(Path()).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    ReleaseLockFile(Path());
}
#endif

TEST_F(LockFileTest, AProcessMayHoldSeveral) {
    ASSERT_EQ(AcquireLockFile(Path(), 0).Error(), "");
    ASSERT_EQ(AcquireLockFile(Path() + "2", 0).Error(), "");
    ReleaseLockFile(Path());
    EXPECT_TRUE(fs::exists(Path() + "2"));
    ReleaseLockFile(Path() + "2");
    EXPECT_TRUE(fs::is_empty(folder_.Root()));
}

TEST_F(LockFileTest, ReleasingWhatIsNotHeldLeavesTheFileAlone) {
    std::ofstream(Path()) << "";
    ReleaseLockFile(Path());
    EXPECT_TRUE(fs::exists(Path()));
    ReleaseLockFile("");
}

TEST_F(LockFileTest, AMissingDirectoryIsReported) {
    const Status failed = AcquireLockFile(folder_.Path("none") + "/lock", 0);
    EXPECT_EQ(failed.Code(), StatusCode::kTransient);
    EXPECT_THAT(failed.Error(), StartsWith(folder_.Path("none") + "/lock cannot be created or locked: "));
    EXPECT_THAT(failed.Error(), EndsWith("; check that its directory exists and that you may write to it"));
}

TEST_F(LockFileTest, ASecondProcessIsRefusedWhileTheFirstHoldsIt) {
    const auto other = StartOther(kHoldAndRelease);
    const Status refused = AcquireLockFile(Path(), 0);
    EXPECT_EQ(refused.Code(), StatusCode::kRefused);
    // The file says which process holds it.
    std::string text;
    ASSERT_EQ(platform::ReadWholeFile(Path(), text), platform::FileStatus::kOk);
    const auto valueOf = [&text](const std::string& key) {
        const std::size_t from = text.find("\n" + key) + 1 + key.size();
        return text.substr(from, text.find('\n', from) - from);
    };
    EXPECT_EQ(text, "mqam lock\nprocess=" + valueOf("process=") + "\nhost=" + platform::HostName() +
                        "\nstarted=" + valueOf("started=") + "\n");
    EXPECT_GT(std::atoll(valueOf("process=").c_str()), 0);
    EXPECT_NE(std::atoll(valueOf("process=").c_str()), platform::CurrentProcessId());
    EXPECT_TRUE(valueOf("started=").ends_with(" UTC")) << text;
    EXPECT_EQ(refused.Error(), "another load is running: process " + valueOf("process=") + " on " +
                                   platform::HostName() + ", started " + valueOf("started=") + ", holds " +
                                   Path() +
                                   "; wait until it ends, or end it, then run the same command again");
    LetOtherGo();
    EXPECT_EQ(other->Wait().exitCode, 0);
    EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(LockFileTest, ASecondProcessGetsItWhenTheFirstReleasesItInTime) {
    const auto other = StartOther(kHoldAndRelease);
    std::thread later([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        LetOtherGo();
    });
    EXPECT_EQ(AcquireLockFile(Path(), 20).Error(), "");
    later.join();
    EXPECT_TRUE(fs::exists(Path()));
    EXPECT_EQ(other->Wait().exitCode, 0);
    ReleaseLockFile(Path());
    EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(LockFileTest, ItEndsWithAProcessThatDoesNotReleaseIt) {
    const auto other = StartOther(kHoldAndEnd);
    EXPECT_EQ(AcquireLockFile(Path(), 0).Code(), StatusCode::kRefused);
    LetOtherGo();
    EXPECT_EQ(other->Wait().exitCode, 0);
    EXPECT_EQ(AcquireLockFile(Path(), 0).Error(), "");
    ReleaseLockFile(Path());
    EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(LockFileTest, ItEndsWithAProcessThatIsKilled) {
    const auto other = StartOther(kHoldForever);
    EXPECT_EQ(AcquireLockFile(Path(), 0).Code(), StatusCode::kRefused);
    static_cast<void>(other->Wait(0));
    EXPECT_EQ(AcquireLockFile(Path(), 5).Error(), "");
}

}  // namespace
