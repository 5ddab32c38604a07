// SPDX-License-Identifier: Apache-2.0

// One process of a load: the module freshly loaded, with its state at zero. Its file calls can fail, and its
// clock is the test's. When the object ends, the process is dead: what its streams buffered is lost, and the
// module is unloaded.
#pragma once

#include <memory>

#include "platform/library.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fault_plan.h"
#include "tests/support/host_requests.h"

class ModuleProcess : public HostRequests {
  public:
    ModuleProcess();
    ~ModuleProcess();
    ModuleProcess(const ModuleProcess&) = delete;
    ModuleProcess& operator=(const ModuleProcess&) = delete;

    FaultPlan& Files() { return *files_; }
    FakeClock& Clock() { return *clock_; }

  private:
    platform::LibraryHandle module_ = nullptr;
    std::unique_ptr<FaultPlan> files_;
    std::unique_ptr<FakeClock> clock_;
};
