// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/scan.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "mqam/checkpoint/damage.h"
#include "tests/support/checkpoint_bytes.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

constexpr std::uint64_t kLargestRecord = 1000;

class CheckpointFactsTest : public testing::Test {
  protected:
    [[nodiscard]] std::string Path(const std::string& name = "load.ckpt") const { return folder_.Path(name); }
    CheckpointScan Inspect(const std::string& bytes) const {
        WriteBytesTo(Path(), bytes);
        return ScanCheckpointFile(Path(), kLargestRecord);
    }

    TestDirectory folder_;
};

TEST_F(CheckpointFactsTest, MissingFileIsMissing) {
    const CheckpointScan facts = ScanCheckpointFile(Path(), kLargestRecord);
    EXPECT_EQ(facts.shape, CheckpointShape::kMissing);
    EXPECT_EQ(facts.path, Path());
}

TEST_F(CheckpointFactsTest, FolderIsUnreadableWithAReason) {
    const CheckpointScan facts = ScanCheckpointFile(folder_.Root(), kLargestRecord);
    EXPECT_EQ(facts.shape, CheckpointShape::kUnreadable);
    EXPECT_EQ(facts.error, "not a file");
}

TEST_F(CheckpointFactsTest, RecordsAreToldWithOffsetLengthAndHead) {
    const std::string large(kLargestRecord, 'x');
    const std::string bytes = CheckpointBytes(-7, {"", "one", std::string("\0two", 4), large});
    const CheckpointScan facts = Inspect(bytes);
    ASSERT_EQ(facts.shape, CheckpointShape::kRecords);
    EXPECT_EQ(facts.sequence, -7);
    EXPECT_EQ(facts.fileBytes, bytes.size());
    EXPECT_EQ(facts.intactBytes, bytes.size());
    EXPECT_EQ(facts.impossibleLengthAt, 0U);
    EXPECT_EQ(facts.resyncOffset, 0U);
    ASSERT_EQ(facts.records.size(), 4U);
    EXPECT_EQ(facts.records[0].length, 0U);
    EXPECT_EQ(facts.emptyLengthAt, 0U);
    EXPECT_EQ(facts.records[2].offset, 23U);
    EXPECT_EQ(facts.records[2].length, 4U);
    EXPECT_EQ(facts.records[2].head, std::string("\0two", 4));
    EXPECT_EQ(facts.records[3].offset, 35U);
    EXPECT_EQ(facts.records[3].length, kLargestRecord);
    EXPECT_EQ(facts.records[3].head, std::string(32, 'x'));
}

TEST_F(CheckpointFactsTest, FileCutAtEveryByteTellsItsIntactPart) {
    const std::vector<std::string> records = {"", "the second", "and the third record"};
    const std::string whole = CheckpointBytes(3, records);
    for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
        SCOPED_TRACE(cut);
        const CheckpointScan facts = Inspect(whole.substr(0, cut));
        // The lengths of the records are enough to compute where the intact part ends.
        std::size_t intact = cut < 4 ? 0 : 4;
        std::size_t count = 0;
        for (const std::string& record : records) {
            if (intact == 0 || intact + 8 + record.size() > cut) break;
            intact += 8 + record.size();
            ++count;
        }
        const CheckpointShape shape = cut == 0    ? CheckpointShape::kEmpty
                                      : cut < 4   ? CheckpointShape::kTornHeader
                                      : count > 0 ? CheckpointShape::kRecords
                                                  : CheckpointShape::kHeaderOnly;
        EXPECT_EQ(facts.shape, shape);
        EXPECT_EQ(facts.fileBytes, cut);
        EXPECT_EQ(facts.intactBytes, intact);
        EXPECT_EQ(facts.records.size(), count);
        EXPECT_EQ(facts.sequence, cut < 4 ? 0 : 3);
        EXPECT_EQ(facts.impossibleLengthAt, 0U);
        EXPECT_EQ(facts.resyncOffset, 0U);
        const bool lengthIsThere = count < records.size() && intact != 0 && cut >= intact + 8;
        EXPECT_EQ(facts.lengthAfterIntact, lengthIsThere ? records[count].size() : 0);
    }
}

// A walk through the bytes of a file, from length to length: the offsets that it reaches, and how it ends.
struct Walk {
    std::vector<std::uint64_t> offsets;
    std::uint64_t intact = 4;
    bool impossible = false;
};

Walk WalkBytes(const std::string& bytes) {
    Walk walk;
    while (bytes.size() - walk.intact >= 8) {
        std::uint64_t length = 0;
        for (int i = 7; i >= 0; --i) {
            length = length << 8 | static_cast<unsigned char>(bytes[walk.intact + static_cast<unsigned>(i)]);
        }
        walk.impossible = length > kLargestRecord;
        if (walk.impossible || length > bytes.size() - walk.intact - 8) break;
        walk.offsets.push_back(walk.intact);
        walk.intact += 8 + length;
    }
    return walk;
}

TEST_F(CheckpointFactsTest, EveryFlippedBitOfTheFirstRecordsIsToldAsTheBytesHaveIt) {
    const std::string whole = CheckpointBytes(1, {"first record", "second one", "third", "fourth record"});
    const std::size_t thirdEnds = 4 + 20 + 18 + 13;
    int torn = 0;
    int impossible = 0;
    int resyncRecords = 0;
    for (std::size_t bit = 0; bit < thirdEnds * 8; ++bit) {
        SCOPED_TRACE(bit);
        std::string bytes = whole;
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << (bit % 8)));
        const CheckpointScan facts = Inspect(bytes);
        const Walk walk = WalkBytes(bytes);
        EXPECT_EQ(facts.fileBytes, bytes.size());
        EXPECT_EQ(facts.intactBytes, walk.intact);
        EXPECT_EQ(facts.impossibleLengthAt, walk.impossible ? walk.intact : 0);
        ASSERT_EQ(facts.records.size(), walk.offsets.size());
        for (std::size_t i = 0; i < walk.offsets.size(); ++i) {
            EXPECT_EQ(facts.records[i].offset, walk.offsets[i]);
        }
        // If a wrong length is noticed at all, the offset of its field is found, too: the fourth record still
        // leads to the end of the file.
        if (walk.intact < bytes.size()) {
            EXPECT_NE(facts.resyncOffset, 0U);
            EXPECT_EQ(facts.resyncRecords, bit / 8 < 12 ? 3U : bit / 8 < 32 ? 2U : 1U);
            EXPECT_EQ(facts.damagedLengthAt, bit / 8 < 12 ? 4U : bit / 8 < 32 ? 24U : 42U);
        } else {
            EXPECT_EQ(facts.resyncOffset, 0U);
            EXPECT_EQ(facts.damagedLengthAt, 0U);
        }
        torn += walk.intact < bytes.size() ? 1 : 0;
        impossible += walk.impossible ? 1 : 0;
        resyncRecords += facts.resyncOffset != 0 ? 1 : 0;
    }
    EXPECT_GT(torn, impossible);
    EXPECT_GT(impossible, 3 * 50);
    EXPECT_EQ(resyncRecords, torn);
}

TEST_F(CheckpointFactsTest, LengthDamagedInManyBitsIsNoticedByTheRecordsBehindIt) {
    const std::string bytes =
        CheckpointBytes(1, {"first"}) + LengthBytes(0x2D5) + "second" + LengthBytes(5) + "third";
    const CheckpointScan facts = Inspect(bytes);
    EXPECT_EQ(facts.intactBytes, 17U);
    EXPECT_EQ(facts.resyncOffset, 31U);
    EXPECT_EQ(facts.damagedLengthAt, 0U);
}

TEST_F(CheckpointFactsTest, DamagedLengthOfTheLastRecordCannotBeToldFromATornOne) {
    const CheckpointScan facts = Inspect(CheckpointBytes(1, {"first"}) + LengthBytes(6 ^ 64) + "second");
    EXPECT_EQ(facts.intactBytes, 17U);
    EXPECT_EQ(facts.resyncOffset, 0U);
}

TEST_F(CheckpointFactsTest, LengthOfTheLargestRecordIsPossibleAndOneMoreIsNot) {
    const std::string head = CheckpointBytes(1, {"a"});
    const CheckpointScan largest = Inspect(head + LengthBytes(kLargestRecord) + "torn");
    EXPECT_EQ(largest.impossibleLengthAt, 0U);
    EXPECT_EQ(largest.lengthAfterIntact, kLargestRecord);
    const CheckpointScan larger = Inspect(head + LengthBytes(kLargestRecord + 1) + "torn");
    EXPECT_EQ(larger.impossibleLengthAt, head.size());
    EXPECT_EQ(larger.fileBytes, head.size() + 12);
    const CheckpointScan negative = Inspect(head + LengthBytes(~std::uint64_t{0}));
    EXPECT_EQ(negative.impossibleLengthAt, head.size());
}

TEST_F(CheckpointFactsTest, TornRecordOfZerosIsNotTakenForRecords) {
    const CheckpointScan facts = Inspect(HeaderBytes(1) + LengthBytes(900) + std::string(600, '\0'));
    EXPECT_EQ(facts.shape, CheckpointShape::kHeaderOnly);
    EXPECT_EQ(facts.resyncOffset, 0U);
}

// ---- filler, and what comes after damage

const std::string kThree = CheckpointBytes(5, {"one", "two", "three"});  // 39 bytes

std::string Filled(std::size_t count, char byte = '\0') {
    return std::string(count, byte);
}

struct FillerCase {
    const char* name;
    std::string bytes;
    std::size_t intact;
    std::uint64_t emptyLengthAt;
    std::uint64_t impossibleLengthAt;
    std::optional<FillerRun> filler;
    std::size_t recordsAfter;
    Loss loss;
};

TEST_F(CheckpointFactsTest, FillerAndWhatItCostsAreFound) {
    const std::string after = LengthBytes(4) + "four" + LengthBytes(4) + "five";
    const FillerRun zeros{0, 39, 0};
    const auto upTo = [](FillerRun run, std::uint64_t to) {
        run.to = to;
        return run;
    };
    const FillerCase cases[] = {
        {"zeros to the end", kThree + Filled(84), 39, 39, 0, upTo(zeros, 123), 0, {39, 123, 9, 8, false}},
        {"as many zeros as a length",
         kThree + Filled(8),
         39,
         39,
         0,
         upTo(zeros, 47),
         0,
         {39, 47, 0, 0, false}},
        {"zeros that no length can begin with",
         kThree + Filled(2),
         39,
         39,
         0,
         upTo(zeros, 41),
         0,
         {39, 41, 0, 0, false}},
        {"a zero that a length can begin with", kThree + Filled(1), 39, 0, 0, std::nullopt, 0, {}},
        {"other bytes to the end",
         kThree + Filled(84, '\xFF'),
         39,
         0,
         39,
         FillerRun{0xFF, 39, 123},
         0,
         {39, 123, 9, 8, false}},
        {"bytes too few to be known as filler", kThree + Filled(7, '\xFF'), 39, 0, 0, std::nullopt, 0, {}},
        {"blanks between records",
         kThree + Filled(64, ' ') + after,
         39,
         0,
         39,
         FillerRun{' ', 39, 103},
         2,
         {39, 103, 7, 6, false}},
        // The low byte of the next length is not 0, so the zeros end there.
        {"zeros between records",
         kThree + Filled(100) + after,
         39,
         39,
         0,
         upTo(zeros, 139),
         2,
         {39, 139, 11, 9, false}},
        {"zeros from the middle of a record",
         CheckpointBytes(5, {"one", "two" + Filled(5)}) + Filled(30),
         31,
         31,
         0,
         FillerRun{0, 26, 61},
         0,
         {31, 61, 4, 2, true}},
        {"a record of zeros before zeros",
         CheckpointBytes(5, {"one", Filled(5)}) + Filled(30),
         28,
         28,
         0,
         FillerRun{0, 23, 58},
         0,
         {28, 58, 4, 3, true}},
        {"nothing but zeros", Filled(100), 12, 12, 0, FillerRun{0, 12, 100}, 0, {12, 100, 9, 9, false}},
        {"an empty record alone",
         kThree + LengthBytes(0) + "rest",
         39,
         39,
         0,
         std::nullopt,
         0,
         {39, 51, 1, 1, false}},
        {"an empty first record", CheckpointBytes(5, {"", "two"}), 23, 0, 0, std::nullopt, 0, {}},
        {"two empty records",
         CheckpointBytes(5, {"", ""}),
         12,
         12,
         0,
         FillerRun{0, 12, 20},
         0,
         {12, 20, 0, 0, false}},
    };
    for (const FillerCase& c : cases) {
        SCOPED_TRACE(c.name);
        const CheckpointScan facts = Inspect(c.bytes);
        EXPECT_EQ(facts.intactBytes, c.intact);
        EXPECT_EQ(facts.fileBytes, c.bytes.size());
        EXPECT_EQ(facts.emptyLengthAt, c.emptyLengthAt);
        EXPECT_EQ(facts.impossibleLengthAt, c.impossibleLengthAt);
        ASSERT_EQ(facts.filler.has_value(), c.filler.has_value());
        if (c.filler) {
            EXPECT_EQ(facts.filler->byte, c.filler->byte);
            EXPECT_EQ(facts.filler->from, c.filler->from);
            EXPECT_EQ(facts.filler->to, c.filler->to);
        }
        EXPECT_EQ(facts.recordsAfter.size(), c.recordsAfter);
        EXPECT_EQ(IsDamaged(facts), c.emptyLengthAt != 0 || c.impossibleLengthAt != 0);
        const Loss loss = EstimateLoss(facts);
        EXPECT_EQ(loss.from, c.loss.from);
        EXPECT_EQ(loss.to, c.loss.to);
        EXPECT_EQ(loss.recordsMax, c.loss.recordsMax);
        EXPECT_EQ(loss.recordsLikely, c.loss.recordsLikely);
        EXPECT_EQ(loss.lastRecordIsDoubtful, c.loss.lastRecordIsDoubtful);
    }
}

TEST_F(CheckpointFactsTest, TheSequenceNumberZeroIsDamageOfAnyFileThatHasOne) {
    EXPECT_TRUE(IsDamaged(Inspect(HeaderBytes(0))));
    EXPECT_TRUE(IsDamaged(Inspect(CheckpointBytes(0, {"one"}))));
    EXPECT_FALSE(IsDamaged(Inspect(HeaderBytes(0).substr(0, 3))));
    EXPECT_FALSE(IsDamaged(Inspect("")));
    EXPECT_EQ(EstimateLoss(Inspect(CheckpointBytes(0, {"one"}))).recordsMax, 0U);
}

// The text of a record looks like a record itself: the end of the second one, read from its middle, leads to the
// third one.
TEST_F(CheckpointFactsTest, OnlyRecordsAtWhichAllWaysOfReadingMeetAreSeparated) {
    const std::string stray = "xx" + LengthBytes(2) + "yy";
    const std::string bytes = kThree + Filled(100, '\xEE') + LengthBytes(3) + "six" +
                              LengthBytes(stray.size()) + stray + LengthBytes(5) + "seven" + LengthBytes(5) +
                              "eight";
    const CheckpointScan facts = Inspect(bytes);
    EXPECT_EQ(facts.resyncOffset, 139U);
    EXPECT_EQ(facts.resyncRecords, 4U);
    // The stray way begins after "six", which no way contradicts.
    EXPECT_EQ(facts.recordsAfter.size(), 4U);
    // Without "six", the record around the stray way comes first, and either may be right.
    const std::string doubtful = kThree + Filled(100, '\xEE') + LengthBytes(stray.size()) + stray +
                                 LengthBytes(5) + "seven" + LengthBytes(5) + "eight";
    const CheckpointScan less = Inspect(doubtful);
    EXPECT_EQ(less.resyncOffset, 139U);
    EXPECT_EQ(less.resyncRecords, 3U);
    ASSERT_EQ(less.recordsAfter.size(), 2U);
    EXPECT_EQ(less.recordsAfter[0].head, "seven");
    EXPECT_EQ(less.recordsAfter[0].offset, 159U);
    EXPECT_EQ(less.recordsAfter[1].head, "eight");
    EXPECT_EQ(EstimateLoss(less).to, 159U);
}

TEST_F(CheckpointFactsTest, NoRecordAfterTheDamageIsSeparatedIfAWayBeginsInTheLastOne) {
    const std::string stray = "xx" + LengthBytes(2) + "yy";
    const CheckpointScan facts = Inspect(kThree + Filled(100, '\xEE') + LengthBytes(stray.size()) + stray);
    EXPECT_EQ(facts.resyncRecords, 1U);
    EXPECT_TRUE(facts.recordsAfter.empty());
    EXPECT_EQ(EstimateLoss(facts).to, facts.fileBytes);
}

// Two of the lengths before the damage would lead to a record if one bit of them were flipped.
TEST_F(CheckpointFactsTest, AFlippedBitIsLookedForFromTheDamageBackwards) {
    const std::string far(64 + 12, 'x');
    const std::string bytes =
        CheckpointBytes(1, {"1234", far}) + LengthBytes(5 ^ 16) + "wrong" + LengthBytes(5) + "right";
    const CheckpointScan facts = Inspect(bytes);
    EXPECT_EQ(facts.damagedLengthAt, 4U + 12 + 8 + far.size());
}

TEST_F(CheckpointFactsTest, TemporaryFilesAreFoundByNameAndSorted) {
    for (const char* name :
         {"MQAMtmp.77", "MQAMtmp.4711", "MQAMtmp.", "MQAMtmp.4x", "xMQAMtmp.1", "load.ckpt"})
        WriteBytesTo(Path(name), "");
    EXPECT_EQ(FindTemporaryFiles(Path()),
              (std::vector<std::string>{Path("MQAMtmp.4711"), Path("MQAMtmp.77")}));
    const char separator = static_cast<char>(std::filesystem::path::preferred_separator);
    EXPECT_TRUE(FindTemporaryFiles(Path("none") + separator + "load.ckpt").empty());
}

#if defined(_WIN32)
TEST_F(CheckpointFactsTest, TemporaryFilesOfAPathWithSlashesAreFoundWhereTheModulePutsThem) {
    std::filesystem::create_directory(Path("sub"));
    WriteBytesTo(Path("sub/MQAMtmp.1"), "");
    WriteBytesTo(Path("MQAMtmp.2"), "");
    EXPECT_EQ(FindTemporaryFiles(folder_.Root() + "\\sub/load.ckpt"),
              (std::vector<std::string>{folder_.Root() + "\\MQAMtmp.2", folder_.Root() + "\\sub/MQAMtmp.1"}));
}
#endif

TEST_F(CheckpointFactsTest, CopyIsARunOfTheFilesRecords) {
    const CheckpointScan file = Inspect(CheckpointBytes(1, {"a", "bb", "cc", "bb", "dd", "e"}));
    const auto copies = [&](const std::string& bytes) {
        WriteBytesTo(Path("temporary"), bytes);
        std::string reason;
        const bool copy =
            IsCopyOfRecords(ScanCheckpointFile(Path("temporary"), kLargestRecord), file, reason);
        EXPECT_EQ(reason, "");
        return copy;
    };
    EXPECT_TRUE(copies(""));
    EXPECT_TRUE(copies(HeaderBytes(2)));
    EXPECT_TRUE(copies(HeaderBytes(2) + LengthBytes(50) + "torn"));
    EXPECT_TRUE(copies(CheckpointBytes(2, {"bb", "dd", "e"})));
    EXPECT_TRUE(copies(CheckpointBytes(2, {"bb", "cc"})));
    EXPECT_TRUE(copies(CheckpointBytes(2, {"", "cc", "bb"})));
    EXPECT_FALSE(copies(CheckpointBytes(2, {"bb", "e"})));
    EXPECT_FALSE(copies(CheckpointBytes(2, {"dd", "e", "f"})));
    EXPECT_FALSE(copies(CheckpointBytes(2, {"f"})));
}

TEST_F(CheckpointFactsTest, CopyIsToldApartBehindTheHeadsToo) {
    const std::string left = std::string(500, 'x') + "left";
    const std::string right = std::string(500, 'x') + "rite";
    const CheckpointScan file = Inspect(CheckpointBytes(1, {left}));
    WriteBytesTo(Path("temporary"), CheckpointBytes(2, {right}));
    std::string reason;
    EXPECT_FALSE(IsCopyOfRecords(ScanCheckpointFile(Path("temporary"), kLargestRecord), file, reason));
}

}  // namespace
