// SPDX-License-Identifier: Apache-2.0

// Plays the MQ library: it records every call with its arguments as they were passed and plays the outcomes
// that the test scripted, verb by verb. Without a script everything succeeds and the queue is empty.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "mqi/mqi.h"

enum class Verb { Connx, Open, Get, Cmit, Back, Close, Disc };

/// One call as the module made it. Only the arguments of its verb are set.
struct MqCall {
    Verb verb = Verb::Connx;
    MQHCONN connection = -1;       ///< handle passed in; for MQCONNX what the output handle contained
    MQHOBJ object = -1;            ///< handle passed in; for MQOPEN what the output handle contained
    MQLONG options = -1;           ///< of MQOPEN and MQCLOSE
    std::string queueManager;      ///< MQCONNX: the 48 bytes of the name
    MQCNO connectOptions{};        ///< MQCONNX
    bool hasChannel = false;       ///< MQCONNX: ClientConnPtr was set, and the Version includes it
    MQCD channel{};                ///< MQCONNX with a channel
    MQOD objectDescriptor{};       ///< MQOPEN
    MQMD descriptor{};             ///< MQGET, as passed in
    MQGMO getOptions{};            ///< MQGET, as passed in
    MQLONG bufferLength = -1;      ///< MQGET
    const void* buffer = nullptr;  ///< MQGET
    MQLONG compCode = -1;          ///< what the double answered
    MQLONG reason = -1;
};

/// A scripted answer of a verb other than MQGET.
struct MqOutcome {
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    std::optional<MQLONG> handle{};  ///< MQCONNX, MQOPEN: handle returned; by default 7 and 9 unless failed
    std::function<void()> effect{};  ///< carried out at the call
    std::string objectName{};        ///< MQOPEN: the name put into the descriptor, as for a model queue
};

/// A scripted answer of MQGET: a message, or a failure.
struct MqGetOutcome {
    std::string bytes;
    MQLONG backoutCount = 0;
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    std::optional<MQLONG> dataLength{};  ///< by default the number of bytes
    bool leaveDataLength = false;        ///< DataLength is not written
    MQLONG encoding = MQENC_NATIVE;      ///< what the descriptor returns
    MQLONG codedCharSetId = 1208;
    std::function<void()> effect{};
};

class MqiDouble {
  public:
    /// Binds the stand-in library to this object. A process can bind only one object at a time.
    MqiDouble();
    ~MqiDouble();
    MqiDouble(const MqiDouble&) = delete;
    MqiDouble& operator=(const MqiDouble&) = delete;

    /// Makes the library at `path` call the bound object. Returns "", or the reason if the library cannot be
    /// loaded or does not export SetMqDouble.
    static std::string Bind(const std::string& path);

    std::deque<MqOutcome> onConnx, onOpen, onCmit, onBack, onClose, onDisc;
    std::deque<MqGetOutcome> onGet;

    /// The answer to MQGET when onGet is empty. Unless the test changes it, no message is available.
    MqGetOutcome emptyQueue{"", 0, MQCC_FAILED, MQRC_NO_MSG_AVAILABLE, 0, false, MQENC_NATIVE, 0, {}};

    /// The double calls this at every call, with all arguments recorded, before it plays the answer.
    std::function<void(const MqCall&)> hook;

    std::vector<MqCall> calls;

    void PutMessage(const std::string& bytes, MQLONG backoutCount = 0);
    /// Makes the next MQGET answer with these codes and deliver the bytes given.
    void FailGet(MQLONG compCode, MQLONG reason, const std::string& bytes = "");

    /// Returns the verbs in order, as "CONNX OPEN GET CMIT".
    [[nodiscard]] std::string Sequence() const;
    /// Returns the calls of one verb, in order.
    [[nodiscard]] std::vector<MqCall> Calls(Verb verb) const;
    [[nodiscard]] std::size_t Count(Verb verb) const { return Calls(verb).size(); }
    /// Forgets the calls recorded so far.
    void Forget() { calls.clear(); }
};
