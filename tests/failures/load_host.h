// A host that loads the queue restartably, by the rules that model/README.md names: one life of the module
// after the other, until a life finds that nothing more came. Its target and its restart file are in memory
// and never fail: what can fail is the module and all that is below it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/failures/module_life.h"
#include "tests/failures/queue_manager_double.h"

struct LoadPlan {
    std::string keywords;     ///< beside those that every load has
    int checkpointEvery = 3;  ///< records
    int stopAfter = 0;      ///< records of the first life, after which the operator stops the load; 0: never
    bool carryOut = false;  ///< the stop takes a position and has its checkpoint carried out: GetPos twice
};

class LoadHost {
  public:
    LoadHost(QueueManagerDouble& queueManager, LoadPlan plan);

    /// One life. After it Done tells whether the load is complete.
    void RunLife();
    [[nodiscard]] bool Done() const { return done_; }
    [[nodiscard]] int Lives() const { return lives_; }

    /// The records that no life will bring again.
    [[nodiscard]] std::vector<std::string> Stored() const;

    std::function<void(ModuleLife&)> atStart;  ///< the module is loaded, no request made
    std::function<void(ModuleLife&)> atEnd;    ///< no request will be made, the process still there
    std::function<void(const std::string& request, const Outcome&)> afterRequest;

  private:
    struct RestartFile {
        PositionData position;
        std::size_t records;
        bool repeatComes;  // a record had been returned in that life: it is the first of a replay
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
    ModuleLife* life_ = nullptr;
    std::vector<std::string> target_;
    std::optional<RestartFile> restartFile_;
    std::optional<std::size_t>
        cleanCount_;  // records after a life that met the end of input and closed without error
    std::int64_t waitedMs_ = 0;
    std::int64_t lastReadMs_ = 0;
    int lives_ = 0;
    int lastReturn_ = 0;
    bool returned_ = false;        // a record came in this life
    bool repeatExpected_ = false;  // the next record is the last one stored
    int sincePosition_ = 0;
    bool done_ = false;
};
