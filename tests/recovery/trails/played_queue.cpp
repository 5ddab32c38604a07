// SPDX-License-Identifier: Apache-2.0
#include "tests/recovery/trails/played_queue.h"

#include <algorithm>

namespace {

constexpr MQLONG kConnectionBroken = 2009;
constexpr MQLONG kGetInhibited = 2016;
constexpr MQLONG kNotConverted = 2119;

}  // namespace

void PlayedQueue::PrepareGet(GetMeets meets, bool slow, FakeClock& clock) {
    const auto wait = [&clock](int seconds) { return [&clock, seconds] { clock.Advance(seconds); }; };
    mq_.emptyQueue = {
        "", 0, MQCC_FAILED, MQRC_NO_MSG_AVAILABLE, 0, false, MQENC_NATIVE, 0, wait(kReadWaitSeconds + 1)};
    mq_.onGet.clear();
    MqGetOutcome answer;
    prepared_ = 0;
    if (slow) answer.effect = wait(kReadWaitSeconds);
    switch (meets) {
        case GetMeets::Queue:
        case GetMeets::Warning:
            prepared_ = FirstOnQueue();
            if (prepared_ == 0) return;
            answer.bytes = messages[prepared_].bytes;
            answer.backoutCount = messages[prepared_].backedOut ? 1 : 0;
            if (meets == GetMeets::Warning) answer.compCode = MQCC_WARNING, answer.reason = kNotConverted;
            break;
        case GetMeets::FailureConnected:
        case GetMeets::FailureBroken:
            answer.compCode = MQCC_FAILED;
            answer.reason = meets == GetMeets::FailureBroken ? kConnectionBroken : kGetInhibited;
            break;
        case GetMeets::Timeout:
            answer.compCode = MQCC_FAILED;
            answer.reason = MQRC_NO_MSG_AVAILABLE;
            answer.effect = wait(kTimeoutSeconds + 1);
            break;
    }
    mq_.onGet.push_back(answer);
}

void PlayedQueue::Apply(const MqCall& call) {
    if (call.verb == Verb::Get) {
        delivered_ = prepared_;
        prepared_ = 0;
        if (delivered_ == 0) {
            if (call.reason == kConnectionBroken) LoseConnection(true);
            return;
        }
        const bool inUnit = (call.getOptions.Options & MQGMO_SYNCPOINT) != 0;
        messages[delivered_].stands = inUnit ? Stands::InUnit : Stands::Gone;
    }
    if (call.compCode == MQCC_FAILED) return;
    if (call.verb == Verb::Cmit || call.verb == Verb::Disc) Move(Stands::InUnit, Stands::Gone);
    if (call.verb == Verb::Back) Move(Stands::InUnit, Stands::OnQueue);
}

void PlayedQueue::LoseConnection(bool noticed) {
    Move(Stands::InUnit, noticed ? Stands::OnQueue : Stands::InLimbo);
}

void PlayedQueue::NoticeDeaths() {
    Move(Stands::InLimbo, Stands::OnQueue);
}

bool PlayedQueue::AnyInLimbo() const {
    return std::any_of(messages.begin(), messages.end(),
                       [](const auto& entry) { return entry.second.stands == Stands::InLimbo; });
}

std::string PlayedQueue::Waiting() const {
    std::string numbers;
    for (const auto& [number, message] : messages) {
        if (message.stands == Stands::Gone) continue;
        if (!numbers.empty()) numbers += ' ';
        numbers += std::to_string(number);
    }
    return numbers;
}

void PlayedQueue::Move(Stands from, Stands to) {
    for (auto& [number, message] : messages) {
        if (message.stands != from) continue;
        message.stands = to;
        if (to == Stands::OnQueue) message.backedOut = true;
    }
}

/// Returns the number of the first message on the queue. If the queue is empty, the message that its sender
/// has not committed yet counts as committed. Returns 0 if there is no such message either.
int PlayedQueue::FirstOnQueue() {
    for (const Stands wanted : {Stands::OnQueue, Stands::Unsent}) {
        for (auto& [number, message] : messages) {
            if (message.stands == wanted) return number;
        }
    }
    return 0;
}
