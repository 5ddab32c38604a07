// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/record_export.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/checkpoint_bytes.h"
#include "tests/support/files.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kExportedRecordBytes = 1000;

class RecordExportTest : public testing::Test {
  protected:
    ExportPlan Plan(const std::string& bytes, const RestartState* stored = nullptr) {
        WriteBytesTo(file_, bytes);
        return PlanExport(ScanCheckpointFile(file_, kExportedRecordBytes), stored);
    }

    // Exports the file as lines and returns what was written.
    std::string Export(const ExportPlan& plan) {
        const std::string path = folder_.Path("out" + std::to_string(++exports_));
        EXPECT_EQ(ExportRecords(file_, plan, path, RecordFormat::kLines, counts_).Error(), "");
        EXPECT_EQ(counts_.records, CountRecords(plan));
        EXPECT_FALSE(fs::exists(path + ".part"));
        return ReadFileIfAny(path);
    }

    TestDirectory folder_;
    const std::string file_ = folder_.Path("ck");
    ExportCounts counts_;
    int exports_ = 0;
};

struct ExportCase {
    const char* name;
    std::string bytes;
    std::string lines;
    bool isComplete;
    const char* part;  // of the description
};

TEST_F(RecordExportTest, EveryRecordThatCanBeReadIsWritten) {
    const std::string two = CheckpointBytes(5, {"one", "two"});  // 26 bytes
    const std::string after = LengthBytes(3) + "six" + LengthBytes(5) + "seven";
    const std::string stray = "x" + LengthBytes(2) + "yy";
    const ExportCase cases[] = {
        {"whole", two, "one\ntwo\n", true, "  written: 2 records, from offset 4 to offset 26\n"},
        {"empty first record", CheckpointBytes(5, {"", "two"}), "two\n", true, "1 record, from offset 12 to"},
        {"empty file", "", "", true, ""},
        {"header alone", HeaderBytes(5), "", true, ""},
        {"torn", two + LengthBytes(9) + "torn", "one\ntwo\n", true,
         "  not written: 12 bytes at the end, the beginning of a record that was never committed: it is still on the "
         "queue\n"},
        {"zeros to the end", two + std::string(90, '\0'), "one\ntwo\n", false,
         "  missing: between offset 26 and offset 116, at most 10 records are lost (8 if they were as long as"},
        {"filler between records", two + std::string(90, '\xE5') + after, "one\ntwo\nsix\nseven\n", false,
         "  written: 2 records before the damage, from offset 4 to offset 26\n"
         "  written: 2 records after the damage, from offset 116 to offset 140\n"
         "  (certain but for chance: 2 lengths in a row lead exactly to the end of the file)\n"
         "  missing: between offset 26 and offset 116, at most 10 records are lost"},
        {"one record after filler", two + std::string(90, ' ') + LengthBytes(5) + "seven",
         "one\ntwo\nseven\n", false, "  (probable: one length leads to the end of the file)\n"},
        {"a second way to read the bytes",
         two + std::string(90, ' ') + LengthBytes(stray.size()) + stray + after, "one\ntwo\nsix\nseven\n",
         false, "missing: between offset 26 and offset 135, at most 12 records"},
        {"a flipped bit", two + LengthBytes(5 ^ 64) + "three" + after, "one\ntwo\nthree\nsix\nseven\n", false,
         "  written: 1 record at offset 26, of whose length one bit is corrected (probable)\n"},
        {"a flipped bit, with records misread", two + LengthBytes(5 ^ 16) + "three" + after,
         "one\ntwo\nthree\nsix\nseven\n", false, "nothing if the corrected length is right"},
        {"a record that ends like the filler", CheckpointBytes(5, {"one", "two "}) + std::string(90, ' '),
         "one\ntwo \n", false,
         "  doubtful: the record at offset 15 ends in the same bytes as the damage after it"},
        {"sequence number of zeros", CheckpointBytes(0, {"one"}), "one\n", true, "1 record, from offset 4"},
    };
    for (const ExportCase& c : cases) {
        SCOPED_TRACE(c.name);
        const ExportPlan plan = Plan(c.bytes);
        EXPECT_EQ(Export(plan), c.lines);
        EXPECT_EQ(IsComplete(plan), c.isComplete);
        const std::string text = DescribeExport(plan);
        EXPECT_NE(text.find(c.part), std::string::npos) << text;
        EXPECT_TRUE(text.empty() || text.back() == '\n') << text;
    }
}

TEST_F(RecordExportTest, RecordsThatTheTargetHasAreLeftOut) {
    RestartState state;
    state.lastRecordLength = 3;
    const std::string file =
        CheckpointBytes(5, {"one", "two", "three"});  // records at 4, 15 and 26, end at 39
    const auto lines = [&](std::optional<PositionData> position) {
        state.position = position;
        return Export(Plan(file, &state));
    };
    EXPECT_EQ(lines(std::nullopt), "one\ntwo\nthree\n");
    EXPECT_EQ(lines(MakePosition(5, 0, 4)), "one\ntwo\nthree\n");
    EXPECT_EQ(lines(MakePosition(5, 8, 99)), "two\nthree\n");
    EXPECT_EQ(lines(MakePosition(6, 9, 4)), "two\nthree\n");
    EXPECT_EQ(lines(MakePosition(6, 9, 15)), "three\n");
    EXPECT_EQ(lines(MakePosition(6, 9, 39)), "");
    // The file and the position do not fit, so nothing is known.
    EXPECT_EQ(lines(MakePosition(7, 9, 15)), "one\ntwo\nthree\n");
    EXPECT_EQ(lines(MakePosition(4, 9, 15)), "one\ntwo\nthree\n");
    state.lastRecordLength = 4;
    EXPECT_EQ(lines(MakePosition(5, 8, 99)), "one\ntwo\nthree\n");
    state.lastRecordLength = 3;
    state.position = MakePosition(5, 8, 99);
    EXPECT_EQ(Export(Plan(CheckpointBytes(5, {"", "one", "two"}), &state)), "two\n");
    EXPECT_NE(
        DescribeExport(Plan(file, &state)).find("  left out: 1 record that the load has loaded already\n"),
        std::string::npos);
}

TEST_F(RecordExportTest, AFileThatExistsIsNotOverwritten) {
    const ExportPlan plan = Plan(CheckpointBytes(5, {"one"}));
    const std::string path = folder_.Path("mine");
    WriteBytesTo(path, "mine");
    const Status refused = ExportRecords(file_, plan, path, RecordFormat::kRaw, counts_);
    EXPECT_EQ(refused.Code(), StatusCode::kRefused);
    EXPECT_EQ(refused.Error(), path + " exists and is not overwritten: choose another name, or move it away");
    EXPECT_EQ(ReadFileIfAny(path), "mine");
}

TEST_F(RecordExportTest, AnExportThatFailsLeavesNothing) {
    const ExportPlan plan = Plan(CheckpointBytes(5, {"one", "two"}));
    const std::string path = folder_.Path("out");
    // The file changes after it was scanned.
    for (const std::string& bytes : {CheckpointBytes(5, {"one"}), CheckpointBytes(5, {"one", "TWO"}),
                                     CheckpointBytes(5, {"one", "four"})}) {
        WriteBytesTo(file_, bytes);
        EXPECT_EQ(ExportRecords(file_, plan, path, RecordFormat::kRaw, counts_).Code(),
                  StatusCode::kTransient);
        EXPECT_FALSE(fs::exists(path));
        EXPECT_FALSE(fs::exists(path + ".part"));
    }
    fs::remove(file_);
    EXPECT_EQ(ExportRecords(file_, plan, path, RecordFormat::kRaw, counts_).Code(), StatusCode::kTransient);
    EXPECT_EQ(ExportRecords(file_, plan, folder_.Path("no/such"), RecordFormat::kRaw, counts_).Code(),
              StatusCode::kTransient);
}

TEST_F(RecordExportTest, APartThatACrashLeftIsNotTouched) {
    const ExportPlan plan = Plan(CheckpointBytes(5, {"one", "t\nwo"}));
    const std::string path = folder_.Path("out");
    WriteBytesTo(path + ".part", "of a crash");
    EXPECT_TRUE(ExportRecords(file_, plan, path, RecordFormat::kLength, counts_).IsOk());
    EXPECT_EQ(ReadFileIfAny(path), std::string("\3\0\0\0one\4\0\0\0t\nwo", 15));
    EXPECT_EQ(ReadFileIfAny(path + ".part"), "of a crash");
    EXPECT_EQ(counts_.bytes, 7U);
    EXPECT_EQ(counts_.withLineFeeds, 1U);
}

}  // namespace
