// SPDX-License-Identifier: Apache-2.0

// Damages each bit of a checkpoint file, or cuts the file at each byte, and tests SetPos, Read and a
// checkpoint during the replay. Records are returned as the bytes say, an impossible length is refused, and a
// rewrite that fails does not change the file. The format has no checksum, so a damaged bit inside a record
// is not noticed.
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "tests/recovery/recovery_fixture.h"

namespace {

constexpr std::int32_t kSequence = 7;
constexpr std::uint64_t kBlockSize = 65536;
const Lines kRecords = {"alpha", "bet", "the third record"};

// Under Wine only a sample is tested, with a step that reaches every bit of a byte.
constexpr std::size_t kBitStep = std::filesystem::path::preferred_separator == '/' ? 1 : 7;

enum class Ends { AtTheEnd, WithABadLength, InARecord };

// What a walk through the records from an offset on finds, and how it ends. It relies only on the layout of
// the file.
struct Walk {
    Lines records;
    Ends ends = Ends::AtTheEnd;
};

Walk WalkFrom(const std::string& bytes, std::size_t at) {
    Walk walk;
    while (at + 8 <= bytes.size()) {
        std::uint64_t length = 0;
        for (std::size_t i = 8; i > 0; --i)
            length = length << 8 | static_cast<unsigned char>(bytes[at + i - 1]);
        at += 8;
        if (length > kBlockSize || length > bytes.size() - at) {
            walk.ends = length > kBlockSize ? Ends::WithABadLength : Ends::InARecord;
            return walk;
        }
        walk.records.push_back(bytes.substr(at, static_cast<std::size_t>(length)));
        at += static_cast<std::size_t>(length);
    }
    return walk;
}

std::int32_t SequenceOf(const std::string& bytes) {
    std::int32_t sequence = 0;
    std::memcpy(&sequence, bytes.data(), sizeof sequence);
    return sequence;
}

std::string WithBitTurned(std::string bytes, std::size_t bit) {
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
    return bytes;
}

class DamagedFile : public RecoveryFixture {
  protected:
    void BeginWith(const std::string& bytes) {
        StartNewProcess();
        WriteFile(kCkFile, bytes);
        BeginCheckpointing("", 1);
        mq.onGet.clear();
    }

    static ExpectedError ErrorOf(Ends ends, const std::string& function) {
        if (ends == Ends::WithABadLength)
            return ExpectedError(function, "checkpoint record length").Processing("Checkpoint", "Undefined");
        return ExpectedError(function, "checkpoint record body")
            .Calling("fread")
            .Processing("Checkpoint", "Undefined");
    }

    /// Checks that the next Reads return the records of the walk, and that the Read after them gets a message
    /// from the queue or, if the walk ends at damage, the error for it.
    void ExpectReplay(const Walk& walk) {
        for (const std::string& record : walk.records)
            EXPECT_TRUE(Gives(Read(), record));
        EXPECT_EQ(mq.Sequence(), "");
        if (walk.ends == Ends::AtTheEnd) return Deliver({"new"});
        const ReadOutcome read = Read();
        EXPECT_TRUE(FailsWith(read, ErrorOf(walk.ends, "ReadFromChkPt")));
        EXPECT_EQ(read.recordLength, 0U);
        EXPECT_EQ(mq.Sequence(), "");
    }

    /// Reads the first record and has a checkpoint carried out after it. Checks that the file is rewritten,
    /// or is unchanged if the rest of it is damaged.
    void ExpectRewrite(const std::string& bytes) {
        BeginWith(bytes);
        ASSERT_TRUE(Succeeds(SetPos({kSequence, 1, 0})));
        EXPECT_TRUE(Gives(Read(), kRecords[0]));
        static_cast<void>(TakePosition());
        PassOver();
        const Walk walk = WalkFrom(bytes, 4 + CkRecord(kRecords[0]).size());
        if (walk.ends == Ends::AtTheEnd) {
            ExpectReplay(walk);
            Lines kept = walk.records;
            kept.insert(kept.begin(), kRecords[0]);
            kept.emplace_back("new");
            EXPECT_EQ(ReadFile(kCkFile), CkBytes(kSequence + 1, kept));
            return;
        }
        const ReadOutcome read = Read();
        EXPECT_TRUE(FailsWith(read, ErrorOf(walk.ends, "ResetCkptFile")));
        EXPECT_EQ(read.recordLength, 0U);
        EXPECT_EQ(mq.Sequence(), "");
        EXPECT_EQ(ReadFile(kCkFile), bytes) << "the only copy";
    }

    const std::string whole = CkBytes(kSequence, kRecords);
    const std::size_t secondBegins = 4 + CkRecord(kRecords[0]).size();
    const std::size_t thirdBegins = secondBegins + CkRecord(kRecords[1]).size();
};

TEST_F(DamagedFile, WithAnyBitOfItsFirstRecordsFlippedReturnsWhatItsBytesSayOrRefuses) {
    const PositionData positions[] = {{kSequence, 2, 0},
                                      {kSequence + 1, 4, static_cast<std::int64_t>(secondBegins)}};
    int refused = 0;
    int badLengths = 0;
    for (const PositionData& position : positions) {
        for (std::size_t bit = 0; bit < thirdBegins * 8; bit += kBitStep) {
            SCOPED_TRACE(testing::Message() << "sequence " << position.CkPtSeq << ", bit " << bit);
            const std::string bytes = WithBitTurned(whole, bit);
            BeginWith(bytes);
            const Outcome setPos = SetPos(position);
            const std::int32_t sequence = SequenceOf(bytes);
            if (position.CkPtSeq < sequence) {
                EXPECT_TRUE(FailsWith(
                    setPos, ExpectedError("PIDMMain", "requested sequence prior to checkpoint file")));
                ++refused;
                continue;
            }
            EXPECT_TRUE(Succeeds(setPos));
            const bool isCarriedOut = position.CkPtSeq == sequence;
            const Walk walk =
                WalkFrom(bytes, isCarriedOut ? 4 : static_cast<std::size_t>(position.CkPtOffset));
            badLengths += walk.ends == Ends::WithABadLength ? 1 : 0;
            ExpectReplay(walk);
        }
    }
    EXPECT_GT(refused, 40 / static_cast<int>(kBitStep));
    EXPECT_GT(badLengths, 120 / static_cast<int>(kBitStep));
}

TEST_F(DamagedFile, WithAnyBitFlippedIsRewrittenAsItsBytesSayOrUnchanged) {
    for (std::size_t bit = secondBegins * 8; bit < (thirdBegins + 8) * 8; bit += kBitStep) {
        SCOPED_TRACE(testing::Message() << "bit " << bit);
        ExpectRewrite(WithBitTurned(whole, bit));
    }
}

TEST_F(DamagedFile, CutAtAnyByteIsRewrittenWithItsWholeRecordsOrStays) {
    for (std::size_t bytes = secondBegins; bytes <= whole.size(); ++bytes) {
        SCOPED_TRACE(testing::Message() << "cut to " << bytes << " bytes");
        ExpectRewrite(whole.substr(0, bytes));
    }
}

}  // namespace
