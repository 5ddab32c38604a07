#include "apps/mqam/load_supervisor.h"

#include <gtest/gtest.h>

#include "apps/mqam/exit_codes.h"
#include "apps/mqam/platform.h"
#include "apps/mqam/worker_process.h"
#include "tests/mqam/again_process.h"
#include "tests/mqam/empty_target.h"
#include "tests/mqam/test_folder.h"

namespace {

// Its state can be read once, and never again.
class UnreadableTarget : public EmptyTarget {
  public:
    explicit UnreadableTarget(const TestFolder& folder) : folder_(folder) {}

    [[nodiscard]] bool LoadState(std::optional<RestartState>& state) override {
        state.reset();
        return loads_++ == 0 || Fail("cannot read the state: the disk is gone");
    }
    [[nodiscard]] std::string CommandLock() const override { return folder_.Path("lock"); }
    [[nodiscard]] std::string LifeLock() const override { return folder_.Path("life.lock"); }

  private:
    const TestFolder& folder_;
    int loads_ = 0;
};

TEST(LoadSupervisorTest, ALoadWhoseEndCannotBeLookedUpIsNotCalledKilled) {
    if (!PartToPlay().empty()) EndProcessAtOnce(MarkWorkerExit(kExitDone));
    MakeThisTestTheWorker("worker");
    const TestFolder folder;
    UnreadableTarget target(folder);
    testing::internal::CaptureStderr();
    const int exitCode = SuperviseLoad(LoadOptions(), target);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(exitCode, kExitTargetFailed);
    EXPECT_EQ(told,
              "mqam load: whether the load is done cannot be told: cannot read the state: the disk is gone\n"
              "  safe      what is loaded stays so; how much it is cannot be told while the restart "
              "information cannot be read\n"
              "  next      put that right, then run the same command again\n");
}

}  // namespace
