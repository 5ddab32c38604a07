// SPDX-License-Identifier: Apache-2.0
#include "platform/lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/file_status.h"
#include "tests/support/files.h"
#include "tests/support/test_directory.h"

namespace {

using platform::LockResult;

class LockTest : public testing::Test {
  protected:
    [[nodiscard]] std::string Path() const { return directory_.Path("lock"); }
    LockResult Acquire(platform::LockHandle& lock, const platform::LockOptions& options = {}) {
        return platform::AcquireLock(Path(), options, lock);
    }

    TestDirectory directory_;
    platform::LockHandle lock_ = platform::kNoLock;
};

TEST_F(LockTest, ItsFileExistsWhileItIsHeld) {
    ASSERT_EQ(Acquire(lock_), LockResult::kAcquired) << platform::LastFileError();
    EXPECT_NE(lock_, platform::kNoLock);
    EXPECT_TRUE(FileExists(Path()));
    platform::ReleaseLock(Path(), lock_);
    EXPECT_FALSE(FileExists(Path()));
}

TEST_F(LockTest, ASecondHolderIsRefusedUntilTheFirstReleasesIt) {
    ASSERT_EQ(Acquire(lock_), LockResult::kAcquired) << platform::LastFileError();
    platform::LockHandle second = 0;
    EXPECT_EQ(Acquire(second), LockResult::kHeld);
    EXPECT_EQ(second, platform::kNoLock);
    platform::ReleaseLock(Path(), lock_);
    EXPECT_EQ(Acquire(second), LockResult::kAcquired);
    platform::ReleaseLock(Path(), second);
}

TEST_F(LockTest, AFileWithContentsIsLeftAlone) {
    WriteFile(Path(), "contents");
    EXPECT_EQ(Acquire(lock_), LockResult::kNotEmpty);
    EXPECT_EQ(lock_, platform::kNoLock);
    EXPECT_EQ(ReadFile(Path()), "contents");
}

TEST_F(LockTest, AFileWithContentsIsALockFileIfTheCallerSaysSo) {
    WriteFile(Path(), "contents");
    platform::LockOptions options;
    options.refusesContents = false;
    ASSERT_EQ(Acquire(lock_, options), LockResult::kAcquired) << platform::LastFileError();
    platform::ReleaseLock(Path(), lock_);
    EXPECT_FALSE(FileExists(Path()));
}

TEST_F(LockTest, AFileOfZerosIsALockFileThatALossOfPowerLeft) {
    platform::LockOptions options;
    options.contents = "mark\nmore\n";
    WriteFile(Path(), std::string(80, '\0'));
    ASSERT_EQ(Acquire(lock_, options), LockResult::kAcquired) << platform::LastFileError();
    platform::ReleaseLock(Path(), lock_);
    WriteFile(Path(), std::string(80, '\0') + "more");
    EXPECT_EQ(Acquire(lock_, options), LockResult::kNotEmpty);
    WriteFile(Path(), std::string(5000, '\0'));
    EXPECT_EQ(Acquire(lock_, options), LockResult::kNotEmpty);
}

TEST_F(LockTest, ADirectoryThatIsMissingIsAnError) {
    EXPECT_EQ(platform::AcquireLock(directory_.Path("missing") + "/lock", {}, lock_), LockResult::kNotFound);
    EXPECT_EQ(lock_, platform::kNoLock);
    EXPECT_NE(platform::LastFileError(), "");
}

TEST_F(LockTest, AWaitForAFreeLockAcquiresItAndItsFileStays) {
    lock_ = platform::WaitForLock(Path());
    ASSERT_NE(lock_, platform::kNoLock);
    platform::LockHandle second = platform::kNoLock;
    EXPECT_EQ(Acquire(second), LockResult::kHeld);
    platform::ReleaseLockKeepingFile(lock_);
    EXPECT_TRUE(FileExists(Path()));
    EXPECT_EQ(Acquire(second), LockResult::kAcquired);
    platform::ReleaseLock(Path(), second);
}

TEST_F(LockTest, AWaitForALockLastsUntilItIsReleased) {
    lock_ = platform::WaitForLock(Path());
    std::atomic<bool> isReleased{false};
    std::thread waiter([&] {
        const platform::LockHandle second = platform::WaitForLock(Path());
        EXPECT_TRUE(isReleased);
        platform::ReleaseLockKeepingFile(second);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    isReleased = true;
    platform::ReleaseLockKeepingFile(lock_);
    waiter.join();
}

TEST_F(LockTest, AWaitInADirectoryThatIsMissingIsAnError) {
    EXPECT_EQ(platform::WaitForLock(directory_.Path("missing") + "/lock"), platform::kNoLock);
    platform::ReleaseLockKeepingFile(platform::kNoLock);
}

TEST_F(LockTest, ReleasingNoneLeavesTheFileAlone) {
    WriteFile(Path(), "");
    platform::ReleaseLock(Path(), platform::kNoLock);
    EXPECT_TRUE(FileExists(Path()));
}

}  // namespace
