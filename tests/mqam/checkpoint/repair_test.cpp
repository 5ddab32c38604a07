// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/repair.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "mqam/checkpoint/integrity.h"
#include "tests/support/checkpoint_bytes.h"
#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMaxRecord = 1000;
const std::string kTorn = LengthBytes(50) + "torn";
const std::string kWhole = CheckpointBytes(5, {"aaa", "bb"});  // ends at 25

class CheckpointRepairTest : public testing::Test {
  protected:
    [[nodiscard]] std::string Path(const std::string& name = "load.ckpt") const { return folder_.Path(name); }

    void Fill(const std::optional<std::string>& file, const std::vector<std::string>& temporaries) const {
        for (const auto& entry : fs::directory_iterator(folder_.Root()))
            fs::remove(entry.path());
        if (file) WriteBytesTo(Path(), *file);
        for (std::size_t i = 0; i < temporaries.size(); ++i)
            WriteBytesTo(Path("MQAMtmp." + std::to_string(i + 1)), temporaries[i]);
    }

    // Returns the files of the directory, each with its bytes.
    [[nodiscard]] std::map<std::string, std::string> Files() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::directory_iterator(folder_.Root()))
            files[entry.path().filename().string()] = ReadFileIfAny(entry.path().string());
        return files;
    }

    RepairPlan Repair(const std::optional<PositionData>& stored) const {
        RepairPlan plan = PlanRepair(Path(), stored, kMaxRecord);
        for (const RepairStep& step : plan.steps) {
            EXPECT_EQ(TakeStep(Path(), step).Error(), "") << DescribeStep(Path(), step);
        }
        return plan;
    }

    // Returns all records, complete or not, that a file of the directory contains.
    [[nodiscard]] std::set<std::string> Contents() const {
        std::set<std::string> contents;
        for (const auto& [name, bytes] : Files()) {
            const CheckpointScan facts = ScanCheckpointFile(Path(name), kMaxRecord);
            for (const ScannedRecord& record : facts.records)
                contents.insert(bytes.substr(record.offset + 8, record.length));
            const bool isTail = name.find(".torn") != std::string::npos;
            const std::string tail = isTail ? bytes : bytes.substr(facts.intactBytes);
            if (!tail.empty()) contents.insert("torn: " + tail);
        }
        return contents;
    }

    TestDirectory folder_;
};

struct RepairRow {
    const char* name;
    std::optional<std::string> file;
    std::vector<std::string> temporaries;
    bool inOrder;                              // whether the repair meets no obstacle
    std::map<std::string, std::string> after;  // the files of the directory afterwards
};

TEST_F(CheckpointRepairTest, EveryCombinationOfFileAndTemporaryFiles) {
    const std::optional<std::string> missing;
    const std::string copy = CheckpointBytes(6, {"bb"});
    const std::string own = CheckpointBytes(5, {"xx", "yy"});
    const std::string ownPart = CheckpointBytes(5, {"xx"});
    const std::string later = CheckpointBytes(6, {"xx", "zz"});
    const std::string header = HeaderBytes(5);
    const std::string damaged = kWhole + LengthBytes(1001) + "x";
    const RepairRow rows[] = {
        {"nothing at all", missing, {}, false, {}},
        {"empty file", "", {}, true, {{"load.ckpt", ""}}},
        {"torn header", "\5", {}, true, {{"load.ckpt", "\5"}}},
        {"header", header, {}, true, {{"load.ckpt", header}}},
        {"intact file", kWhole, {}, true, {{"load.ckpt", kWhole}}},
        {"torn tail", kWhole + kTorn, {}, true, {{"load.ckpt", kWhole}, {"load.ckpt.torn", kTorn}}},
        {"torn first record", header + kTorn, {}, true, {{"load.ckpt", header}, {"load.ckpt.torn", kTorn}}},
        {"damaged file", damaged, {copy}, false, {{"load.ckpt", damaged}, {"MQAMtmp.1", copy}}},

        {"interrupted after the deletion", missing, {own}, true, {{"load.ckpt", own}}},
        {"no file, empty temporary", missing, {""}, false, {{"MQAMtmp.1", ""}}},
        {"no file, torn temporary", missing, {own + "x"}, false, {{"MQAMtmp.1", own + "x"}}},
        {"no file, one of two is empty", missing, {"", own}, true, {{"load.ckpt", own}}},
        {"no file, one of two is a part", missing, {ownPart, own}, true, {{"load.ckpt", own}}},
        {"no file, one of two is a torn part", missing, {own, ownPart + kTorn}, true, {{"load.ckpt", own}}},
        {"no file, two that are the same", missing, {own, own}, true, {{"load.ckpt", own}}},
        {"no file, two of different checkpoints",
         missing,
         {own, later},
         false,
         {{"MQAMtmp.1", own}, {"MQAMtmp.2", later}}},
        {"no file, another torn one with records",
         missing,
         {own, later + "x"},
         false,
         {{"load.ckpt", own}, {"MQAMtmp.2", later + "x"}}},

        {"empty file made over a temporary", "", {own}, true, {{"load.ckpt", own}, {"load.ckpt.kept", ""}}},
        {"header over a temporary",
         HeaderBytes(1),
         {own},
         true,
         {{"load.ckpt", own}, {"load.ckpt.kept", HeaderBytes(1)}}},
        {"torn record over a temporary",
         HeaderBytes(1) + kTorn,
         {own},
         true,
         {{"load.ckpt", own}, {"load.ckpt.kept", HeaderBytes(1) + kTorn}}},
        {"empty file, empty temporary", "", {""}, true, {{"load.ckpt", ""}}},
        {"empty file, torn temporary", "", {own + "x"}, false, {{"load.ckpt", ""}, {"MQAMtmp.1", own + "x"}}},

        {"interrupted before the deletion", kWhole, {copy}, true, {{"load.ckpt", kWhole}}},
        {"interrupted in the first write", kWhole, {"\6"}, true, {{"load.ckpt", kWhole}}},
        {"interrupted in a record", kWhole, {HeaderBytes(6) + kTorn}, true, {{"load.ckpt", kWhole}}},
        {"torn tail and copies",
         kWhole + kTorn,
         {copy, ""},
         true,
         {{"load.ckpt", kWhole}, {"load.ckpt.torn", kTorn}}},
        {"temporary of another load",
         kWhole,
         {own, copy},
         false,
         {{"load.ckpt", kWhole}, {"MQAMtmp.1", own}}},
        {"damaged temporary", kWhole, {damaged}, false, {{"load.ckpt", kWhole}, {"MQAMtmp.1", damaged}}},
    };
    for (const RepairRow& row : rows) {
        SCOPED_TRACE(row.name);
        Fill(row.file, row.temporaries);
        const RepairPlan plan = Repair(std::nullopt);
        EXPECT_EQ(plan.obstacle.empty(), row.inOrder) << plan.obstacle;
        EXPECT_EQ(Files(), row.after);
        EXPECT_TRUE(PlanRepair(Path(), std::nullopt, kMaxRecord).steps.empty());
    }
}

TEST_F(CheckpointRepairTest, PositionChoosesTheTemporaryFileOfItsCheckpoint) {
    const std::string five = CheckpointBytes(5, {"aaa", "bb", "c"});
    const std::string six = CheckpointBytes(6, {"bb", "c"});
    Fill(std::nullopt, {five, six});
    EXPECT_FALSE(PlanRepair(Path(), std::nullopt, kMaxRecord).obstacle.empty());
    EXPECT_TRUE(PlanRepair(Path(), std::nullopt, kMaxRecord).steps.empty());
    const RepairPlan plan = Repair(MakePosition(6, 9, 15));
    EXPECT_NE(plan.obstacle.find("MQAMtmp.1 contains records"), std::string::npos) << plan.obstacle;
    EXPECT_EQ(Files(), (std::map<std::string, std::string>{{"load.ckpt", six}, {"MQAMtmp.1", five}}));

    Fill(std::nullopt, {five});
    EXPECT_TRUE(PlanRepair(Path(), MakePosition(6, 9, 15), kMaxRecord).steps.empty());
    EXPECT_FALSE(PlanRepair(Path(), MakePosition(6, 9, 15), kMaxRecord).obstacle.empty());
}

TEST_F(CheckpointRepairTest, EarlierKeptFilesStay) {
    Fill("", {kWhole});
    WriteBytesTo(Path("load.ckpt.kept"), "earlier");
    (void)Repair(std::nullopt);
    EXPECT_EQ(ReadFileIfAny(Path("load.ckpt.kept")), "earlier");
    EXPECT_TRUE(fs::exists(Path("load.ckpt.kept2")));
}

TEST_F(CheckpointRepairTest, NoCombinationLosesTheOnlyCopyOfARecord) {
    const std::vector<std::string> shapes = {
        "",
        "\5",
        HeaderBytes(5),
        HeaderBytes(6) + kTorn,
        kWhole,
        kWhole + kTorn,
        CheckpointBytes(6, {"bb"}),
        CheckpointBytes(6, {"bb", "new"}),
        CheckpointBytes(6, {"", "aaa"}),
        CheckpointBytes(5, {"aaa"}) + LengthBytes(60) + LengthBytes(2) + "bb",
        CheckpointBytes(4, {"xx", "yy"}) + "\1"};
    const std::vector<std::optional<PositionData>> positions = {
        std::nullopt, MakePosition(5, 2, 4), MakePosition(6, 2, 15), MakePosition(6, 0, 0)};
    int changed = 0;
    for (std::size_t file = 0; file <= shapes.size(); ++file) {
        for (std::size_t one = 0; one <= shapes.size(); ++one) {
            for (std::size_t two = one; two <= shapes.size(); ++two) {
                SCOPED_TRACE(testing::Message() << file << " " << one << " " << two);
                std::vector<std::string> temporaries;
                for (const std::size_t shape : {one, two}) {
                    if (shape < shapes.size()) temporaries.push_back(shapes[shape]);
                }
                const auto& position = positions[(file + one + two) % positions.size()];
                Fill(file < shapes.size() ? std::optional(shapes[file]) : std::nullopt, temporaries);
                const std::set<std::string> before = Contents();
                const RepairPlan plan = Repair(position);
                changed += plan.steps.empty() ? 0 : 1;
                const std::set<std::string> after = Contents();
                for (const std::string& content : before) {
                    // The unfinished copy of a record is deleted together with the unfinished copy of the
                    // file.
                    const bool tornCopy = content == "torn: " + kTorn || content == "torn: \5";
                    EXPECT_TRUE(after.count(content) == 1 || tornCopy || content.empty()) << content;
                }
                if (!plan.obstacle.empty() || !position) continue;
                const std::vector<std::string> left = FindTemporaryFiles(Path());
                EXPECT_TRUE(left.empty());
                EXPECT_TRUE(DecideStart(Path(), position, ScanForStart(Path(), left, kMaxRecord), left)
                                .repairs.empty());
            }
        }
    }
    EXPECT_GT(changed, 100);
}

TEST_F(CheckpointRepairTest, CutAtEveryByteIsRepairedToItsWholeRecordsAndKeepsTheRest) {
    const std::string whole = CheckpointBytes(3, {"", "the second", "and the third record"});
    for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
        SCOPED_TRACE(cut);
        Fill(whole.substr(0, cut), {});
        const std::size_t intact = cut < 4 ? cut : cut < 12 ? 4 : cut < 30 ? 12 : cut < 58 ? 30 : 58;
        const CheckpointScan facts = ScanCheckpointFile(Path(), kMaxRecord);
        const bool isWhole = cut == 0 || (cut >= 4 && cut == intact);
        EXPECT_EQ(CheckIntegrity(facts), isWhole ? Integrity::kIntact : Integrity::kIncomplete);
        const std::string words = DescribeIntegrity(facts, kMaxRecord);
        EXPECT_NE(words.find(isWhole ? " is intact" : " is incomplete\n"), std::string::npos) << words;
        EXPECT_TRUE(Repair(std::nullopt).obstacle.empty());
        EXPECT_EQ(ReadFileIfAny(Path()), whole.substr(0, intact));
        EXPECT_EQ(ReadFileIfAny(Path("load.ckpt.torn")), whole.substr(intact, cut - intact));
    }
}

TEST_F(CheckpointRepairTest, NoFlippedBitMakesARepairTouchRecordsThatAreThere) {
    const std::vector<std::string> records = {"first record", "second one", "third", "fourth record"};
    // No single bit turns this sequence number into 0, which would be damage.
    const std::string whole = CheckpointBytes(3, records);
    int damaged = 0;
    for (std::size_t bit = 0; bit < std::size_t{42} * 8; ++bit) {
        SCOPED_TRACE(bit);
        std::string bytes = whole;
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << (bit % 8)));
        Fill(bytes, {});
        const CheckpointScan facts = ScanCheckpointFile(Path(), kMaxRecord);
        const bool inLength = (bit / 8 >= 4 && bit / 8 < 12) || (bit / 8 >= 24 && bit / 8 < 32);
        const Integrity soundness = CheckIntegrity(facts);
        if (!inLength) {
            EXPECT_EQ(soundness, Integrity::kIntact);
        }
        EXPECT_NE(soundness, Integrity::kIncomplete);
        damaged += soundness == Integrity::kDamaged ? 1 : 0;
        const RepairPlan plan = Repair(std::nullopt);
        EXPECT_EQ(plan.obstacle.empty(), soundness == Integrity::kIntact);
        EXPECT_EQ(ReadFileIfAny(Path()), bytes);
    }
    EXPECT_GT(damaged, 110);
}

}  // namespace
