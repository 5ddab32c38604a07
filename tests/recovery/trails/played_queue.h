// SPDX-License-Identifier: Apache-2.0

// The queue of one load, which the stand-in MQ library serves: numbered messages, the unit of work of the
// process that reads them, and what happens to that unit when the process ends. It answers one Read at a
// time; before the Read, a test says what the next MQGET meets.
#pragma once

#include <map>
#include <string>

#include "tests/support/fake_clock.h"
#include "tests/support/mqi_double.h"

/// The default of RWAIT, after which an input without messages ends, and a shorter time-out.
inline constexpr int kReadWaitSeconds = 15;
inline constexpr int kTimeoutSeconds = 5;

enum class Stands {
    Unsent,   ///< put in a unit of work that its sender has not committed
    OnQueue,  ///< can be got
    InUnit,   ///< got, in the unit of work of the running process
    InLimbo,  ///< got by a process that has ended, which the queue manager has not noticed yet
    Gone
};

struct QueuedMessage {
    std::string bytes;
    Stands stands = Stands::OnQueue;
    bool backedOut = false;     ///< it was backed out, so it is delivered with a back-out count
    bool takenByOther = false;  ///< another load has it
};

/// Says what the next MQGET meets.
enum class GetMeets {
    Queue,
    FailureConnected,  ///< no data, but the connection works: the queue inhibits gets
    FailureBroken,     ///< no data, because the connection is broken
    Warning,           ///< the first message, together with a warning
    Timeout            ///< nothing, until TIMEOUT_SECONDS are over
};

class PlayedQueue {
  public:
    explicit PlayedQueue(MqiDouble& mq) : mq_(mq) {}

    std::map<int, QueuedMessage> messages;  ///< by number, which is their order on the queue

    /// Prepares the answer to the next MQGET. Every later one finds the queue empty.
    ///   slow  in  the answer comes only after RWAIT; that of an empty queue always does
    void PrepareGet(GetMeets meets, bool slow, FakeClock& clock);
    /// Carries out what the answer does to messages; must be called at each MQ call.
    void Apply(const MqCall& call);

    /// Returns the number of the message that the last MQGET delivered, or 0 if it delivered no message.
    [[nodiscard]] int Delivered() const { return delivered_; }

    /// Ends the process that reads.
    ///   noticed  in  whether the queue manager notices it immediately and backs the unit of work out
    void LoseConnection(bool noticed);
    /// Makes the queue manager notice every process that has ended, and back out the messages in limbo.
    void NoticeDeaths();
    [[nodiscard]] bool AnyInLimbo() const;

    /// Returns the numbers of the messages that still exist, as "2 3".
    [[nodiscard]] std::string Waiting() const;

  private:
    void Move(Stands from, Stands to);
    int FirstOnQueue();

    MqiDouble& mq_;
    int prepared_ = 0;  ///< the message that the next MQGET delivers; 0 for none
    int delivered_ = 0;
};
