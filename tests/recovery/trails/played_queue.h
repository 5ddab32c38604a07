// SPDX-License-Identifier: Apache-2.0

// The queue of one load, which the stand-in MQ library serves: numbered messages, the unit of work of the
// process that reads them, and what happens to it when that process is over. It answers one Read at a time. A
// test says before it what the next MQGET meets.
#pragma once

#include <map>
#include <string>

#include "tests/support/fake_clock.h"
#include "tests/support/mqi_double.h"

/// RWAIT's default, after which an input without messages ends; and a time-out that fires earlier.
inline constexpr int kReadWaitSeconds = 15;
inline constexpr int kTimeoutSeconds = 5;

enum class Stands {
    Unsent,   ///< put in a unit of work that its sender has not committed
    OnQueue,  ///< can be got
    InUnit,   ///< got, in the unit of work of the running process
    InLimbo,  ///< got by a process that is over, which the queue manager has not noticed yet
    Gone
};

struct QueuedMessage {
    std::string bytes;
    Stands stands = Stands::OnQueue;
    bool backedOut = false;     ///< it comes with a back-out count
    bool takenByOther = false;  ///< another load has it
};

/// What the next MQGET meets.
enum class GetMeets {
    Queue,
    FailureConnected,  ///< no data, the connection works: the queue inhibits gets
    FailureBroken,     ///< no data, the connection is broken
    Warning,           ///< the first message, with a warning
    Timeout            ///< nothing, until TIMEOUT_SECONDS are over
};

class PlayedQueue {
  public:
    explicit PlayedQueue(MqiDouble& mq) : mq_(mq) {}

    std::map<int, QueuedMessage> messages;  ///< by number, which is their order on the queue

    /// Prepares the answer to the next MQGET. Every further one finds the queue empty.
    ///   slow  in  the answer comes only after RWAIT; an empty queue always is
    void PrepareGet(GetMeets meets, bool slow, FakeClock& clock);
    /// To be called at each MQ call: carries out what the answer does to messages.
    void Apply(const MqCall& call);

    /// The message that the last MQGET delivered; 0 for none.
    [[nodiscard]] int Delivered() const { return delivered_; }

    /// Ends the process that reads.
    ///   noticed  in  the queue manager backs its unit of work out at once
    void LoseConnection(bool noticed);
    /// Makes the queue manager back out what is in limbo.
    void NoticeDeaths();
    [[nodiscard]] bool AnyInLimbo() const;

    /// Returns the numbers of the messages that are not gone, as "2 3".
    [[nodiscard]] std::string Waiting() const;

  private:
    void Move(Stands from, Stands to);
    int FirstOnQueue();

    MqiDouble& mq_;
    int prepared_ = 0;  ///< the message that the next MQGET delivers; 0 for none
    int delivered_ = 0;
};
