// SPDX-License-Identifier: Apache-2.0

// Tests which copied-in files count as complete.
#include <gtest/gtest.h>

#include "platform/file.h"
#include "spoolmq/store/listing.h"

namespace spoolmq {
namespace {

TEST(ListingTest, AFileIsSettledOnceItIsRenamedOrItsLastWriteIsOldEnough) {
    platform::FileInfo file;
    file.writeTimeNs = file.changeTimeNs = 1000000000;
    EXPECT_FALSE(IsSettled(file, 1000000000 + 249000000, 250));
    EXPECT_TRUE(IsSettled(file, 1000000000 + 250000000, 250));
    file.changeTimeNs += 1;
    EXPECT_TRUE(IsSettled(file, 1000000000, 250));
}

}  // namespace
}  // namespace spoolmq
