// A load of a few messages, life after life, in a directory of its own; after each life every message must be
// safe somewhere, and at the end each must be in the target once.
#pragma once

#include <gtest/gtest.h>

#include "tests/failures/checkpoint_look.h"
#include "tests/failures/load_host.h"
#include "tests/failures/queue_manager_double.h"
#include "tests/support/files.h"

class FailingLoad {
  public:
    explicit FailingLoad(const LoadPlan& plan);

    /// Lives until the load is done.
    void RunToTheEnd();
    /// One more life, with the check behind it.
    void RunLife();

    /// The file calls of the life that runs.
    FaultPlan& Files() { return life_->Files(); }

    TemporaryDirectory directory;
    QueueManagerDouble queueManager;
    LoadHost host;

  private:
    void CheckNothingIsLost();

    std::vector<std::string> messages_;
    ModuleLife* life_ = nullptr;
};
