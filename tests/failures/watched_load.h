// SPDX-License-Identifier: Apache-2.0

// A load whose file calls fail. Each request is compared with what it promises.
#pragma once

#include <optional>

#include "tests/failures/expected_file_failure.h"
#include "tests/failures/failing_load.h"

class WatchedLoad {
  public:
    explicit WatchedLoad(bool tlf);

    /// Watch must be called when an attempt starts, and NoteStrike when the fault has struck during the
    /// running request.
    void Watch(ModuleProcess& process);
    void NoteStrike(FileCall call, const Fault& fault);

    [[nodiscard]] int Strikes() const { return strikes_; }
    [[nodiscard]] FaultPlan& Files() const { return *files_; }

    FailingLoad load;

  private:
    void CheckReturn(const std::string& request, const Outcome& outcome);

    bool tlf_;
    FaultPlan* files_ = nullptr;
    std::optional<FileStrike> struck_;  // the strike during the running request that decides its outcome
    Fault lastFault_{};
    std::size_t requestBegins_ = 0;  // index in the log of file calls
    std::size_t callsBefore_ = 0;    // number of MQ calls before the request
    int strikes_ = 0;
};
