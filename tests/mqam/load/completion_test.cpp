// The end of a load that is finished, with a target that notes what is asked of it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "mqam/load/completion.h"
#include "tests/mqam/load/empty_target.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

namespace fs = std::filesystem;

// Stores nothing, and fails from a number of states on.
class NotingTarget : public EmptyTarget {
  public:
    explicit NotingTarget(std::string watched) : watched_(std::move(watched)) {}

    [[nodiscard]] bool StoreEnd(const RestartState& state) override {
        if (statesUntilFailure_-- == 0) return Fail("no room");
        notes_ += state.phase == LoadPhase::kFinished ? "finished" : "complete";
        notes_ += fs::exists(watched_) ? " with file\n" : " without file\n";
        return true;
    }

    void FailBehind(int states) { statesUntilFailure_ = states; }
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
    std::string reason_;
};

// A life that died behind the replacement of the restart file left it perhaps in memory alone.
TEST_F(RestartCleanup, H24_FinishedIsStoredOnceMoreBeforeTheCheckpointFileGoes) {
    NotingTarget target(state_.checkpointFile);
    EXPECT_TRUE(CleanUpFinishedLoad(target, state_, reason_)) << reason_;
    EXPECT_EQ(target.Notes(), "finished with file\ncomplete without file\n");
    EXPECT_EQ(state_.phase, LoadPhase::kComplete);
}

TEST_F(RestartCleanup, H24_WhenItCannotBeStoredTheCheckpointFileStays) {
    NotingTarget target(state_.checkpointFile);
    target.FailBehind(0);
    EXPECT_FALSE(CleanUpFinishedLoad(target, state_, reason_));
    EXPECT_EQ(reason_, "no room");
    EXPECT_TRUE(fs::exists(state_.checkpointFile));
    target.FailBehind(1);
    EXPECT_FALSE(CleanUpFinishedLoad(target, state_, reason_));
    EXPECT_EQ(state_.phase, LoadPhase::kFinished);
}

TEST_F(RestartCleanup, ALoadThatIsCompleteIsLeftAlone) {
    NotingTarget target(state_.checkpointFile);
    state_.phase = LoadPhase::kComplete;
    EXPECT_TRUE(CleanUpFinishedLoad(target, state_, reason_)) << reason_;
    EXPECT_EQ(target.Notes(), "");
    EXPECT_TRUE(fs::exists(state_.checkpointFile)) << "another load's by now";
}

}  // namespace
