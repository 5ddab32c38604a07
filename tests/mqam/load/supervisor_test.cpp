// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/supervisor.h"

#include <gtest/gtest.h>

#include "mqam/base/exit_codes.h"
#include "mqam/load/worker_process.h"
#include "platform/process.h"
#include "tests/mqam/load/empty_target.h"
#include "tests/mqam/load/this_test_as_worker.h"
#include "tests/support/same_test_process.h"

using namespace mqam;

namespace {

// A target whose state can be read once, but never again.
class UnreadableTarget : public EmptyTarget {
  public:
    Status LoadState(std::optional<RestartState>& state) override {
        state.reset();
        return loads_++ == 0 ? Status() : Status::Transient("cannot read the state: the disk is gone");
    }

  private:
    int loads_ = 0;
};

TEST(LoadSupervisorTest, ALoadWhoseEndCannotBeLookedUpIsNotCalledKilled) {
    if (!PartToPlay().empty()) platform::ExitImmediately(platform::MarkExitCode(kExitDone));
    MakeThisTestTheWorker("worker");
    UnreadableTarget target;
    testing::internal::CaptureStderr();
    const int exitCode = SuperviseLoad(SupervisorSettings(), target);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(exitCode, kExitTargetFailed);
    EXPECT_EQ(
        told,
        "mqam load: it cannot be known whether the load is done: cannot read the state: the disk is gone\n"
        "  safe      what is loaded stays loaded; how much that is cannot be known while the restart "
        "information cannot be read\n"
        "  next      fix that, then run the same command again\n");
}

}  // namespace
