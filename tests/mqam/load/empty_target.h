// SPDX-License-Identifier: Apache-2.0

// A target that keeps nothing and never fails. A test overrides what it needs.
#pragma once

#include "mqam/target/target.h"

using mqam::RestartState;
using mqam::Status;
using mqam::Target;

class EmptyTarget : public Target {
  public:
    Status LoadState(std::optional<RestartState>& state) override {
        state.reset();
        return {};
    }
    [[nodiscard]] bool IsOccupied() override { return false; }
    Status CheckNew() override { return {}; }
    Status Begin(RestartState& /*state*/) override { return {}; }
    Status RollBackTo(const RestartState& /*state*/) override { return {}; }
    Status ForgetState() override { return {}; }
    Status ReadLastRecord(const RestartState& /*state*/, std::vector<char>& /*record*/) override {
        return Status::Refused("empty");
    }
    Status Put(const char* /*record*/, std::size_t /*length*/) override { return {}; }
    [[nodiscard]] std::uint64_t Length() const override { return 0; }
    Status Store(const RestartState& state) override { return StoreEnd(state); }
    Status StoreEnd(const RestartState& /*state*/) override { return {}; }
    [[nodiscard]] const std::string& Name() const override { return name_; }
    [[nodiscard]] std::string Format() const override { return "lines"; }
    [[nodiscard]] const std::string& StateName() const override { return name_; }
    [[nodiscard]] const mqam::LoadPlaces& Places() const override { return places_; }
    Status AcquireLock(mqam::TargetLock /*lock*/, int /*timeoutSeconds*/) override { return {}; }
    void ReleaseLock(mqam::TargetLock /*lock*/) override {}
    [[nodiscard]] std::vector<mqam::LoadFile> Files() const override { return {}; }

  private:
    std::string name_ = "target";
    mqam::LoadPlaces places_;
};
