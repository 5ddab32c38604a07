// SPDX-License-Identifier: Apache-2.0
#include "fuzz/mq_script.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "fuzz/clock.h"
#include "fuzz/harness.h"
#include "mqi/mqi.h"
#include "tests/support/mq_double_library.h"

namespace {

struct Script {
    ByteReader* input = nullptr;  // null: the calm queue
    int messages = 0;             // number of messages that the calm queue will still deliver
    int delivered = 0;
    int emptyAnswers = 0;
    std::string lastMessage;
    std::size_t room = 0;
};
Script script;

struct Outcome {
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
};

constexpr MQLONG kConnectionBroken = 2009;
constexpr std::array<MQLONG, 22> kReasons = {2003, 2009, 2010, 2016, 2018, 2019, 2024, 2033,
                                             2042, 2045, 2058, 2059, 2071, 2079, 2080, 2085,
                                             2101, 2119, 2161, 2162, 2195, 2495};

// The first byte of an outcome selects its kind. Below the first of these constants it is a success.
constexpr std::uint8_t kFirstFailure = 200;
constexpr std::uint8_t kFirstWarning = 230;
constexpr std::uint8_t kFirstAnything = 250;

// For MQGET the first byte has these meanings. Below kFirstRepeated it is the length of a message whose bytes
// follow.
constexpr std::uint8_t kFirstRepeated = 140;    // the previous message, redelivered after a back-out
constexpr std::uint8_t kFirstEmptyQueue = 160;  // no message, after a number of seconds
constexpr std::uint8_t kFirstAroundRoom = 190;  // a message as long as the buffer, or one byte more or less

MQLONG Reason(std::uint8_t kind) {
    return kReasons.at(kind % kReasons.size());
}

Outcome TakeOutcome(std::uint8_t kind) {
    if (kind < kFirstFailure) return {};
    if (kind < kFirstWarning) return {MQCC_FAILED, Reason(kind)};
    if (kind < kFirstAnything) return {MQCC_WARNING, Reason(kind)};
    const auto compCode = script.input->Number<std::int8_t>();
    return {compCode, script.input->Number<MQLONG>()};
}

std::uint8_t TakeKind() {
    return script.input == nullptr ? 0 : script.input->Byte();
}

void Answer(std::uint8_t kind, MQLONG* compCode, MQLONG* reason) {
    const Outcome outcome = TakeOutcome(kind);
    *compCode = outcome.compCode;
    *reason = outcome.reason;
}

// A call that opens something may return any handle, even together with a failure.
void AnswerHandle(MQLONG* handle, MQLONG usual, MQLONG* compCode, MQLONG* reason) {
    const std::uint8_t kind = TakeKind();
    Answer(kind, compCode, reason);
    *handle = kind < kFirstAnything ? usual : script.input->Number<MQLONG>();
}

void AnswerPlainly(MQLONG* compCode, MQLONG* reason) {
    Answer(TakeKind(), compCode, reason);
}

void Connx(MQCHAR*, MQCNO*, MQHCONN* handle, MQLONG* compCode, MQLONG* reason) {
    AnswerHandle(handle, 7, compCode, reason);
}

void Open(MQHCONN, MQPTR, MQLONG, MQHOBJ* handle, MQLONG* compCode, MQLONG* reason) {
    AnswerHandle(handle, 9, compCode, reason);
}

void Disc(MQHCONN*, MQLONG* compCode, MQLONG* reason) {
    AnswerPlainly(compCode, reason);
}

void Close(MQHCONN, MQHOBJ*, MQLONG, MQLONG* compCode, MQLONG* reason) {
    AnswerPlainly(compCode, reason);
}

void CommitOrBackOut(MQHCONN, MQLONG* compCode, MQLONG* reason) {
    AnswerPlainly(compCode, reason);
}

// The outputs of MQGET and the size of the message buffer.
struct Get {
    MQMD* descriptor;
    MQLONG bufferLength;
    char* buffer;
    MQLONG* dataLength;
    MQLONG* compCode;
    MQLONG* reason;
};

void Finish(const Get& get, MQLONG dataLength, Outcome outcome) {
    *get.dataLength = dataLength;
    *get.compCode = outcome.compCode;
    *get.reason = outcome.reason;
}

void Deliver(const Get& get, const std::string& message, Outcome outcome) {
    const auto bufferLength = static_cast<std::size_t>(std::max(get.bufferLength, 0));
    const std::size_t bytes = std::min({message.size(), bufferLength, script.room});
    if (bytes != 0) std::memcpy(get.buffer, message.data(), bytes);
    Finish(get, static_cast<MQLONG>(message.size()), outcome);
    get.descriptor->MsgId[0] ^= 0x5A;
    script.lastMessage = message;
}

void GetFromCalmQueue(const Get& get) {
    if (script.messages > 0) {
        --script.messages;
        Deliver(get, CalmMessage(++script.delivered), {});
        return;
    }
    AdvanceClock(1000);
    const bool hasWaited = ++script.emptyAnswers > 3;
    Finish(get, 0, {MQCC_FAILED, hasWaited ? kConnectionBroken : MQRC_NO_MSG_AVAILABLE});
}

void GetAnything(const Get& get) {
    const Outcome outcome = TakeOutcome(kFirstAnything);
    get.descriptor->BackoutCount = script.input->Number<MQLONG>();
    const auto dataLength = script.input->Number<MQLONG>();
    Deliver(get, script.input->Bytes(script.input->Byte()), outcome);
    *get.dataLength = dataLength;
}

std::string MessageAroundRoom(MQLONG bufferLength, std::uint8_t kind) {
    const std::int64_t bytes = std::int64_t{bufferLength} + kind % 3 - 1;
    const auto most = static_cast<std::int64_t>(script.room) + 1;
    return std::string(static_cast<std::size_t>(std::clamp<std::int64_t>(bytes, 0, most)), 'm');
}

void GetByScript(const Get& get) {
    if (script.input->Empty()) {
        Finish(get, 0, {MQCC_FAILED, kConnectionBroken});
        return;
    }
    const std::uint8_t kind = TakeKind();
    get.descriptor->BackoutCount = 0;
    if (kind < kFirstRepeated) {
        Deliver(get, script.input->Bytes(kind), {});
    } else if (kind < kFirstEmptyQueue) {
        get.descriptor->BackoutCount = 1;
        Deliver(get, script.lastMessage, {});
    } else if (kind < kFirstAroundRoom) {
        AdvanceClock(kind - kFirstEmptyQueue);
        Finish(get, 0, {MQCC_FAILED, MQRC_NO_MSG_AVAILABLE});
    } else if (kind < kFirstFailure) {
        Deliver(get, MessageAroundRoom(get.bufferLength, kind), {});
    } else if (kind < kFirstAnything) {
        Deliver(get, script.lastMessage, TakeOutcome(kind));
    } else {
        GetAnything(get);
    }
}

void GetMessageOrNone(MQHCONN, MQHOBJ, MQPTR descriptor, MQPTR, MQLONG bufferLength, MQPTR buffer,
                      MQLONG* dataLength, MQLONG* compCode, MQLONG* reason) {
    Get get{};
    get.descriptor = static_cast<MQMD*>(descriptor);
    get.bufferLength = bufferLength;
    get.buffer = static_cast<char*>(buffer);
    get.dataLength = dataLength;
    get.compCode = compCode;
    get.reason = reason;
    if (script.input == nullptr) {
        GetFromCalmQueue(get);
    } else {
        GetByScript(get);
    }
}

constexpr MqDoubleFunctions kFunctions = {Connx, Open, GetMessageOrNone, CommitOrBackOut, CommitOrBackOut,
                                          Close, Disc};

}  // namespace

void BindMqScript() {
    void* library = dlopen(MQAMOD_FUZZ_MQ_DOUBLE, RTLD_NOW | RTLD_LOCAL);
    Require(library != nullptr, "the MQ double stands beside the harness");
    auto setMqDouble = reinterpret_cast<SetMqDoubleFunction>(dlsym(library, "SetMqDouble"));
    Require(setMqDouble != nullptr, "the MQ double takes its functions");
    setMqDouble(&kFunctions);
    (void)setenv("MQAMOD_MQ_LIBRARY", MQAMOD_FUZZ_MQ_DOUBLE, 1);
}

void PlayOutcomes(ByteReader* input) {
    script = {};
    script.input = input;
}

void PlayCalmQueue(int messages) {
    script = {};
    script.messages = messages;
}

std::string CalmMessage(int number) {
    return "queue " + std::to_string(number);
}

void SetRecordBufferRoom(std::size_t bytes) {
    script.room = bytes;
}
