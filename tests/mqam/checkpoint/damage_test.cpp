// SPDX-License-Identifier: Apache-2.0

// Damages the checkpoint file of an unfinished load at every byte and every bit, and checks what a restart
// would do with it. The format has no checksum: damage that can be recognised must be refused, and the tests
// list the damage that cannot.
#include <gtest/gtest.h>

#include "mqam/checkpoint/start_decision.h"
#include "mqam/load/stored_load.h"
#include "tests/support/checkpoint_bytes.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

constexpr std::uint64_t kMaxRecordBytes = 1000;
const std::vector<std::string> kRecords = {"the last one loaded", "behind it", "a third",
                                           "and the very last one"};

class RestartDamageTest : public testing::Test {
  protected:
    RestartDamageTest() {
        state_.position = MakePosition(5, 8, 77);
        state_.checkpointFile = folder_.Path("ck");
        state_.lastRecordLength = kRecords.front().size();
        state_.lastRecordDigest = DigestOf(kRecords.front().data(), kRecords.front().size());
    }

    [[nodiscard]] StartDecision DecideOn(const std::string& bytes) const {
        const std::string& path = state_.checkpointFile;
        WriteBytesTo(path, bytes);
        StartDecision decision =
            DecideStart(path, state_.position, ScanForStart(path, {}, kMaxRecordBytes), {});
        EXPECT_NE(decision.message, "");
        return decision;
    }

    // Returns whether the file is refused, either because of its shape or when its first record is compared.
    bool IsRefused(const std::string& bytes) {
        return DecideOn(bytes).action == StartAction::kRefuse ||
               !CheckFirstRecord(state_.checkpointFile, state_, kMaxRecordBytes).IsOk();
    }

    // Returns where each record begins, and where the last one ends.
    static std::vector<std::size_t> Bounds() {
        std::vector<std::size_t> bounds = {4};
        for (const std::string& record : kRecords)
            bounds.push_back(bounds.back() + 8 + record.size());
        return bounds;
    }

    TestDirectory folder_;
    RestartState state_;
    const std::string file_ = CheckpointBytes(5, kRecords);
};

TEST_F(RestartDamageTest, TheCompleteFileIsResumedFrom) {
    const StartDecision decision = DecideOn(file_);
    EXPECT_EQ(decision.action, StartAction::kReplay);
    EXPECT_TRUE(decision.firstRecordIsRepeat);
    EXPECT_TRUE(decision.repairs.empty());
    EXPECT_FALSE(IsRefused(file_));
}

TEST_F(RestartDamageTest, H7_H22_CutAtAnyByteItsWholeRecordsAreGoneOnFrom) {
    const std::vector<std::size_t> bounds = Bounds();
    for (std::size_t bytes = 0; bytes < file_.size(); ++bytes) {
        const StartDecision decision = DecideOn(file_.substr(0, bytes));
        std::size_t whole = 0;
        for (const std::size_t bound : bounds)
            if (bound <= bytes) whole = bound;
        EXPECT_EQ(decision.action, whole > 4 ? StartAction::kReplay : StartAction::kResume) << bytes;
        const bool torn = whole != 0 && whole != bytes;
        ASSERT_EQ(decision.repairs.size(), torn ? 1U : 0U) << bytes;
        if (!torn) continue;
        EXPECT_EQ(decision.repairs.front().kind, Repair::Kind::kCutTornTail) << bytes;
        EXPECT_EQ(decision.repairs.front().bytes, whole) << bytes;
    }
}

TEST_F(RestartDamageTest, EveryBitOfTheSequenceNumberTurnedIsRefused) {
    for (std::size_t bit = 0; bit < 32; ++bit) {
        std::string turned = file_;
        turned[bit / 8] = static_cast<char>(turned[bit / 8] ^ (1 << bit % 8));
        EXPECT_EQ(DecideOn(turned).action, StartAction::kRefuse) << bit;
        EXPECT_TRUE(DecideOn(turned).repairs.empty()) << bit;
    }
}

TEST_F(RestartDamageTest, H18_EveryBitOfTheRecordThatWasLoadedTurnedIsRefused) {
    const std::vector<std::size_t> bounds = Bounds();
    for (std::size_t at = bounds[0]; at < bounds[1]; ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string turned = file_;
            turned[at] = static_cast<char>(turned[at] ^ (1 << bit));
            EXPECT_TRUE(IsRefused(turned)) << "bit " << bit << " of byte " << at;
        }
    }
}

TEST_F(RestartDamageTest, EveryBitOfALengthTurnedIsRefusedButForTheLastOne) {
    const std::vector<std::size_t> bounds = Bounds();
    for (std::size_t record = 0; record + 1 < kRecords.size(); ++record) {
        for (std::size_t bit = 0; bit < 64; ++bit) {
            std::string turned = file_;
            char& byte = turned[bounds[record] + bit / 8];
            byte = static_cast<char>(byte ^ (1 << bit % 8));
            EXPECT_TRUE(IsRefused(turned)) << "bit " << bit << " of length " << record;
        }
    }
}

// The bytes that follow the last length are as many as it says. Another value there looks like an append that
// was cut short, unless no record can be so long; a much smaller value leaves bytes that form no possible
// length.
TEST_F(RestartDamageTest, L12_ABitOfTheLastLengthTurnedCannotBeKnownUnlessItIsImpossible) {
    const std::size_t last = Bounds()[kRecords.size() - 1];
    const std::size_t length = kRecords.back().size();
    for (std::size_t bit = 0; bit < 64; ++bit) {
        std::string turned = file_;
        turned[last + bit / 8] = static_cast<char>(turned[last + bit / 8] ^ (1 << bit % 8));
        const bool muchShorter = bit < 10 && (length ^ std::size_t{1} << bit) + 8 <= length;
        EXPECT_EQ(IsRefused(turned), bit >= 10 || muchShorter) << bit;
    }
}

// After a power failure a file can have its length but not its last bytes. Each length that is 0 shows that. Zeros
// inside the last record do not show.
TEST_F(RestartDamageTest, ZerosToTheEndAreRefusedWhereverTheyBeginBeforeTheLastRecord) {
    const std::size_t last = Bounds()[kRecords.size() - 1];
    for (std::size_t from = 0; from < file_.size(); ++from) {
        const std::string zeroed = file_.substr(0, from) + std::string(file_.size() - from, '\0');
        EXPECT_EQ(IsRefused(zeroed), from <= last) << from;
        EXPECT_TRUE(from > last || DecideOn(zeroed).repairs.empty()) << from;
    }
}

// A file that was enlarged before its bytes were written.
TEST_F(RestartDamageTest, ZerosAddedToTheFileAreRefusedOnceNoLengthCanBeginWithThem) {
    for (std::size_t count = 1; count < 100; ++count) {
        EXPECT_EQ(IsRefused(file_ + std::string(count, '\0')), count >= 2) << count;
    }
}

TEST_F(RestartDamageTest, ASectorOfOneRepeatedByteIsRefusedWhereverItCoversALength) {
    for (const char byte : {'\0', ' ', '\xFF', '\xE5'}) {
        for (std::size_t record = 1; record < kRecords.size(); ++record) {
            std::string filled = file_;
            filled.replace(Bounds()[record] - 3, 16, 16, byte);
            EXPECT_TRUE(IsRefused(filled)) << record << " " << static_cast<int>(byte);
        }
    }
}

TEST_F(RestartDamageTest, L12_ABitInsideARecordBehindTheFirstTurnedCannotBeKnown) {
    const std::vector<std::size_t> bounds = Bounds();
    for (std::size_t at = bounds[1] + 8; at < bounds[2]; ++at) {
        std::string turned = file_;
        turned[at] = static_cast<char>(turned[at] ^ 1);
        EXPECT_FALSE(IsRefused(turned)) << at;
    }
}

}  // namespace
