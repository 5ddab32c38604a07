// SPDX-License-Identifier: Apache-2.0
#include "mqam/checkpoint/start_decision.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "mqam/checkpoint/repair.h"
#include "tests/support/checkpoint_bytes.h"
#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

namespace fs = std::filesystem;
using Kind = Repair::Kind;

// Describes a step as "cut 31", "delete MQAMtmp.1" or "rename MQAMtmp.1".
std::string Words(const std::vector<Repair>& repairs) {
    std::string words;
    for (const Repair& repair : repairs) {
        if (!words.empty()) words += ", ";
        const std::string name = fs::path(repair.path).filename().string();
        if (repair.kind == Kind::kCutTornTail) words += "cut " + std::to_string(repair.bytes);
        if (repair.kind == Kind::kDeleteTemporary) words += "delete " + name;
        if (repair.kind == Kind::kRenameTemporary) words += "rename " + name;
    }
    return words;
}

std::string Words(const StartDecision& decision) {
    switch (decision.action) {
        case StartAction::kBegin: return "begin";
        case StartAction::kResume: return "go on";
        case StartAction::kRefuse: return "refuse";
        case StartAction::kReplay: break;
    }
    return "replay " + std::to_string(decision.position.CkPtOffset) +
           (decision.firstRecordIsRepeat ? " repeat" : "");
}

using TemporaryBytes = std::vector<std::string>;

class RestartDecisionTest : public testing::Test {
  protected:
    [[nodiscard]] std::string Path(const std::string& name = "load.ckpt") const { return folder_.Path(name); }

    // Makes the decision of a load on files with these bytes. The temporary files are MQAMtmp.1, MQAMtmp.2
    // ...
    StartDecision Decide(const std::optional<PositionData>& stored, const std::optional<std::string>& file,
                         const TemporaryBytes& temporaries = {}) const {
        for (const auto& entry : fs::directory_iterator(folder_.Root()))
            fs::remove(entry.path());
        if (file) WriteBytesTo(Path(), *file);
        for (std::size_t i = 0; i < temporaries.size(); ++i)
            WriteBytesTo(Path("MQAMtmp." + std::to_string(i + 1)), temporaries[i]);
        const std::vector<std::string> found = FindTemporaryFiles(Path());
        const CheckpointScan facts = ScanForStart(Path(), found, 1000);
        StartDecision decision = DecideStart(Path(), stored, facts, found);
        EXPECT_NE(decision.message, "");
        EXPECT_TRUE(decision.action != StartAction::kRefuse || decision.repairs.empty());
        return decision;
    }

    TestDirectory folder_;
};

const std::string kTornTail = LengthBytes(50) + "torn";
const std::string kTwo = CheckpointBytes(5, {"aaa", "bb"});  // records at 4 and 15, ends at 25
const std::string kImpossible = kTwo + LengthBytes(1001) + "x";
const std::string kHidden = kTwo + LengthBytes(60) + "ccc" + LengthBytes(4) + "dddd";

struct DecisionRow {
    const char* name;
    std::optional<PositionData> stored;
    std::optional<std::string> file;
    TemporaryBytes temporaries;
    const char* decision;
    const char* repairs;
};

TEST_F(RestartDecisionTest, EveryCombinationOfPositionFileAndTemporaryFiles) {
    const std::optional<std::string> missing;
    const std::optional<PositionData> none;
    const PositionData opened = MakePosition(1, 0, 0);
    const PositionData five = MakePosition(5, 8, 77);
    const std::string copy = CheckpointBytes(6, {"bb"});
    const std::string whole = CheckpointBytes(5, {"xxx", "yyy"});
    const DecisionRow rows[] = {
        {"nothing stored, no file", none, missing, {}, "begin", ""},
        {"nothing stored, empty file", none, "", {}, "begin", ""},
        {"nothing stored, torn header", none, "\1\2", {}, "begin", ""},
        {"nothing stored, header alone", none, HeaderBytes(9), {}, "begin", ""},
        {"nothing stored, torn record", none, HeaderBytes(9) + kTornTail, {}, "begin", "cut 4"},
        {"nothing stored, records", none, kTwo, {}, "refuse", ""},
        {"nothing stored, impossible length", none, HeaderBytes(9) + LengthBytes(1001), {}, "refuse", ""},
        {"nothing stored, no file, temporary", none, missing, {whole}, "refuse", ""},
        {"nothing stored, no file, empty temporary", none, missing, {""}, "refuse", ""},
        {"nothing stored, no file, two temporaries", none, missing, {whole, ""}, "refuse", ""},
        {"nothing stored, empty file, temporary", none, "", {whole}, "refuse", ""},
        {"nothing stored, header, temporary", none, HeaderBytes(9), {whole}, "refuse", ""},
        {"nothing stored, records, temporary", none, kTwo, {copy}, "refuse", ""},

        {"stored, no file", five, missing, {}, "refuse", ""},
        {"stored, no file, whole temporary", five, missing, {whole}, "replay 77 repeat", "rename MQAMtmp.1"},
        {"nothing read before it, no file, whole temporary",
         MakePosition(5, 0, 0),
         missing,
         {whole},
         "replay 0",
         "rename MQAMtmp.1"},
        {"stored, no file, temporary of the checkpoint before",
         MakePosition(6, 8, 15),
         missing,
         {whole},
         "refuse",
         ""},
        {"stored, no file, temporary of a later checkpoint",
         MakePosition(4, 8, 15),
         missing,
         {whole},
         "refuse",
         ""},
        {"stored, no file, torn temporary", five, missing, {whole + "x"}, "refuse", ""},
        {"stored, no file, temporary with its header alone", five, missing, {HeaderBytes(5)}, "refuse", ""},
        {"stored, no file, torn header", five, missing, {"\5"}, "refuse", ""},
        {"stored, no file, empty temporary", five, missing, {""}, "refuse", ""},
        {"stored, no file, two temporaries", five, missing, {whole, whole}, "refuse", ""},

        {"stored, empty file", five, "", {}, "go on", ""},
        {"stored, torn header", five, HeaderBytes(5).substr(0, 3), {}, "go on", ""},
        {"stored, header of it", five, HeaderBytes(5), {}, "go on", ""},
        {"stored, header of it, torn record", five, HeaderBytes(5) + kTornTail, {}, "go on", "cut 4"},
        {"stored, header of the checkpoint before", five, HeaderBytes(4), {}, "refuse", ""},
        {"stored, header of a later checkpoint", five, HeaderBytes(6), {}, "refuse", ""},
        {"nothing read since open, any header", opened, HeaderBytes(57), {}, "go on", ""},
        {"nothing read since open, empty file", opened, "", {}, "go on", ""},
        {"stored, header of zeros", five, HeaderBytes(0), {}, "refuse", ""},
        {"nothing read since open, header of zeros", opened, HeaderBytes(0), {}, "refuse", ""},
        {"nothing stored, header of zeros", none, HeaderBytes(0), {}, "refuse", ""},
        {"stored, records, then zeros", five, kTwo + LengthBytes(0), {}, "refuse", ""},
        {"checkpoint before, records, then zeros",
         MakePosition(6, 9, 15),
         kTwo + LengthBytes(0),
         {},
         "refuse",
         ""},
        {"stored, no file, temporary that ends in zeros",
         five,
         missing,
         {whole + LengthBytes(0)},
         "refuse",
         ""},
        {"stored, header, impossible length", five, HeaderBytes(5) + LengthBytes(1001), {}, "refuse", ""},
        {"stored, empty file, temporary", five, "", {whole}, "refuse", ""},
        {"stored, torn header, temporary", five, "\5", {whole}, "refuse", ""},
        {"stored, header of it, temporary", five, HeaderBytes(5), {whole}, "refuse", ""},
        {"stored, header of it, empty temporary", five, HeaderBytes(5), {""}, "refuse", ""},

        {"records of it", five, kTwo, {}, "replay 77 repeat", ""},
        {"records of it, nothing read before it", MakePosition(5, 0, 0), kTwo, {}, "replay 0", ""},
        {"records of it, torn tail", five, kTwo + kTornTail, {}, "replay 77 repeat", "cut 25"},
        {"records of it, torn length",
         five,
         kTwo + LengthBytes(3).substr(0, 7),
         {},
         "replay 77 repeat",
         "cut 25"},
        {"records of it, impossible length", five, kImpossible, {}, "refuse", ""},
        {"records of it, records after a damaged length", five, kHidden, {}, "refuse", ""},
        {"records of it, temporary", five, kTwo, {copy}, "replay 77 repeat", "delete MQAMtmp.1"},
        {"records of it, two temporaries and a torn tail",
         five,
         kTwo + kTornTail,
         {copy, ""},
         "replay 77 repeat",
         "delete MQAMtmp.1, delete MQAMtmp.2, cut 25"},

        {"checkpoint before, first record", MakePosition(6, 8, 4), kTwo, {}, "replay 4 repeat", ""},
        {"checkpoint before, last record", MakePosition(6, 9, 15), kTwo, {}, "replay 15 repeat", ""},
        {"checkpoint before, last record, torn tail",
         MakePosition(6, 9, 15),
         kTwo + kTornTail,
         {},
         "replay 15 repeat",
         "cut 25"},
        {"checkpoint before, end of the file", MakePosition(6, 9, 25), kTwo, {}, "replay 15 repeat", ""},
        {"checkpoint before, nothing read before it", MakePosition(6, 0, 15), kTwo, {}, "refuse", ""},
        {"checkpoint before, header", MakePosition(6, 9, 0), kTwo, {}, "refuse", ""},
        {"checkpoint before, middle of a record", MakePosition(6, 9, 16), kTwo, {}, "refuse", ""},
        {"checkpoint before, beyond the file", MakePosition(6, 9, 26), kTwo, {}, "refuse", ""},
        {"checkpoint before, negative offset", MakePosition(6, 9, -1), kTwo, {}, "refuse", ""},
        {"checkpoint before, temporary",
         MakePosition(6, 9, 15),
         kTwo,
         {copy},
         "replay 15 repeat",
         "delete MQAMtmp.1"},
        {"file of a later checkpoint", MakePosition(4, 8, 15), kTwo, {}, "refuse", ""},
        {"file of a later checkpoint, temporary", MakePosition(4, 8, 15), kTwo, {copy}, "refuse", ""},
        {"file of a much older checkpoint", MakePosition(7, 8, 15), kTwo, {}, "refuse", ""},
        {"largest distance up",
         MakePosition(INT32_MIN, 8, 15),
         CheckpointBytes(INT32_MAX, {"a"}),
         {},
         "refuse",
         ""},
        {"largest distance down",
         MakePosition(INT32_MAX, 8, 15),
         CheckpointBytes(INT32_MIN, {"a"}),
         {},
         "refuse",
         ""},
    };
    for (const DecisionRow& row : rows) {
        SCOPED_TRACE(row.name);
        const StartDecision decision = Decide(row.stored, row.file, row.temporaries);
        EXPECT_EQ(Words(decision), row.decision) << decision.message;
        EXPECT_EQ(Words(decision.repairs), row.repairs);
    }
}

TEST_F(RestartDecisionTest, UnreadableFileIsRefusedWithTheSystemsWords) {
    CheckpointScan facts;
    facts.path = "load.ckpt";
    facts.shape = CheckpointShape::kUnreadable;
    facts.error = "Permission denied";
    for (const auto& stored : {std::optional<PositionData>(), std::optional(MakePosition(5, 8, 77))}) {
        const StartDecision decision = DecideStart("load.ckpt", stored, facts, {});
        EXPECT_EQ(decision.action, StartAction::kRefuse);
        EXPECT_EQ(
            decision.message,
            "load.ckpt cannot be read: Permission denied; make it readable and run the same command again");
        EXPECT_TRUE(decision.isTransient);
    }
}

TEST_F(RestartDecisionTest, TheMessageCountsTheRecordsToReplay) {
    const std::string after = "the load resumes after checkpoint 5: " + Path() + " ";
    EXPECT_EQ(Decide(MakePosition(5, 8, 0), CheckpointBytes(5, {"a"})).message,
              after + "returns the last record loaded, to be compared, then the queue is read");
    EXPECT_EQ(
        Decide(MakePosition(5, 8, 0), CheckpointBytes(5, {"a", "b"})).message,
        after +
            "returns the last record loaded, to be compared, and replays 1 record after it, then the queue "
            "is read");
    EXPECT_EQ(Decide(MakePosition(5, 0, 0), CheckpointBytes(5, {"a", "b"})).message,
              after + "replays 2 records, then the queue is read");
    EXPECT_EQ(Decide(MakePosition(5, 8, 0), "").message,
              after + "has no record to replay, so the queue is read immediately");
}

TEST_F(RestartDecisionTest, DamageIsReportedWithItsOffsets) {
    const auto expectDamage = [&](const std::string& bytes, const std::string& part) {
        const std::string message = Decide(MakePosition(5, 8, 0), bytes).message;
        EXPECT_NE(message.find(Path() + " is damaged: " + part + "; keep a copy"), std::string::npos)
            << message << "\n"
            << part;
    };
    expectDamage(
        kImpossible,
        "the record length at offset 25 is larger than any record (--max-record); 2 records are intact, at "
        "most 1 record is lost");
    expectDamage(
        kHidden,
        "the record length at offset 25 leads past the end of the file, but complete records are found from offset "
        "36 to its end; 3 records are intact, at most 1 record is lost");
    expectDamage(
        kTwo + LengthBytes(3 ^ 64) + "ccc" + LengthBytes(4) + "dddd",
        "one bit of the record length at offset 25 seems to be wrong; with it corrected, complete records would "
        "lead to the end of the file; 3 records are intact, at most 1 record is lost");
    expectDamage(kTwo + LengthBytes(0) + "x",
                 "the record length at offset 25 is 0; 2 records are intact, at most 1 record is lost");
    expectDamage(
        kTwo + std::string(84, '\0'),
        "zeros take the place of records from offset 25 to the end; 2 records are intact, at most 9 records "
        "are lost (8 if they were as long as the intact ones)");
    expectDamage(
        kTwo + std::string(84, '\xFF') + LengthBytes(4) + "dddd",
        "bytes FF take the place of records from offset 25 to offset 109, but complete records are found "
        "from offset 109 to its end; 3 records are intact, at most 9 records are lost (8 if they were as "
        "long as the intact ones)");
    expectDamage(HeaderBytes(0), "its sequence number is 0, which no checkpoint has");
}

TEST_F(RestartDecisionTest, RenameRepairPutsTheTemporaryFileInPlaceOnlyWhereThereIsNone) {
    WriteBytesTo(Path("MQAMtmp.1"), kTwo);
    WriteBytesTo(Path(), "");
    const Repair repair = {Kind::kRenameTemporary, Path("MQAMtmp.1")};
    EXPECT_NE(MakeRepair(Path(), repair).Error(), "");
    EXPECT_TRUE(fs::exists(Path("MQAMtmp.1")));
    fs::remove(Path());
    EXPECT_EQ(MakeRepair(Path(), repair).Error(), "");
    EXPECT_EQ(ReadFileIfAny(Path()), kTwo);
    EXPECT_FALSE(fs::exists(Path("MQAMtmp.1")));
}

TEST_F(RestartDecisionTest, DeleteRepairKeepsATemporaryFileWithRecordsOfItsOwn) {
    WriteBytesTo(Path(), kTwo);
    const Repair repair = {Kind::kDeleteTemporary, Path("MQAMtmp.1")};
    WriteBytesTo(Path("MQAMtmp.1"), CheckpointBytes(6, {"bb", "other"}));
    const Status refused = MakeRepair(Path(), repair);
    EXPECT_EQ(refused.Code(), StatusCode::kRefused);
    EXPECT_NE(refused.Error().find("contains records that"), std::string::npos) << refused.Error();
    EXPECT_TRUE(fs::exists(Path("MQAMtmp.1")));
    WriteBytesTo(Path("MQAMtmp.1"), CheckpointBytes(6, {"bb"}));
    EXPECT_EQ(MakeRepair(Path(), repair).Error(), "");
    EXPECT_FALSE(fs::exists(Path("MQAMtmp.1")));
    EXPECT_EQ(MakeRepair(Path(), repair).Error(), "");
    EXPECT_EQ(ReadFileIfAny(Path()), kTwo);
}

TEST_F(RestartDecisionTest, CutRepairCutsOnlyAfterTheLastCompleteRecord) {
    WriteBytesTo(Path(), kTwo + kTornTail);
    const Status refused = MakeRepair(Path(), {Kind::kCutTornTail, Path(), 15});
    EXPECT_EQ(refused.Code(), StatusCode::kRefused);
    EXPECT_EQ(refused.Error(), Path() + " has changed in the meantime and is not truncated");
    EXPECT_EQ(ReadFileIfAny(Path()), kTwo + kTornTail);
    EXPECT_EQ(MakeRepair(Path(), {Kind::kCutTornTail, Path(), 25}).Error(), "");
    EXPECT_EQ(ReadFileIfAny(Path()), kTwo);
    WriteBytesTo(Path(), kHidden);
    EXPECT_FALSE(MakeRepair(Path(), {Kind::kCutTornTail, Path(), 25}).IsOk());
    EXPECT_EQ(ReadFileIfAny(Path()), kHidden);
}

TEST_F(RestartDecisionTest, RepairsAreDescribed) {
    EXPECT_EQ(DescribeRepair("load.ckpt", {Kind::kRenameTemporary, "MQAMtmp.4711"}),
              "rename MQAMtmp.4711 to load.ckpt (a rewrite was interrupted after it deleted the checkpoint "
              "file)");
    EXPECT_EQ(DescribeRepair("load.ckpt", {Kind::kDeleteTemporary, "MQAMtmp.4711"}),
              "delete MQAMtmp.4711 (a rewrite was interrupted; its records are in the checkpoint file)");
    EXPECT_EQ(DescribeRepair("load.ckpt", {Kind::kCutTornTail, "load.ckpt", 25}),
              "truncate load.ckpt to 25 bytes (an incomplete record was never committed: it is still on the "
              "queue)");
}

}  // namespace
