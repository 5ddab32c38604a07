// A load that is restarted until it is done, in one test process: the host with its target and its stored
// position, the module anew for every life, and the queue manager. The host does what it is told, also what
// its rules forbid; Finish goes on with a host that keeps all of them.
//
// A death is a look at the files and at the queue in the middle of a request: what the request does after it
// is undone before the next life. What a stream had not flushed is not in the files then, as after a real
// death.
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

/// How much of what the streams still hold a death leaves in the files.
enum class Leaves {
    Flushed,      ///< only what was flushed before
    All,          ///< all of it, as the end of a process leaves it that flushes its streams
    RecordInPart  ///< all but the end of the last record: its length, and some bytes behind it
};

/// A position that GetPos gave, and what the host counts by it.
struct HostPosition {
    PositionData data{};
    std::size_t records = 0;  ///< in the target
    bool repeat = false;  ///< a record was returned before GetPos in that life: after SetPos it comes again
};

class RestartedLoad : public ModuleFixture {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Processes.

    /// A new process, with what the one before left. Does not look at what it finds.
    void StartProcess();
    /// The process is over, without Close.
    void EndProcess();
    /// The process dies in the next request, before the first call that begins with these words: a file call
    /// as FaultPlan logs it, or "before GET", "after GET", "before CMIT", "after CMIT" ... of MQ. It leaves
    /// all that the streams hold, unless leaves says something else.
    ///   behind  in  what must have come before, in the same words
    void DieAt(const std::string& event, const std::string& behind = "");
    Leaves leaves = Leaves::All;
    /// To be called behind a request: puts back how things stood at the death, and ends the process. False
    /// when none was planned.
    bool DiedInRequest();
    bool noticed = true;  ///< whether the queue manager notices the next end of a process at once

    // What the host does.

    void InitModule(const std::string& keywords, bool preserve);
    Outcome OpenModule();
    /// Returns the position given; none when the request carried one out or failed.
    void TakePosition();
    void StorePosition();
    Outcome GoBack();
    /// One Read, with the target written and the time taken.
    void ReadOne(GetMeets meets = GetMeets::Queue, bool slowly = false);
    Outcome CloseModule();

    /// A host that keeps the rules goes on, in the life that runs and in new ones, until the load is done.
    /// Returns "", or why it is stuck: the error text that three lives in a row ended with, or its own
    /// refusal.
    std::string Finish();

    // How things stand.

    /// The records in the target as message numbers, "1 2 2"; one that nobody sent in quotes.
    [[nodiscard]] std::string Target() const;
    [[nodiscard]] std::string NameOf(const std::string& record) const;

    PlayedQueue queue{mq};
    std::unique_ptr<FaultPlan> faults;
    std::unique_ptr<FakeClock> clock;

    // The host: kept from life to life.
    std::vector<std::string> target;
    std::size_t durable = 0;  ///< records that would outlive the host
    std::optional<HostPosition> stored;
    int life = 0;

    // The host: gone with the life.
    bool running = false;
    bool initialized = false;
    std::optional<HostPosition> given;  ///< by the last GetPos, not stored yet
    bool returned = false;              ///< a record in this life
    bool expectsRepeat = false;         ///< the next record is the one before the position
    bool positionDue = false;           ///< SetPos was called and no GetPos since
    std::string repeat;                 ///< the record taken for the one before the position
    ReadOutcome lastRead;
    bool lastReadSlow = false;  ///< it took RWAIT
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
    std::string dieBehind_;
    std::optional<Remains> remains_;
    std::string failure_;
};
