// SPDX-License-Identifier: Apache-2.0

// Tests the end of a load that is finished, with a target that records what is asked of it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "mqam/load/completion.h"
#include "tests/mqam/load/empty_target.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

namespace fs = std::filesystem;

// A target that records the states that it is asked to store, and can fail after a number of them.
class NotingTarget : public EmptyTarget {
  public:
    explicit NotingTarget(std::string watched) : watched_(std::move(watched)) {}

    Status StoreEnd(const RestartState& state) override {
        if (statesUntilFailure_-- == 0) return Status::Transient("no room");
        notes_ += state.phase == LoadPhase::kFinished ? "finished" : "complete";
        notes_ += fs::exists(watched_) ? " with file\n" : " without file\n";
        return {};
    }

    void FailAfter(int states) { statesUntilFailure_ = states; }
    [[nodiscard]] const std::string& Notes() const { return notes_; }

  private:
    std::string watched_;
    std::string notes_;
    int statesUntilFailure_ = -1;
};

class RestartCleanup : public testing::Test {
  protected:
    void SetUp() override {
        state_.phase = LoadPhase::kFinished;
        state_.checkpointFile = folder_.Path("ck");
        std::ofstream(state_.checkpointFile) << "records";
    }

    TestDirectory folder_;
    RestartState state_;
};

// An attempt that died after it replaced the restart file may have left the new one only in memory.
TEST_F(RestartCleanup, H24_FinishedIsStoredOnceMoreBeforeTheCheckpointFileGoes) {
    NotingTarget target(state_.checkpointFile);
    EXPECT_EQ(CleanUpFinishedLoad(target, state_).Error(), "");
    EXPECT_EQ(target.Notes(), "finished with file\ncomplete without file\n");
    EXPECT_EQ(state_.phase, LoadPhase::kComplete);
}

TEST_F(RestartCleanup, H24_WhenItCannotBeStoredTheCheckpointFileStays) {
    NotingTarget target(state_.checkpointFile);
    target.FailAfter(0);
    EXPECT_EQ(CleanUpFinishedLoad(target, state_).Error(), "no room");
    EXPECT_TRUE(fs::exists(state_.checkpointFile));
    target.FailAfter(1);
    EXPECT_FALSE(CleanUpFinishedLoad(target, state_).IsOk());
    EXPECT_EQ(state_.phase, LoadPhase::kFinished);
}

TEST_F(RestartCleanup, ALoadThatIsCompleteIsLeftAlone) {
    NotingTarget target(state_.checkpointFile);
    state_.phase = LoadPhase::kComplete;
    EXPECT_EQ(CleanUpFinishedLoad(target, state_).Error(), "");
    EXPECT_EQ(target.Notes(), "");
    EXPECT_TRUE(fs::exists(state_.checkpointFile)) << "another load's by now";
}

}  // namespace
