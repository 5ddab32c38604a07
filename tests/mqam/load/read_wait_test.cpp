// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/read_wait.h"

#include <gtest/gtest.h>

using namespace mqam;

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

struct Slices {
    std::optional<seconds> readWait;
    std::optional<std::int64_t> timeout;
};

constexpr Slices kSlices[] = {{seconds(1), 4},
                              {seconds(2), 8},
                              {seconds(15), 60},
                              {seconds(600), 2400},
                              {std::nullopt, std::nullopt},
                              {seconds(0), std::nullopt}};

TEST(ReadWaitTest, TheModuleLooksAtTheClockEvery250Milliseconds) {
    for (const Slices& slices : kSlices)
        EXPECT_EQ(TimeoutForSlices(slices.readWait), slices.timeout);
}

// The module's own arithmetic: a slice is RWAIT in milliseconds divided by the seconds of the time-out, and
// the time-out is looked at only if no more than RWAIT seconds have passed.
TEST(ReadWaitTest, NoReadWaitLetsTheTimeOutExpireOrASliceBeLongerThanASecond) {
    for (int readWait = 1; readWait <= 600; ++readWait) {
        const std::optional<std::int64_t> timeout = TimeoutForSlices(seconds(readWait));
        ASSERT_TRUE(timeout) << readWait;
        EXPECT_GE(*timeout, readWait);
        EXPECT_EQ(readWait * 1000 / *timeout, 250) << readWait;
    }
}

struct Limit {
    std::optional<seconds> readWait;
    int timeout;
    std::optional<seconds> limit;
};

constexpr Limit kLimits[] = {
    {seconds(15), 0, std::nullopt},  // no --timeout
    {std::nullopt, 0, std::nullopt},
    {seconds(15), 10, seconds(10)},
    {seconds(15), 14, seconds(14)},
    {seconds(15), 15, std::nullopt},  // the end of the queue comes first
    {seconds(15), 60, std::nullopt},
    {seconds(1), 1, std::nullopt},
    {seconds(600), 2, seconds(2)},
    {std::nullopt, 1, seconds(1)},  // an unlimited wait
    {std::nullopt, 2147483647, seconds(2147483647)},
    {seconds(0), 5, seconds(5)},  // the module does not say how long it waits
};

TEST(ReadWaitTest, TheTimeOutLimitsAReadUnlessTheEndOfTheQueueComesFirst) {
    for (const Limit& row : kLimits)
        EXPECT_EQ(ReadLimit(row.readWait, seconds(row.timeout)), row.limit)
            << (row.readWait ? row.readWait->count() : -1) << " " << row.timeout;
}

struct Planned {
    std::optional<int> leftMs;
    int intoSecondMs;
    int pauseMs;
    bool isMade;
};

constexpr Planned kPlanned[] = {
    {std::nullopt, 0, 250, true},  // a Read that began now would take two seconds
    {std::nullopt, 249, 1, true},
    {std::nullopt, 250, 0, true},
    {std::nullopt, 999, 0, true},
    {10000, 100, 150, true},
    {1000, 0, 250, true},
    {1000, 500, 0, true},
    {999, 0, 999, false},  // even the shortest Read would take longer
    {1, 0, 1, false},
    {0, 0, 0, false},
    {-300, 0, 0, false},
};

TEST(ReadWaitTest, AWaitIsMadeOfShortReadsAndEndsInTime) {
    for (const Planned& row : kPlanned) {
        std::optional<milliseconds> left;
        if (row.leftMs) left = milliseconds(*row.leftMs);
        const NextRead next = PlanNextRead(left, milliseconds(row.intoSecondMs));
        EXPECT_EQ(next.pause.count(), row.pauseMs) << row.leftMs.value_or(-1) << " " << row.intoSecondMs;
        EXPECT_EQ(next.isMade, row.isMade) << row.leftMs.value_or(-1) << " " << row.intoSecondMs;
    }
}

// A Read of the module takes until the end of the second that follows the one in which it began.
int EndOfRead(int beginMs) {
    return (beginMs / 1000 + 2) * 1000;
}

TEST(ReadWaitTest, WheneverAWaitBeginsItTakesItsTimeAndAtMostOneSecondMore) {
    for (const int waitMs : {1000, 2000, 3000, 4000, 15000, 16000, 600000}) {
        for (int begin = 0; begin < 1000; ++begin) {
            int now = EndOfRead(begin);
            for (;;) {
                const NextRead next =
                    PlanNextRead(milliseconds(begin + waitMs - now), milliseconds(now % 1000));
                now += static_cast<int>(next.pause.count());
                if (!next.isMade) break;
                // Only the first Read, which follows a record immediately, may take longer.
                ASSERT_LE(EndOfRead(now) - now, 1750);
                now = EndOfRead(now);
            }
            ASSERT_GE(now - begin, waitMs) << begin;
            ASSERT_LE(now - begin, waitMs + 1000) << begin;
        }
    }
}

}  // namespace
