// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/queue_manager_double.h"

#include <algorithm>
#include <cstring>

#include "platform/library.h"
#include "tests/support/module_fixture.h"
#include "tests/support/mq_double_library.h"

namespace {

constexpr MQHCONN kConnection = 7;
constexpr MQHOBJ kObject = 9;
constexpr MQLONG kBackedOut = 2003;
constexpr MQLONG kConnectionBroken = 2009;

QueueManagerDouble* current = nullptr;

void Connx(MQCHAR*, MQCNO*, MQHCONN* handle, MQLONG* compCode, MQLONG* reason) {
    current->Connx(handle, compCode, reason);
}

void Open(MQHCONN, MQPTR, MQLONG, MQHOBJ* handle, MQLONG* compCode, MQLONG* reason) {
    current->Open(handle, compCode, reason);
}

void Get(MQHCONN, MQHOBJ, MQPTR descriptor, MQPTR options, MQLONG bufferLength, MQPTR buffer,
         MQLONG* dataLength, MQLONG* compCode, MQLONG* reason) {
    current->Get(static_cast<MQMD*>(descriptor), *static_cast<const MQGMO*>(options), bufferLength, buffer,
                 dataLength, compCode, reason);
}

void Cmit(MQHCONN, MQLONG* compCode, MQLONG* reason) {
    current->EndUnit(Verb::Cmit, compCode, reason);
}

void Back(MQHCONN, MQLONG* compCode, MQLONG* reason) {
    current->EndUnit(Verb::Back, compCode, reason);
}

void Close(MQHCONN, MQHOBJ* handle, MQLONG, MQLONG* compCode, MQLONG* reason) {
    current->Close(handle, compCode, reason);
}

void Disc(MQHCONN* handle, MQLONG* compCode, MQLONG* reason) {
    current->EndUnit(Verb::Disc, compCode, reason);
    if (*compCode != MQCC_FAILED) *handle = -1;
}

constexpr MqDoubleFunctions kFunctions{Connx, Open, Get, Cmit, Back, Close, Disc};

}  // namespace

QueueManagerDouble::QueueManagerDouble() {
    current = this;
    std::string reason;
    platform::LibraryHandle library = platform::OpenLibrary(MqDoublePath(), reason);
    auto setDouble = reinterpret_cast<SetMqDoubleFunction>(platform::FindFunction(library, "SetMqDouble"));
    setDouble(&kFunctions);
}

QueueManagerDouble::~QueueManagerDouble() {
    current = nullptr;
}

void QueueManagerDouble::EndProcess() {
    MoveUnit(false);
    broken_ = false;
    doomed_ = false;
}

std::vector<std::string> QueueManagerDouble::Left() const {
    std::vector<std::string> left;
    for (const Message& message : messages_) {
        if (message.place != Place::Gone) left.push_back(message.bytes);
    }
    return left;
}

MqiFault QueueManagerDouble::Begin(Verb verb) {
    const int nth = ++counts_[static_cast<int>(verb)];
    calls.push_back({verb, nth, false});
    MqiFault outcome{verb, nth, MQCC_OK, MQRC_NONE, Effect::Done};
    if (broken_) return {verb, nth, MQCC_FAILED, kConnectionBroken, Effect::None};
    const auto fits = [&](const MqiFault& fault) { return fault.verb == verb && fault.nth == nth; };
    const auto fault = std::find_if(faults_.begin(), faults_.end(), fits);
    if (fault == faults_.end()) return outcome;
    outcome = *fault;
    faults_.erase(fault);
    struck_.insert({verb, nth});
    return outcome;
}

void QueueManagerDouble::Finish(const MqiFault& outcome, MQLONG* compCode, MQLONG* reason) {
    if (outcome.breaksConnection) {
        MoveUnit(false);
        broken_ = true;
    }
    *compCode = outcome.compCode;
    *reason = outcome.reason;
}

void QueueManagerDouble::MoveUnit(bool commit) {
    for (Message& message : messages_) {
        if (message.place != Place::Unit) continue;
        message.place = commit ? Place::Gone : Place::Queue;
        if (!commit) ++message.backoutCount;
    }
}

void QueueManagerDouble::Connx(MQHCONN* handle, MQLONG* compCode, MQLONG* reason) {
    const MqiFault outcome = Begin(Verb::Connx);
    if (outcome.effect == Effect::Done) *handle = kConnection;
    Finish(outcome, compCode, reason);
}

void QueueManagerDouble::Open(MQHOBJ* handle, MQLONG* compCode, MQLONG* reason) {
    const MqiFault outcome = Begin(Verb::Open);
    if (outcome.effect == Effect::Done) *handle = kObject;
    Finish(outcome, compCode, reason);
}

void QueueManagerDouble::Close(MQHOBJ* handle, MQLONG* compCode, MQLONG* reason) {
    const MqiFault outcome = Begin(Verb::Close);
    if (outcome.effect == Effect::Done) *handle = -1;
    Finish(outcome, compCode, reason);
}

void QueueManagerDouble::EndUnit(Verb verb, MQLONG* compCode, MQLONG* reason) {
    MqiFault outcome = Begin(verb);
    if (outcome.effect == Effect::Done && doomed_ && verb != Verb::Back) {
        outcome.effect = Effect::BackedOut;
        outcome.compCode = MQCC_WARNING;
        outcome.reason = kBackedOut;
    }
    if (outcome.effect != Effect::None) {
        MoveUnit(outcome.effect == Effect::Done && verb != Verb::Back);
        doomed_ = false;
    }
    Finish(outcome, compCode, reason);
}

void QueueManagerDouble::Get(MQMD* descriptor, const MQGMO& options, MQLONG bufferLength, void* buffer,
                             MQLONG* dataLength, MQLONG* compCode, MQLONG* reason) {
    MqiFault outcome = Begin(Verb::Get);
    if (HasStruck(Verb::Get, outcome.nth)) lengthFound_ = *dataLength;
    if (doomed_ && outcome.effect == Effect::Done)
        outcome = {Verb::Get, outcome.nth, MQCC_FAILED, kBackedOut, Effect::None};
    if (outcome.effect == Effect::Doomed) doomed_ = true;
    if (!outcome.leavesLength) *dataLength = 0;

    if (outcome.effect != Effect::None && outcome.effect != Effect::Doomed) {
        const auto onQueue = [](const Message& message) { return message.place == Place::Queue; };
        if (std::any_of(messages_.begin(), messages_.end(), onQueue)) {
            Deliver(outcome, descriptor, options, bufferLength, buffer, dataLength);
        } else {
            if (onWait) onWait(options.WaitInterval);
            outcome.compCode = MQCC_FAILED;
            outcome.reason = MQRC_NO_MSG_AVAILABLE;
        }
    }
    Finish(outcome, compCode, reason);
}

void QueueManagerDouble::Deliver(const MqiFault& fault, MQMD* descriptor, const MQGMO& options,
                                 MQLONG bufferLength, void* buffer, MQLONG* dataLength) {
    const auto onQueue = [](const Message& message) { return message.place == Place::Queue; };
    Message& message = *std::find_if(messages_.begin(), messages_.end(), onQueue);
    calls.back().gotMessage = true;
    const bool cut = fault.effect == Effect::MessageCut || fault.effect == Effect::MessageStays;
    const std::size_t bytes = cut ? message.bytes.size() / 2 : message.bytes.size();
    std::memcpy(buffer, message.bytes.data(), std::min(bytes, static_cast<std::size_t>(bufferLength)));
    *dataLength = static_cast<MQLONG>(message.bytes.size());
    descriptor->BackoutCount = message.backoutCount;
    if (fault.effect != Effect::MessageStays)
        message.place = (options.Options & MQGMO_SYNCPOINT) != 0 ? Place::Unit : Place::Gone;
    ++delivered_;
    if (onMessage) onMessage(delivered_);
}
