#include "apps/mqam/load_supervisor.h"

#include <gtest/gtest.h>

#include "apps/mqam/exit_codes.h"
#include "apps/mqam/platform.h"
#include "apps/mqam/worker_process.h"
#include "tests/mqam/again_process.h"
#include "tests/mqam/test_folder.h"

namespace {

// Its state can be read once, and never again.
class UnreadableTarget : public RestartableTarget {
  public:
    explicit UnreadableTarget(const TestFolder& folder) : folder_(folder) {}

    [[nodiscard]] bool LoadState(std::optional<RestartState>& state) override {
        state.reset();
        return loads_++ == 0 || Fail("cannot read the state: the disk is gone");
    }
    [[nodiscard]] bool IsOccupied() override { return false; }
    [[nodiscard]] bool Begin(RestartState& /*state*/) override { return false; }
    [[nodiscard]] bool CutBack(const RestartState& /*state*/) override { return false; }
    [[nodiscard]] bool Put(const char* /*record*/, std::size_t /*length*/) override { return false; }
    [[nodiscard]] std::uint64_t Length() const override { return 0; }
    [[nodiscard]] bool Store(const RestartState& /*state*/) override { return false; }
    [[nodiscard]] bool StoreEnd(const RestartState& /*state*/) override { return false; }
    [[nodiscard]] const std::string& Name() const override { return name_; }
    [[nodiscard]] std::string Format() const override { return "lines"; }
    [[nodiscard]] const std::string& StateName() const override { return name_; }
    [[nodiscard]] std::string CommandLock() const override { return folder_.Path("lock"); }
    [[nodiscard]] std::string LifeLock() const override { return folder_.Path("life.lock"); }
    [[nodiscard]] std::vector<NamedFile> Files() const override { return {}; }

  private:
    const TestFolder& folder_;
    std::string name_ = "target";
    int loads_ = 0;
};

TEST(LoadSupervisorTest, ALoadWhoseEndCannotBeLookedUpIsNotCalledKilled) {
    if (!PartToPlay().empty()) EndProcessAtOnce(MarkWorkerExit(kExitDone));
    std::vector<std::string> words = ArgumentsForThisTest();
    words.insert(words.begin(), ThisProgram());
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    KeepArguments(static_cast<int>(arguments.size()), arguments.data());
    GiveOutPart("worker");
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
