// SPDX-License-Identifier: Apache-2.0

// Tests the numbered guarantees and limits of docs/hosts.md, each with a load that shows it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tests/e2e/load_site.h"
#include "tests/support/test_directory.h"

namespace {

namespace fs = std::filesystem;

// Reads the records of a checkpoint file by its layout: a 4-byte sequence number, then lengths and bytes.
std::vector<std::string> RecordsOf(const std::string& path) {
    const std::string bytes = ReadFileIfAny(path);
    std::vector<std::string> records;
    std::size_t at = 4;
    while (at + 8 <= bytes.size()) {
        std::uint64_t length = 0;
        std::memcpy(&length, bytes.data() + at, sizeof length);
        if (length > bytes.size() - at - 8) break;
        records.push_back(bytes.substr(at + 8, length));
        at += 8 + length;
    }
    return records;
}

void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

class RestartPromise : public testing::Test {
  protected:
    // Makes a load of `count` messages and runs it once with the faults.
    LoadSite& Interrupted(const std::string& name, int messages, const std::string& faults,
                          const std::string& durability = "power") {
        LoadSite& site = Fresh(name, messages);
        site.Set("--durability", durability);
        site.PlanFaults(faults);
        site.Run();
        EXPECT_EQ(site.Result().exitCode, 9) << site.Error();
        site.PlanFaults("");
        return site;
    }

    LoadSite& Fresh(const std::string& name, int messages) {
        sites_.push_back(std::make_unique<LoadSite>(folder_.Root(), name));
        sites_.back()->Put(messages);
        return *sites_.back();
    }

    TestDirectory folder_;
    std::vector<std::unique_ptr<LoadSite>> sites_;
};

// ---- guarantees

TEST_F(RestartPromise, G1_HoweverOftenItIsKilledEveryMessageIsThereOnceAndInOrder) {
    LoadSite& site = Fresh("site", 12);
    const char* const deaths[] = {"MQCMIT 2 kill before", "MQCMIT 3 kill after", "MQGET 3 kill after",
                                  "MQCMIT 4 kill before", "MQGET 1 kill before", "MQDISC 1 kill before"};
    for (const char* death : deaths) {
        site.PlanFaults(death);
        site.Run();
        ASSERT_EQ(site.Result().exitCode, 9) << death << "\n" << site.Error();
    }
    site.PlanFaults("");
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartPromise, G2_AtADeathEachMessageIsOnTheQueueInTheFileOrLoaded) {
    for (int death = 1; death <= 9; ++death) {
        for (const char* when : {"before", "after"}) {
            const std::string name = std::to_string(death) + when;
            LoadSite& site = Fresh(name, 9);
            site.PlanFaults("MQCMIT " + std::to_string(death) + " kill " + when);
            site.Start();
        }
    }
    for (const auto& site : sites_) {
        EXPECT_EQ(site->Wait().exitCode, 9) << site->Error();
        std::vector<std::string> found;
        const auto loaded = static_cast<std::size_t>(std::stoul(site->Stored("records")));
        for (std::size_t i = 0; i < loaded; ++i)
            found.push_back(site->Messages()[i]);
        ASSERT_EQ(ReadFileIfAny(site->Target()).substr(0, site->Lines(loaded).size()), site->Lines(loaded));
        for (const std::string& record : RecordsOf(site->CheckpointFile()))
            found.push_back(record);
        // The queue delivers the oldest message first, so the newest ones are left. The first message that is
        // left may be saved as well.
        for (std::size_t i = 0; i + static_cast<std::size_t>(site->Depth()) < site->Messages().size(); ++i) {
            EXPECT_NE(std::find(found.begin(), found.end(), site->Messages()[i]), found.end())
                << site->Name() << ": message " << i + 1 << " is nowhere";
        }
    }
}

TEST_F(RestartPromise, G3_NoStepByHandIsNeededBetweenADeathAndTheSameCommand) {
    for (const char* death : {"MQCONNX 1 kill after", "MQOPEN 1 kill after", "MQCMIT 1 kill before",
                              "MQCMIT 5 kill after", "MQCLOSE 1 kill after", "MQDISC 1 kill after"}) {
        LoadSite& site = Fresh("site" + std::to_string(sites_.size()), 7);
        site.PlanFaults(death);
        site.Start();
    }
    for (const auto& site : sites_) {
        EXPECT_EQ(site->Wait().exitCode, 9) << site->Error();
        site->PlanFaults("");
    }
    RunAll(sites_);
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
}

TEST_F(RestartPromise, G4_FilesThatDoNotFitAreRefusedBeforeAnythingIsChanged) {
    LoadSite& site = Interrupted("site", 9, "MQCMIT 6 kill before", "process");
    const std::string checkpoint = ReadFileIfAny(site.CheckpointFile());
    const std::string restart = ReadFileIfAny(site.RestartFile());
    const std::string target = ReadFileIfAny(site.Target());
    const int depth = site.Depth();
    std::string older = checkpoint;
    older[0] = static_cast<char>(older[0] - 3);
    const std::string wrong[] = {older, checkpoint.substr(0, 4) + std::string(40, '\xff')};
    for (const std::string& bytes : wrong) {
        WriteFile(site.CheckpointFile(), bytes);
        EXPECT_EQ(site.Run().exitCode, 1) << site.Error();
        EXPECT_TRUE(Contains(site.Error(), site.CheckpointFile())) << site.Error();
        EXPECT_EQ(ReadFileIfAny(site.CheckpointFile()), bytes);
        EXPECT_EQ(ReadFileIfAny(site.RestartFile()), restart);
        EXPECT_EQ(ReadFileIfAny(site.Target()), target);
        EXPECT_EQ(site.Depth(), depth);
    }
    WriteFile(site.CheckpointFile(), checkpoint);
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartPromise, G5_AnInputThatOnlySeemsToEndIsNotDone) {
    // Every attempt finds get inhibited, which ends the input like an empty queue.
    LoadSite& site = Fresh("site", 5);
    site.PlanFaults("MQGET 1 fail 2 2016");
    EXPECT_EQ(site.Run().exitCode, 8) << site.Error();
    EXPECT_EQ(site.Stored("phase"), "loading");
    EXPECT_EQ(site.Depth(), 5);
    site.PlanFaults("");
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartPromise, G6_TheSameCommandAfterALoadThatIsDoneNeitherLoadsNorDestroys) {
    LoadSite& site = Fresh("site", 5);
    site.Run();
    ASSERT_TRUE(site.IsDone());
    site.Run({"--force"});
    EXPECT_TRUE(site.IsDone(11));
    EXPECT_TRUE(Contains(site.Error(), "complete")) << site.Error();
}

// ---- rules that no trail shows

TEST_F(RestartPromise, H14_ACheckpointPendingAtCloseIsGoneOnFrom) {
    ASSERT_TRUE(RunningProgram::PrepareInterrupts());
    LoadSite& site = Fresh("site", 8);
    site.Set("--rwait", "600");
    site.Set("--checkpoint-every", "100");
    RunningProgram& program = site.Start({"--verbose"});
    ASSERT_TRUE(program.WaitForError("checkpoint 1 after 0 records"));
    // The request takes effect when the Read returns with the next message.
    ASSERT_TRUE(program.Interrupt());
    ASSERT_TRUE(program.WaitForError("finishing"));
    site.Put(1);
    ASSERT_EQ(site.Wait().exitCode, 5) << site.Error();
    const int stored = std::stoi(site.Stored("records"));
    ASSERT_GT(stored, 0);
    // The position is that of the checkpoint that Close left pending. The file still belongs to the previous
    // one.
    EXPECT_EQ(site.Stored("position").substr(0, 8), "02000000");
    EXPECT_EQ(ReadFileIfAny(site.CheckpointFile()).substr(0, 4), std::string("\1\0\0\0", 4));
    EXPECT_EQ(RecordsOf(site.CheckpointFile()).size(), static_cast<std::size_t>(stored));
    site.Set("--rwait", "1");
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartPromise, H18_AnotherLoadOnTheSameCheckpointFileWaitsOutsideOrIsRefused) {
    LoadSite& first = Fresh("first", 4);
    LoadSite& second = Fresh("second", 4);
    second.Set("--ckfile", first.CheckpointFile());
    first.Set("--rwait", "600");
    RunningProgram& program = first.Start({"--verbose"});
    ASSERT_TRUE(program.WaitForError("checkpoint 2 after 3 records"));
    EXPECT_EQ(second.Run().exitCode, 1);
    EXPECT_TRUE(ReportsHolder(second.Error(), first.CheckpointLock()));
    EXPECT_EQ(second.Depth(), 4);
}

TEST_F(RestartPromise, H19_TheModuleFlushesTheCheckpointFileAndDoesNotSyncIt) {
    const std::string module = ReadFileIfAny(MODULE_LIBRARY);
    ASSERT_TRUE(Contains(module, "fflush"));
    for (const char* call : {"fsync", "fdatasync", "sync_file_range", "_commit", "FlushFileBuffers"})
        EXPECT_FALSE(Contains(module, call + std::string(1, '\0'))) << call;
}

// ---- limits

TEST_F(RestartPromise, L7_AnEmptyMessageLeavesNoRecordAndIsTakenOffTheQueue) {
    LoadSite& site = Fresh("site", 2);
    site.Put("");
    site.Put(2);
    site.Run();
    EXPECT_EQ(site.Result().exitCode, 0) << site.Error();
    EXPECT_EQ(site.Stored("records"), "4");
    EXPECT_EQ(site.Depth(), 0);
    EXPECT_EQ(site.Stored("lives"), "3") << "two with records, and one that found nothing";
}

TEST_F(RestartPromise, L8_MessagesThatTheQueueManagerLosesAreNotMissed) {
    LoadSite& site = Interrupted("site", 6, "MQGET 5 kill after");
    const int depth = site.Depth();
    ASSERT_GT(depth, 0);
    // This deletes the messages, as if they had expired.
    for (const auto& entry : fs::directory_iterator(site.Path("spool/QM1/Q1"))) {
        if (entry.is_regular_file() && !entry.path().filename().string().starts_with("."))
            fs::remove(entry.path());
    }
    EXPECT_EQ(site.Run().exitCode, 0) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines(static_cast<std::size_t>(6 - depth)));
}

TEST_F(RestartPromise, L9_AMessageThatFailsEveryAttemptHoldsTheLoadUpAndIsNotLost) {
    LoadSite& site = Fresh("site", 4);
    site.Put(std::string(300, 'x'));
    site.Put(2);
    site.Set("--max-record", "200");
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(site.Run().exitCode, 2) << site.Error();
        EXPECT_EQ(site.Depth(), 3);
    }
    site.Set("--max-record", "400");
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartPromise, L10_TheFileOfAnUnfinishedLoadIsKnownByWhatItHoldsNotByAName) {
    LoadSite& first = Interrupted("first", 9, "MQCMIT 6 kill before");
    LoadSite& second = Fresh("second", 3);
    second.Set("--ckfile", first.CheckpointFile());
    EXPECT_EQ(second.Run().exitCode, 1);
    EXPECT_TRUE(Contains(second.Error(), "but no position is stored: the file belongs to another load"))
        << second.Error();
    EXPECT_EQ(second.Depth(), 3);
    first.Run();
    EXPECT_TRUE(first.IsDone());
}

TEST_F(RestartPromise, L11_ABackupOfAllFilesTogetherCannotBeToldFromTheFilesThemselves) {
    LoadSite& site = Interrupted("site", 9, "MQCMIT 5 kill before");
    fs::create_directory(site.Path("backup"));
    for (const std::string& file :
         {site.CheckpointFile(), site.CheckpointFile() + ".journal", site.RestartFile(), site.Target()})
        fs::copy_file(file, fs::path(site.Path("backup")) / fs::path(file).filename());
    site.PlanFaults("MQCMIT 3 kill after");
    ASSERT_EQ(site.Run().exitCode, 9) << site.Error();
    site.PlanFaults("");
    const int depth = site.Depth();
    for (const std::string& file :
         {site.CheckpointFile(), site.CheckpointFile() + ".journal", site.RestartFile(), site.Target()}) {
        WriteFile(file, ReadFileIfAny((fs::path(site.Path("backup")) / fs::path(file).filename()).string()));
    }
    EXPECT_EQ(site.Run().exitCode, 0) << site.Error();
    EXPECT_LT(std::stoi(site.Stored("records")), 9);
    EXPECT_GT(depth, 0);
}

// A power failure can leave a file with its length but without its last bytes. The records in them are lost, which
// must not look like a load that is done.
TEST_F(RestartPromise, G4_RecordsThatTurnedToZerosAreMissedByVerifyAndByTheLoad) {
    LoadSite site(folder_.Root(), "zeros");
    site.Put(10);
    site.PlanFaults("MQCMIT 7 kill after");
    site.Set("--checkpoint-every", "100");
    site.LeaveOutJournal();
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    site.PlanFaults("");
    const std::string whole = ReadFileIfAny(site.CheckpointFile());
    std::size_t third = 4;
    for (int record = 0; record < 3; ++record)
        third += 8 + site.Messages()[static_cast<std::size_t>(record)].size();
    ASSERT_GT(whole.size(), third);
    WriteBytesTo(site.CheckpointFile(), whole.substr(0, third) + std::string(whole.size() - third, '\0'));

    const ProgramResult verified =
        RunProgram(MQAM_PROGRAM, {"checkpoint", "verify", site.CheckpointFile()}, site.Folder());
    EXPECT_EQ(verified.exitCode, 10);
    EXPECT_TRUE(Contains(verified.standardOutput, " is damaged")) << verified.standardOutput;
    EXPECT_TRUE(Contains(verified.standardOutput, ": 3 complete records")) << verified.standardOutput;
    EXPECT_TRUE(Contains(verified.standardOutput, ": zeros")) << verified.standardOutput;
    EXPECT_TRUE(Contains(verified.standardOutput, "are lost (4 if they were as long as"))
        << verified.standardOutput;

    EXPECT_EQ(site.Run().exitCode, 1);
    EXPECT_TRUE(Contains(site.Error(), "ck is damaged: zeros take the place of records from offset " +
                                           std::to_string(third) +
                                           " to the end; 3 records are intact, at most "))
        << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), "");
    EXPECT_EQ(site.Depth(), 3);
    WriteBytesTo(site.CheckpointFile(), whole);
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartPromise, TargetAndExportOfALoadThatWasKilledHaveEveryMessageOnce) {
    LoadSite site(folder_.Root(), "export");
    site.Put(10);
    site.PlanFaults("MQCMIT 8 kill after");
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    const ProgramResult exported =
        RunProgram(MQAM_PROGRAM,
                   {"checkpoint", "export", site.CheckpointFile(), "--restart-file", site.RestartFile(),
                    "--to", site.Path("saved")},
                   site.Folder());
    EXPECT_EQ(exported.exitCode, 0) << exported.standardError;
    const std::string target = ReadFileIfAny(site.Target());
    const auto stored = static_cast<std::size_t>(std::stoi(site.Stored("target-length")));
    EXPECT_EQ(target.substr(0, stored) + ReadFileIfAny(site.Path("saved")), site.Lines(8));
    EXPECT_EQ(site.Depth(), 2);
}

TEST_F(RestartPromise, L12_AFlippedBitIsNoticedInTheFirstRecordAndInALengthAlone) {
    LoadSite& site = Interrupted("site", 9, "MQCMIT 6 kill before", "process");
    const std::string checkpoint = ReadFileIfAny(site.CheckpointFile());
    const std::vector<std::string> records = RecordsOf(site.CheckpointFile());
    ASSERT_GE(records.size(), 2U);

    std::string damaged = checkpoint;
    damaged[4 + 8] ^= 1;
    WriteFile(site.CheckpointFile(), damaged);
    EXPECT_EQ(site.Run().exitCode, 1);
    EXPECT_TRUE(Contains(site.Error(), "the first record of the checkpoint file is not the last one loaded"))
        << site.Error();

    damaged = checkpoint;
    damaged[damaged.size() - 1] ^= 1;
    WriteFile(site.CheckpointFile(), damaged);
    EXPECT_EQ(site.Run().exitCode, 0) << site.Error();
    const std::string target = ReadFileIfAny(site.Target());
    EXPECT_NE(target, site.Lines());
    EXPECT_EQ(site.Depth(), 0);
}

TEST_F(RestartPromise, L13_WhatAnotherLoadAddsToTheTargetOfAnUnfinishedOneIsCutOff) {
    LoadSite& first = Interrupted("first", 6, "MQCMIT 5 kill before");
    LoadSite& second = Fresh("second", 2);
    second.Set("--to", first.Target());
    EXPECT_EQ(second.Run({"--append"}).exitCode, 0) << second.Error();
    EXPECT_TRUE(Contains(ReadFileIfAny(first.Target()), second.Lines()));
    first.Run();
    EXPECT_TRUE(first.IsDone());
}

}  // namespace
