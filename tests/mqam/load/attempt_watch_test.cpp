// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/attempt_watch.h"

#include <gtest/gtest.h>

#include <future>

using namespace mqam;

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = AttemptWatch::Clock;

struct Moment {
    const char* what;
    int sinceStopMs;   // -1 = no request to stop
    int inReadMs;      // -1 = in no Read
    int limitSeconds;  // 0 = none
    std::optional<AttemptEnd> end;
};

constexpr Moment kMoments[] = {
    {"reads without a limit", -1, 3600000, 0, std::nullopt},
    {"works", -1, -1, 5, std::nullopt},
    {"reads within the limit", -1, 4999, 5, std::nullopt},
    {"reads beyond the limit", -1, 5000, 5, AttemptEnd::kTimeout},
    {"is to stop and may be getting a message", 100, 100, 0, std::nullopt},
    {"is to stop and has just begun to read", 1000, 100, 0, std::nullopt},
    {"was to stop just now while it waits", 100, 60000, 0, std::nullopt},
    {"is to stop and waits", 700, 60000, 0, AttemptEnd::kInterrupted},
    {"is to stop and has waited since", 1000, 700, 0, AttemptEnd::kInterrupted},
    {"is to stop and takes its last checkpoint", 1499, -1, 0, std::nullopt},
    {"is to stop and takes too long", 1500, -1, 0, AttemptEnd::kInterrupted},
    {"is to stop and has reached the limit", 700, 5000, 5, AttemptEnd::kInterrupted},
};

TEST(AttemptWatchTest, EndsOnlyAnAttemptThatCannotEndItself) {
    for (const Moment& row : kMoments) {
        AttemptTimes times;
        if (row.sinceStopMs >= 0) times.sinceStop = milliseconds(row.sinceStopMs);
        if (row.inReadMs >= 0) times.inRead = milliseconds(row.inReadMs);
        if (row.limitSeconds > 0) times.readLimit = seconds(row.limitSeconds);
        EXPECT_EQ(EndFromOutside(times), row.end) << row.what;
    }
}

// Waits for the end that a watch decides on.
AttemptEnd EndOf(AttemptWatch& watch, bool stop) {
    std::promise<AttemptEnd> decided;
    watch.Start([stop] { return stop; }, [&decided](AttemptEnd end) { decided.set_value(end); });
    return decided.get_future().get();
}

TEST(AttemptWatchTest, EndsAReadThatHasReachedTheLimit) {
    AttemptWatch watch;
    watch.LimitReads(seconds(3));
    watch.EnterRead(Clock::now() - seconds(4));
    EXPECT_EQ(EndOf(watch, false), AttemptEnd::kTimeout);
}

TEST(AttemptWatchTest, EndsAReadThatWaitsWhenTheLoadIsToStop) {
    AttemptWatch watch;
    watch.EnterRead(Clock::now() - seconds(60));
    EXPECT_EQ(EndOf(watch, true), AttemptEnd::kInterrupted);
}

TEST(AttemptWatchTest, AReadThatIsOverIsNotLimited) {
    AttemptWatch watch;
    watch.LimitReads(seconds(1));
    watch.EnterRead(Clock::now() - seconds(60));
    watch.LeaveRead();
    // The request to stop ends it, not the limit.
    EXPECT_EQ(EndOf(watch, true), AttemptEnd::kInterrupted);
}

}  // namespace
