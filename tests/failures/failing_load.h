// SPDX-License-Identifier: Apache-2.0

// Runs a load of a few messages, attempt after attempt, in a directory of its own. After each attempt every
// message must be stored in the target, saved in the checkpoint file or on the queue. At the end each must be
// in the target exactly once.
#pragma once

#include <gtest/gtest.h>

#include "tests/failures/checkpoint_look.h"
#include "tests/failures/load_host.h"
#include "tests/failures/queue_manager_double.h"
#include "tests/support/files.h"

class FailingLoad {
  public:
    explicit FailingLoad(const LoadPlan& plan);

    /// Makes attempts until the load is done.
    void RunToTheEnd();
    /// Makes one more attempt and checks it.
    void RunAttempt();

    /// Returns the file calls of the running attempt.
    FaultPlan& Files() { return process_->Files(); }

    TemporaryDirectory directory;
    QueueManagerDouble queueManager;
    LoadHost host;

  private:
    void CheckNothingIsLost();

    std::vector<std::string> messages_;
    ModuleProcess* process_ = nullptr;
};
