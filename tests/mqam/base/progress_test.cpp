// SPDX-License-Identifier: Apache-2.0
#include "mqam/base/progress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <thread>

#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

TEST(Progress, CountsAreGroupedByThousands) {
    EXPECT_EQ(FormatCount(0), "0");
    EXPECT_EQ(FormatCount(999), "999");
    EXPECT_EQ(FormatCount(1000), "1,000");
    EXPECT_EQ(FormatCount(1234567), "1,234,567");
    EXPECT_EQ(FormatCount(18446744073709551615ULL), "18,446,744,073,709,551,615");
}

TEST(Progress, BytesTakeTheFittingUnit) {
    EXPECT_EQ(FormatBytes(0), "0 bytes");
    EXPECT_EQ(FormatBytes(999), "999 bytes");
    EXPECT_EQ(FormatBytes(1000), "1.00 kB");
    EXPECT_EQ(FormatBytes(999994), "999.99 kB");
    EXPECT_EQ(FormatBytes(999995), "1.00 MB");
    EXPECT_EQ(FormatBytes(1500000000), "1.50 GB");
    EXPECT_EQ(FormatBytes(18446744073709551615ULL), "18.45 EB");
}

TEST(Progress, ElapsedTimeIsMinutesAndSeconds) {
    EXPECT_EQ(FormatElapsed(-1), "0:00");
    EXPECT_EQ(FormatElapsed(59.9), "0:59");
    EXPECT_EQ(FormatElapsed(600), "10:00");
    EXPECT_EQ(FormatElapsed(3600), "1:00:00");
    EXPECT_EQ(FormatElapsed(360061), "100:01:01");
}

TEST(Progress, LineHoldsRecordsBytesRateAndElapsed) {
    ProgressCounters counters;
    EXPECT_EQ(FormatProgress(counters, 0), "0 records, 0 bytes, 0 records/s, 0:00");
    counters.records = 12345;
    counters.bytes = 1210000;
    EXPECT_EQ(FormatProgress(counters, 0.5), "12,345 records, 1.21 MB, 24,690 records/s, 0:00");
}

TEST(Progress, WhatProcessesBeforeHaveLoadedCountsInTheTotalsAndNotInTheRate) {
    ProgressCounters counters;
    counters.recordsBefore = 1000;
    counters.bytesBefore = 5000;
    counters.secondsBefore = 61;
    EXPECT_EQ(FormatProgress(counters, 0), "1,000 records, 5.00 kB, 0 records/s, 1:01");
    counters.records = 20;
    counters.bytes = 100;
    EXPECT_EQ(FormatProgress(counters, 2), "1,020 records, 5.10 kB, 10 records/s, 1:03");
}

// Waits until `done` holds, which gives the printing thread the time it needs without relying on its pace.
bool WaitUntil(const std::function<bool()>& done) {
    for (int i = 0; i < 1500; ++i) {
        if (done()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

// Redirects standard error to a file that can be read while it is written.
class ProgressPrinting : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(std::freopen(folder_.Path("err").c_str(), "wb", stderr), nullptr); }
    [[nodiscard]] std::string Printed() const { return ReadFileIfAny(folder_.Path("err")); }

    TestDirectory folder_;
    ProgressCounters counters_;
};

TEST_F(ProgressPrinting, LiveLineIsRewrittenInPlaceAndWipedAtTheEnd) {
    counters_.records = 7;
    StartProgress(ProgressStyle::kLiveLine, counters_);
    ASSERT_TRUE(WaitUntil([this] { return Printed().find("7 records") != std::string::npos; }));
    counters_.records = 8;
    ASSERT_TRUE(WaitUntil([this] { return Printed().find("8 records") != std::string::npos; }));
    StopProgress();
    const std::string printed = Printed();
    EXPECT_EQ(printed.find('\n'), std::string::npos) << printed;
    EXPECT_TRUE(printed.ends_with(" \r")) << printed;
}

TEST_F(ProgressPrinting, TextIsPrintedInPlaceOfTheLiveLine) {
    StartProgress(ProgressStyle::kLiveLine, counters_);
    ASSERT_TRUE(WaitUntil([this] { return Printed().find("0 records") != std::string::npos; }));
    PrintMessage("something happened\n");
    StopProgress();
    EXPECT_NE(Printed().find(" \rsomething happened\n"), std::string::npos) << Printed();
}

TEST_F(ProgressPrinting, NoneStylePrintsNothing) {
    StartProgress(ProgressStyle::kNone, counters_);
    PrintMessage("a\n");
    StopProgress();
    EXPECT_EQ(WithUnixLineEnds(Printed()), "a\n");
}

TEST(FitLine, ALineEndsAfterAnItemBeforeTheLastColumn) {
    const std::string line = "12,345 records, 1.21 MB, 24,690 records/s, 0:05";
    EXPECT_EQ(FitLine(line, 0), line);
    EXPECT_EQ(FitLine(line, static_cast<int>(line.size()) + 1), line);
    EXPECT_EQ(FitLine(line, static_cast<int>(line.size())), "12,345 records, 1.21 MB, 24,690 records/s");
    EXPECT_EQ(FitLine(line, 30), "12,345 records, 1.21 MB");
    EXPECT_EQ(FitLine(line, 10), "12,345 re");
}

TEST(FormatCountOf, TheNounHasAnSUnlessThereIsOne) {
    EXPECT_EQ(FormatCountOf(0, "message"), "0 messages");
    EXPECT_EQ(FormatCountOf(1, "message"), "1 message");
    EXPECT_EQ(FormatCountOf(2000, "byte"), "2,000 bytes");
    EXPECT_EQ(FormatBytes(1), "1 byte");
}

}  // namespace
