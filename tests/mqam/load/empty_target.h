// A target that keeps nothing and never fails: a test replaces what it is about.
#pragma once

#include "mqam/target/target.h"

using mqam::RestartState;
using mqam::Target;

class EmptyTarget : public Target {
  public:
    [[nodiscard]] bool LoadState(std::optional<RestartState>& state) override {
        state.reset();
        return true;
    }
    [[nodiscard]] bool IsOccupied() override { return false; }
    [[nodiscard]] bool Begin(RestartState& /*state*/) override { return true; }
    [[nodiscard]] bool RollBackTo(const RestartState& /*state*/) override { return true; }
    [[nodiscard]] bool Put(const char* /*record*/, std::size_t /*length*/) override { return true; }
    [[nodiscard]] std::uint64_t Length() const override { return 0; }
    [[nodiscard]] bool Store(const RestartState& state) override { return StoreEnd(state); }
    [[nodiscard]] bool StoreEnd(const RestartState& /*state*/) override { return true; }
    [[nodiscard]] const std::string& Name() const override { return name_; }
    [[nodiscard]] std::string Format() const override { return "lines"; }
    [[nodiscard]] const std::string& StateName() const override { return name_; }
    [[nodiscard]] std::string CommandLock() const override { return ""; }
    [[nodiscard]] std::string AttemptLock() const override { return ""; }
    [[nodiscard]] std::vector<mqam::LoadFile> Files() const override { return {}; }

  private:
    std::string name_ = "target";
};
