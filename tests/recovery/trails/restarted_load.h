// SPDX-License-Identifier: Apache-2.0

// A load that is restarted until it is done, in one test process: the host with its target and its stored
// position, a freshly loaded module for every attempt, and the queue manager. The host does what a test says,
// even what its rules forbid. Finish continues with a host that keeps all of them.
//
// A crash is a copy of the files and of the queue in the middle of a request. What the request does
// afterwards is undone before the next attempt. Leaves says how much of what the streams had not flushed is
// then in the files.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/recovery/trails/checkpoint_picture.h"
#include "tests/recovery/trails/played_queue.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fault_plan.h"
#include "tests/support/module_fixture.h"

/// Says how much of what the streams still hold is in the files after a crash.
enum class Leaves {
    Flushed,      ///< only what was flushed before
    All,          ///< all of it, as at the end of a process that flushes its streams
    RecordInPart  ///< the last record is incomplete: its length, and some of its bytes
};

/// A position that GetPos returned, with what the host had counted by then.
struct HostPosition {
    PositionData data{};
    std::size_t records = 0;  ///< number of records in the target
    bool repeat =
        false;  ///< a record was returned before GetPos in that attempt: after SetPos it comes again
};

class RestartedLoad : public ModuleFixture {
  protected:
    void SetUp() override;
    void TearDown() override;

    // ---- processes

    /// Starts a new process, which finds the files of the previous one as they are.
    void StartProcess();
    /// Ends the process without Close.
    void EndProcess();
    /// Makes the process die in the next request, before the first call whose description begins with
    /// `event`: a file call as FaultPlan logs it, or "before GET", "after GET", "before CMIT", "after CMIT"
    /// ... of MQ. The files receive everything that the streams hold, unless `leaves` says otherwise.
    ///   earlier  in  the description of a call that must have been made before
    void DieAt(const std::string& event, const std::string& earlier = "");
    Leaves leaves = Leaves::All;
    /// Restores the files and the queue as they were at the crash, and ends the process; must be called after
    /// a request. Returns false if no crash was planned.
    bool DiedInRequest();
    bool noticed = true;  ///< whether the queue manager notices the next end of a process immediately

    // ---- what the host does

    void InitModule(const std::string& keywords, bool preserve);
    Outcome OpenModule();
    /// Sends GetPos and keeps the position in `given`, which does not change if no position is returned.
    void TakePosition();
    void StorePosition();
    Outcome GoBack();
    /// Sends one Read, adds its record to the target, and sets lastReadSlow from the time it took.
    void ReadOne(GetMeets meets = GetMeets::Queue, bool slowly = false);
    Outcome CloseModule();

    /// Continues with a host that keeps the rules, in the running attempt and in new ones, until the load is
    /// done. Returns "", or the reason why it is stuck: the error text with which three attempts in a row
    /// ended, or its own refusal.
    std::string Finish();

    // ---- the state of the load

    /// Returns the records in the target as message numbers, "1 2 2"; one that no one sent is in quotes.
    [[nodiscard]] std::string Target() const;
    [[nodiscard]] std::string NameOf(const std::string& record) const;

    PlayedQueue queue{mq};
    std::unique_ptr<FaultPlan> faults;
    std::unique_ptr<FakeClock> clock;

    // These variables of the host are kept from attempt to attempt.
    std::vector<std::string> target;
    std::size_t durable = 0;  ///< records that would survive the host
    std::optional<HostPosition> stored;
    int life = 0;

    // These variables of the host are lost at the end of the attempt.
    bool running = false;
    bool initialized = false;
    std::optional<HostPosition> given;  ///< what the last GetPos returned; not stored yet
    bool returned = false;              ///< a record was returned in this attempt
    bool expectsRepeat = false;         ///< the next record is the one before the position
    bool positionDue = false;           ///< SetPos was called, and GetPos has not been called since
    std::string repeat;                 ///< the record that is taken for the one before the position
    ReadOutcome lastRead;
    bool lastReadSlow = false;  ///< the last Read took RWAIT
    Outcome lastSetPos;

  private:
    struct Remains {
        RestartFiles files;
        std::map<int, QueuedMessage> messages;
    };
    void Happen(const std::string& event);
    bool StartCarefulLife();
    bool PrepareFiles(bool& goBack);
    bool ReadToTheEnd();

    std::string dieAt_;
    std::string dieAfter_;
    std::optional<Remains> remains_;
    std::string failure_;
};
