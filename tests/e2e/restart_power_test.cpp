// SPDX-License-Identifier: Apache-2.0

// Tests that a load with a journal continues whatever a loss of power left of its checkpoint file, and that nothing of
// the journal is left at the end.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/load_site.h"
#include "tests/support/files.h"

namespace fs = std::filesystem;

namespace {

class RestartAfterPower : public LoadSites {};

// What a checkpoint file that was `whole` can be after a loss of power. "missing" stands for no file.
std::vector<std::string> Remains(const std::string& whole) {
    std::string zeroTail = whole;
    std::fill(zeroTail.begin() + 20, zeroTail.end(), '\0');
    std::string zeroBody = whole;
    std::fill(zeroBody.end() - 5, zeroBody.end(), '\0');
    const std::string older = "\1" + whole.substr(1);
    return {"missing",
            "",
            whole.substr(0, 2),
            whole.substr(0, 4),
            whole.substr(0, 9),
            whole.substr(0, whole.size() - 3),
            std::string(whole.size(), '\0'),
            zeroTail,
            zeroBody,
            older,
            older.substr(0, 40),
            whole + std::string("\x20\0\0\0\0\0\0\0torn", 12),
            whole + std::string("\4\0\0\0\0\0\0\0\0\0\0\0", 12)};
}

TEST_F(RestartAfterPower, TheLoadContinuesWhateverIsLeftOfTheCheckpointFile) {
    const LoadSite& first = AddUnfinished("whole");
    const std::string whole = ReadFile(first.CheckpointFile());
    const std::size_t remains = Remains(whole).size();
    for (std::size_t i = 0; i < remains; ++i) {
        LoadSite& site = Add("site" + std::to_string(i), 10, "MQCMIT 5 kill after");
        site.Start();
    }
    for (std::size_t i = 0; i < remains; ++i) {
        LoadSite& site = *sites_[i + 1];
        EXPECT_EQ(site.Wait().exitCode, 9) << site.Error();
        const std::string remain = Remains(ReadFile(site.CheckpointFile()))[i];
        fs::remove(site.CheckpointFile());
        if (remain != "missing") WriteFile(site.CheckpointFile(), remain);
        // A rewrite was interrupted too, and its file has no more than a part of a record.
        if (i % 2 == 0) WriteFile(site.Path("MQAMtmp.4711"), remain.substr(0, 20));
    }
    RunAllAgain();
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
}

TEST_F(RestartAfterPower, TheLoadContinuesFromAFileThatHasNeverBeenCommitted) {
    for (const char* remain : {"missing", "", "\1", "zeros", "torn"}) {
        LoadSite& site = Add(std::string("site") + std::to_string(sites_.size()), 5, "MQCMIT 1 kill before");
        // With a fault before the first commit the journal is still empty.
        EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
        fs::remove(site.CheckpointFile());
        const std::string what = remain;
        if (what == "zeros") {
            WriteFile(site.CheckpointFile(), std::string(40, '\0'));
        } else if (what == "torn") {
            WriteFile(site.CheckpointFile(), std::string("\1\0\0\0\x09\0\0\0\0\0\0\0mess", 16));
        } else if (what != "missing") {
            WriteFile(site.CheckpointFile(), what);
        }
    }
    RunAllAgain();
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
}

TEST_F(RestartAfterPower, DurabilityCanChangeBetweenTwoAttempts) {
    LoadSite& toPower = AddUnfinished("to-power", "process");
    LoadSite& toProcess = AddUnfinished("to-process", "power");
    EXPECT_FALSE(fs::exists(toPower.CheckpointFile() + ".journal"));
    EXPECT_TRUE(fs::exists(toProcess.CheckpointFile() + ".journal"));
    const std::string whole = ReadFile(toProcess.CheckpointFile());
    toPower.Set("--durability", "power");
    toPower.PlanFaults("MQGET 1 kill before");
    EXPECT_EQ(toPower.Run().exitCode, 9) << toPower.Error();
    // What the first attempt saved is in the journal before anything more is committed.
    fs::remove(toPower.CheckpointFile());
    // The checkpoint file is restored before the journal is deleted.
    WriteFile(toProcess.CheckpointFile(), "");
    toProcess.Set("--durability", "process");
    toProcess.PlanFaults("MQGET 1 kill before");
    EXPECT_EQ(toProcess.Run().exitCode, 9) << toProcess.Error();
    EXPECT_FALSE(fs::exists(toProcess.CheckpointFile() + ".journal"));
    RunAllAgain();
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
}

TEST_F(RestartAfterPower, ADamagedJournalIsRefusedWithAWayOut) {
    LoadSite& site = AddUnfinished("damaged");
    const std::string journal = site.CheckpointFile() + ".journal";
    std::string bytes = ReadFile(journal);
    bytes[60] ^= 1;
    WriteFile(journal, bytes);
    EXPECT_EQ(site.Run().exitCode, 1);
    EXPECT_TRUE(Contains(site.Error(), "the journal of the checkpoint file is damaged: " + journal))
        << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "delete the journal and run the same command again")) << site.Error();
    EXPECT_EQ(ReadFile(journal), bytes);
    EXPECT_EQ(site.Depth(), 5);
    fs::remove(journal);
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartAfterPower, ANewLoadDoesNotOverwriteTheJournalOfAnother) {
    LoadSite& site = AddUnfinished("stray");
    fs::remove(site.CheckpointFile());
    fs::remove(site.RestartFile());
    fs::remove(site.Target());
    EXPECT_EQ(site.Run().exitCode, 1);
    EXPECT_TRUE(Contains(site.Error(), ".journal contains records, possibly the only copies"))
        << site.Error();
    EXPECT_EQ(site.Depth(), 5);
}

TEST_F(RestartAfterPower, DurabilityIsOneOfTwoWords) {
    LoadSite& site = Add("word", 1);
    EXPECT_EQ(site.Run({"--durability", "disk"}).exitCode, 1);
    EXPECT_TRUE(Contains(site.Error(), "--durability")) << site.Error();
    EXPECT_EQ(site.Files(), "");
}

}  // namespace
