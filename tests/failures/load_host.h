// SPDX-License-Identifier: Apache-2.0

// A host that loads the queue restartably by the rules of model/README.md: it makes one attempt after
// another, until one finds nothing more. Its target and its restart file are in memory and never fail. Only
// the module and what is below it can fail.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/failures/module_process.h"
#include "tests/failures/queue_manager_double.h"

struct LoadPlan {
    std::string keywords;     ///< keywords in addition to those that every load has
    int checkpointEvery = 3;  ///< number of records from one checkpoint to the next
    int stopAfter =
        0;  ///< the operator stops the load after this number of records of the first attempt; 0: never
    bool carryOut = false;  ///< the stop takes a position and carries its checkpoint out: GetPos twice
};

class LoadHost {
  public:
    LoadHost(QueueManagerDouble& queueManager, LoadPlan plan);

    /// Makes one attempt. After it, Done returns whether the load is complete.
    void RunAttempt();
    [[nodiscard]] bool Done() const { return done_; }
    [[nodiscard]] int Attempts() const { return attempts_; }

    /// Returns the records that no later attempt will return again.
    [[nodiscard]] std::vector<std::string> Stored() const;

    std::function<void(ModuleProcess&)>
        atStart;                                ///< called when the module is loaded and no request was made
    std::function<void(ModuleProcess&)> atEnd;  ///< called after the last request, before the process ends
    std::function<void(const std::string& request, const Outcome&)> afterRequest;

  private:
    struct RestartFile {
        PositionData position;
        std::size_t records;
        bool repeatComes;  // a record had been returned in that attempt; it is the first of a replay
    };
    bool Send(const char* request, const Outcome& outcome);
    bool Start(bool restart);
    bool TakePosition();
    bool ReadOne();
    bool Load();
    bool Close();
    void DeleteFiles();

    QueueManagerDouble& queueManager_;
    LoadPlan plan_;
    ModuleProcess* process_ = nullptr;
    std::vector<std::string> target_;
    std::optional<RestartFile> restartFile_;
    std::optional<std::size_t>
        cleanCount_;  // records after an attempt that reached the end of input and closed without error
    std::int64_t waitedMs_ = 0;
    std::int64_t lastReadMs_ = 0;
    int attempts_ = 0;
    int lastReturn_ = 0;
    bool returned_ = false;        // a record came in this attempt
    bool repeatExpected_ = false;  // the next record is the last one stored
    int sincePosition_ = 0;
    bool done_ = false;
};
