// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/attempt_watch.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace mqam {

namespace {

constexpr std::chrono::milliseconds kPause{50};
// A Read that takes this long waits for messages; one that has a message returns much earlier.
constexpr std::chrono::milliseconds kWaitingAfter{700};
// What a stopping attempt may take for its last checkpoint and Close. A stopped load ends within two seconds.
constexpr std::chrono::milliseconds kOrderlyEnd{1500};

}  // namespace

std::optional<AttemptEnd> EndFromOutside(const AttemptTimes& times) {
    if (times.sinceStop) {
        if (*times.sinceStop >= kOrderlyEnd) return AttemptEnd::kInterrupted;
        if (times.inRead && std::min(*times.sinceStop, *times.inRead) >= kWaitingAfter)
            return AttemptEnd::kInterrupted;
    }
    if (times.inRead && times.readLimit && *times.inRead >= *times.readLimit) return AttemptEnd::kTimeout;
    return std::nullopt;
}

AttemptTimes AttemptWatch::Look(std::optional<Clock::time_point> stopSeen) const {
    const Clock::time_point now = Clock::now();
    AttemptTimes times;
    if (stopSeen) times.sinceStop = now - *stopSeen;
    const Clock::rep readSince = readSince_.load();
    if (readSince != kNotInRead) times.inRead = now - Clock::time_point(Clock::duration(readSince));
    const auto limit = readLimit_.load();
    if (limit != 0) times.readLimit = std::chrono::seconds(limit);
    return times;
}

void AttemptWatch::Start(std::function<bool()> stopWanted, std::function<void(AttemptEnd)> end) {
    std::thread([this, stopWanted = std::move(stopWanted), end = std::move(end)] {
        std::optional<Clock::time_point> stopSeen;
        for (;;) {
            if (!stopSeen && stopWanted()) stopSeen = Clock::now();
            const std::optional<AttemptEnd> due = EndFromOutside(Look(stopSeen));
            if (due) {
                end(*due);
                return;
            }
            std::this_thread::sleep_for(kPause);
        }
    }).detach();
}

void AttemptWatch::LimitReads(std::optional<std::chrono::seconds> limit) {
    readLimit_ = limit ? limit->count() : 0;
}

}  // namespace mqam
