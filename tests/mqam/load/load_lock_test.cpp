#include "mqam/load/load_lock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/process.h"
#include "tests/support/program_runner.h"
#include "tests/support/same_test_process.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::StartsWith;

// What the other process does with the lock whose path follows in its part: it acquires the lock, reports that,
// holds it until there is a file "go" next to it, and then ends as its part says.
constexpr char kHoldAndGiveBack[] = "give-back:";
constexpr char kHoldAndEnd[] = "end:";
constexpr char kHoldForEver[] = "hold:";

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
    std::string reason;
    if (AcquireLoadLock(path, 0, reason) != LockOutcome::kAcquired) platform::ExitImmediately(70);
    std::ofstream(path + ".held") << "x";
    if (!WaitForFile(path + ".go") && how != kHoldForEver) platform::ExitImmediately(71);
    if (how == kHoldAndGiveBack) ReleaseLoadLock(path);
    platform::ExitImmediately(0);
}

class LoadLockTest : public testing::Test {
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
    std::string reason_;
};

TEST_F(LoadLockTest, TakenAndGivenBackItLeavesNoFile) {
    ASSERT_EQ(AcquireLoadLock(Path(), 0, reason_), LockOutcome::kAcquired) << reason_;
    EXPECT_TRUE(fs::exists(Path()));
    ReleaseLoadLock(Path());
    EXPECT_FALSE(fs::exists(Path()));
    ASSERT_EQ(AcquireLoadLock(Path(), 0, reason_), LockOutcome::kAcquired) << reason_;
    ReleaseLoadLock(Path());
}

TEST_F(LoadLockTest, AFileThatIsLeftOverLocksNobodyOut) {
    std::ofstream(Path()) << "";
    ASSERT_EQ(AcquireLoadLock(Path(), 0, reason_), LockOutcome::kAcquired) << reason_;
    ReleaseLoadLock(Path());
    EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(LoadLockTest, AFileThatHoldsSomethingIsNoLockAndStays) {
    std::ofstream(Path()) << "somebody's";
    EXPECT_EQ(AcquireLoadLock(Path(), 0, reason_), LockOutcome::kNoLock);
    EXPECT_EQ(reason_, Path() +
                           " holds something: it is not the lock of a load, and is left alone; move it "
                           "away, then run the same command again");
    ReleaseLoadLock(Path());
    EXPECT_EQ(ReadFileIfAny(Path()), "somebody's");
}

TEST_F(LoadLockTest, AProcessTakesSeveral) {
    ASSERT_EQ(AcquireLoadLock(Path(), 0, reason_), LockOutcome::kAcquired) << reason_;
    ASSERT_EQ(AcquireLoadLock(Path() + "2", 0, reason_), LockOutcome::kAcquired) << reason_;
    ReleaseLoadLock(Path());
    EXPECT_TRUE(fs::exists(Path() + "2"));
    ReleaseLoadLock(Path() + "2");
    EXPECT_TRUE(fs::is_empty(folder_.Root()));
}

TEST_F(LoadLockTest, GivingBackWhatIsNotHeldLeavesTheFileAlone) {
    std::ofstream(Path()) << "";
    ReleaseLoadLock(Path());
    EXPECT_TRUE(fs::exists(Path()));
    ReleaseLoadLock("");
}

TEST_F(LoadLockTest, AFolderThatIsMissingIsTold) {
    EXPECT_EQ(AcquireLoadLock(folder_.Path("none") + "/lock", 0, reason_), LockOutcome::kFailed);
    EXPECT_THAT(reason_, StartsWith(folder_.Path("none") + "/lock cannot be made or locked: "));
    EXPECT_THAT(reason_, EndsWith("; check that its folder is there and that you may write to it"));
}

TEST_F(LoadLockTest, ASecondProcessIsRefusedWhileTheFirstHoldsIt) {
    const auto other = StartOther(kHoldAndGiveBack);
    EXPECT_EQ(AcquireLoadLock(Path(), 0, reason_), LockOutcome::kHeld);
    EXPECT_EQ(reason_, "another load is running (it holds " + Path() +
                           "): wait for its end, or end it, then run the same command again");
    LetOtherGo();
    EXPECT_EQ(other->Wait().exitCode, 0);
    EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(LoadLockTest, ASecondProcessGetsItWhenTheFirstGivesItBackInTime) {
    const auto other = StartOther(kHoldAndGiveBack);
    std::thread later([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        LetOtherGo();
    });
    EXPECT_EQ(AcquireLoadLock(Path(), 20, reason_), LockOutcome::kAcquired) << reason_;
    later.join();
    EXPECT_TRUE(fs::exists(Path()));
    EXPECT_EQ(other->Wait().exitCode, 0);
    ReleaseLoadLock(Path());
    EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(LoadLockTest, ItEndsWithAProcessThatDoesNotGiveItBack) {
    const auto other = StartOther(kHoldAndEnd);
    EXPECT_EQ(AcquireLoadLock(Path(), 0, reason_), LockOutcome::kHeld);
    LetOtherGo();
    EXPECT_EQ(other->Wait().exitCode, 0);
    EXPECT_EQ(AcquireLoadLock(Path(), 0, reason_), LockOutcome::kAcquired) << reason_;
    ReleaseLoadLock(Path());
    EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(LoadLockTest, ItEndsWithAProcessThatIsKilled) {
    const auto other = StartOther(kHoldForEver);
    EXPECT_EQ(AcquireLoadLock(Path(), 0, reason_), LockOutcome::kHeld);
    static_cast<void>(other->Wait(0));
    EXPECT_EQ(AcquireLoadLock(Path(), 5, reason_), LockOutcome::kAcquired) << reason_;
}

}  // namespace
