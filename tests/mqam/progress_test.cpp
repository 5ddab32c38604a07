#include "apps/mqam/progress.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(FormatProgress(12345, 1210000, 0.5), "12,345 records, 1.21 MB, 24,690 records/s, 0:00");
    EXPECT_EQ(FormatProgress(0, 0, 0), "0 records, 0 bytes, 0 records/s, 0:00");
}

}  // namespace
