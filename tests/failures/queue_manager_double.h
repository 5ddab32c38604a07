// SPDX-License-Identifier: Apache-2.0

// A queue manager in the test's own memory: one queue, one connection, units of work with back-out counts,
// and calls that fail as a test says. Unlike MqiDouble, which plays a script, it keeps the messages and can
// list those that are left at any time.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "mqi/mqi.h"
#include "tests/support/mqi_double.h"

/// Says what a call has done although it reports a failure or a warning.
enum class Effect {
    None,          ///< the call has no effect
    Done,          ///< the call has its usual effect
    BackedOut,     ///< the unit of work is backed out
    Doomed,        ///< MQGET: from now on the unit of work can only be backed out
    MessageCut,    ///< MQGET: the message is got, but its bytes are cut
    MessageStays,  ///< MQGET: the bytes are cut and the message stays on the queue
};

struct MqiFault {
    Verb verb = Verb::Get;
    int nth = 1;  ///< number of the call of the verb, counted over all attempts
    MQLONG compCode = MQCC_FAILED;
    MQLONG reason = 0;
    Effect effect = Effect::None;
    bool breaksConnection = false;  ///< afterwards every call of the attempt fails with 2009
    bool leavesLength = false;      ///< MQGET: the data length keeps what an earlier call put there
};

class QueueManagerDouble {
  public:
    QueueManagerDouble();
    ~QueueManagerDouble();
    QueueManagerDouble(const QueueManagerDouble&) = delete;
    QueueManagerDouble& operator=(const QueueManagerDouble&) = delete;

    void Put(const std::string& bytes) { messages_.push_back({bytes, 0, Place::Queue}); }
    /// Adds a fault. Each call consumes the first fault that fits it.
    void Add(const MqiFault& fault) { faults_.push_back(fault); }
    /// Ends the process that is connected, so that its unit of work is backed out.
    void EndProcess();

    /// Returns whether a fault has struck the call.
    [[nodiscard]] bool HasStruck(Verb verb, int nth) const { return struck_.contains({verb, nth}); }
    [[nodiscard]] MQLONG LengthFound() const { return lengthFound_; }  ///< by the last failed MQGET
    [[nodiscard]] std::vector<std::string> Left() const;  ///< the messages that are not committed

    struct Call {
        Verb verb;
        int nth;
        bool gotMessage;
    };
    std::vector<Call> calls;

    std::function<void(int milliseconds)> onWait;  ///< called when an MQGET has waited that long
    std::function<void(int nth)>
        onMessage;  ///< called when MQGET delivers its nth message, counted over all attempts

    // These are called by the functions of the library.
    void Connx(MQHCONN* handle, MQLONG* compCode, MQLONG* reason);
    void Open(MQHOBJ* handle, MQLONG* compCode, MQLONG* reason);
    void Get(MQMD* descriptor, const MQGMO& options, MQLONG bufferLength, void* buffer, MQLONG* dataLength,
             MQLONG* compCode, MQLONG* reason);
    void EndUnit(Verb verb, MQLONG* compCode, MQLONG* reason);
    void Close(MQHOBJ* handle, MQLONG* compCode, MQLONG* reason);

  private:
    enum class Place { Queue, Unit, Gone };
    struct Message {
        std::string bytes;
        MQLONG backoutCount;
        Place place;
    };
    /// Counts the call and returns what it must report. The effect is None for a broken connection.
    MqiFault Begin(Verb verb);
    void Deliver(const MqiFault& fault, MQMD* descriptor, const MQGMO& options, MQLONG bufferLength,
                 void* buffer, MQLONG* dataLength);
    void MoveUnit(bool commit);
    void Finish(const MqiFault& outcome, MQLONG* compCode, MQLONG* reason);

    std::vector<Message> messages_;
    std::vector<MqiFault> faults_;
    int counts_[7] = {};
    int delivered_ = 0;
    std::set<std::pair<Verb, int>> struck_;
    MQLONG lengthFound_ = 0;
    bool broken_ = false;
    bool doomed_ = false;
};
