// SPDX-License-Identifier: Apache-2.0

// One process of a load. The module is loaded with the state that it has in a new process; its file calls can
// fail, and the test controls its clock. The destructor ends the process as a crash does: what its streams
// buffered is lost. It also unloads the module.
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
