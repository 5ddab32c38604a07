// SPDX-License-Identifier: Apache-2.0

// Loads whose checkpoint file is damaged or gone after a crash, and that continue without what is lost.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/load_site.h"
#include "tests/support/checkpoint_bytes.h"
#include "tests/support/files.h"

namespace {

namespace fs = std::filesystem;

// 6 of 10 records are stored; the checkpoint file has the sixth, the seventh and the eighth.
class AcceptedLoss : public LoadSites {
  protected:
    LoadSite& AddKilled(const std::string& name) {
        LoadSite& site = Add(name, 10, "MQCMIT 8 kill after");
        site.LeaveOutJournal();
        EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
        EXPECT_EQ(site.Stored("records"), "6");
        EXPECT_EQ(ReadFileIfAny(site.CheckpointFile()), CheckpointBytes(3, Saved(site)));
        site.PlanFaults("");
        return site;
    }

    static std::vector<std::string> Saved(const LoadSite& site) {
        const std::vector<std::string>& messages = site.Messages();
        return {messages[5], messages[6], messages[7]};
    }

    // The lines of all messages but these, which are counted from 1.
    static std::string LinesWithout(const LoadSite& site, const std::vector<std::size_t>& lost) {
        std::string lines;
        for (std::size_t i = 0; i < site.Messages().size(); ++i) {
            if (std::find(lost.begin(), lost.end(), i + 1) == lost.end()) lines += site.Messages()[i] + "\n";
        }
        return lines;
    }

    // Returns the contents of the one file whose name contains the part.
    static std::string Content(const LoadSite& site, const std::string& part) {
        std::string content;
        int files = 0;
        for (const auto& entry : fs::directory_iterator(site.Folder())) {
            if (!Contains(entry.path().filename().string(), part)) continue;
            content = ReadFileIfAny(entry.path().string());
            ++files;
        }
        EXPECT_EQ(files, 1) << part << " in " << site.Files();
        return content;
    }
};

TEST_F(AcceptedLoss, ZerosAtTheEndCostTheRecordsThatTheyReplace) {
    LoadSite& site = AddKilled("zeros");
    const std::vector<std::string> saved = Saved(site);
    const std::string damaged =
        CheckpointBytes(3, {saved[0], saved[1]}) + std::string(8 + saved[2].size(), '\0');
    WriteBytesTo(site.CheckpointFile(), damaged);

    EXPECT_EQ(site.Run().exitCode, 1);
    EXPECT_TRUE(
        Contains(site.Error(), ", or add --accept-loss to continue without the records that are lost\n"))
        << site.Error();
    EXPECT_EQ(site.Run({"--accept-loss"}).exitCode, 1);
    EXPECT_TRUE(Contains(site.Error(), "nothing was changed; give --yes")) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.CheckpointFile()), damaged);
    EXPECT_FALSE(Contains(site.Files(), "kept")) << site.Files();

    EXPECT_EQ(site.Run({"--accept-loss", "--yes"}).exitCode, 0) << site.Error();
    EXPECT_TRUE(
        Contains(site.Error(), "  loaded     6 records are in " + site.Target() + " and stay there\n"))
        << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  continues  with 1 record of " + site.CheckpointFile()))
        << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "at most 2 records are lost (1 if they were as long as"))
        << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), LinesWithout(site, {8}));
    EXPECT_EQ(site.Depth(), 0);
    EXPECT_EQ(Content(site, "ck.kept-"), damaged);
    const std::string lengthOfRecord(1, static_cast<char>(saved[0].size()));
    const std::string zeros(3, '\0');
    EXPECT_EQ(Content(site, "ck.saved-"),
              lengthOfRecord + zeros + saved[0] + lengthOfRecord + zeros + saved[1]);
}

TEST_F(AcceptedLoss, RecordsAfterTheDamageAreLoaded) {
    LoadSite& site = AddKilled("middle");
    const std::vector<std::string> saved = Saved(site);
    WriteBytesTo(site.CheckpointFile(), CheckpointBytes(3, {saved[0]}) +
                                            std::string(8 + saved[1].size(), '\xFF') +
                                            LengthBytes(saved[2].size()) + saved[2]);
    EXPECT_EQ(site.Run({"--accept-loss", "--yes"}).exitCode, 0) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), LinesWithout(site, {7}));
    EXPECT_EQ(site.Depth(), 0);
}

TEST_F(AcceptedLoss, TheFirstRecordMayBeTheDamagedOne) {
    LoadSite& site = AddKilled("first");
    const std::vector<std::string> saved = Saved(site);
    WriteBytesTo(site.CheckpointFile(), HeaderBytes(3) + LengthBytes(saved[0].size() ^ 64) + saved[0] +
                                            LengthBytes(saved[1].size()) + saved[1] +
                                            LengthBytes(saved[2].size()) + saved[2]);
    EXPECT_EQ(site.Run({"--accept-loss", "--yes"}).exitCode, 0) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines());
}

TEST_F(AcceptedLoss, AFileOfZerosOrNoFileCostsWhatWasReadSinceTheCheckpoint) {
    LoadSite& gone = AddKilled("gone");
    LoadSite& zeroed = AddKilled("zeroed");
    LoadSite& emptied = AddKilled("emptied");
    fs::remove(gone.CheckpointFile());
    WriteBytesTo(zeroed.CheckpointFile(), std::string(4096, '\0'));
    WriteBytesTo(emptied.CheckpointFile(), HeaderBytes(1));
    RunAll(sites_, {"--accept-loss", "--yes"});
    for (const auto& site : sites_) {
        EXPECT_EQ(site->Result().exitCode, 0) << site->Error();
        EXPECT_EQ(ReadFileIfAny(site->Target()), LinesWithout(*site, {7, 8})) << site->Name();
        EXPECT_EQ(site->Depth(), 0);
    }
    for (const LoadSite* site : {&gone, &emptied}) {
        EXPECT_TRUE(Contains(site->Error(),
                             "the records read since the last checkpoint, at most 3 (--checkpoint-every)"))
            << site->Error();
    }
}

// The seventh message was saved and loaded but never committed, so the queue delivers it again. The module recognises
// it only by the record in the checkpoint file, which is gone.
TEST_F(AcceptedLoss, ARedeliveredRecordIsNotLoadedTwiceAlthoughTheFileIsGone) {
    LoadSite& site = Add("redelivered", 10, "MQCMIT 7 kill before");
    site.Set("--checkpoint-every", "1");
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    site.PlanFaults("MQGET 1 kill before");
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    site.PlanFaults("");
    ASSERT_EQ(site.Stored("records"), "7");
    ASSERT_EQ(site.Depth(), 4);
    fs::remove(site.CheckpointFile());
    EXPECT_EQ(site.Run({"--accept-loss", "--yes"}).exitCode, 0) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines());
    EXPECT_EQ(site.Depth(), 0);
}

TEST_F(AcceptedLoss, AFileOfAnotherLoadIsNotAccepted) {
    LoadSite& site = AddKilled("foreign");
    const std::string target = ReadFileIfAny(site.Target());
    for (const std::string& bytes :
         {CheckpointBytes(9, {"x", "y"}), CheckpointBytes(9, {"x"}) + std::string(100, '\0'),
          CheckpointBytes(3, {"x"}) + std::string(100, '\0'), CheckpointBytes(0, {"x", "y"})}) {
        WriteBytesTo(site.CheckpointFile(), bytes);
        EXPECT_EQ(site.Run({"--accept-loss", "--yes"}).exitCode, 1) << site.Error();
        EXPECT_TRUE(Contains(site.Error(), "--accept-loss")) << site.Error();
        EXPECT_EQ(ReadFileIfAny(site.CheckpointFile()), bytes);
    }
    EXPECT_EQ(ReadFileIfAny(site.Target()), target);
    WriteBytesTo(site.CheckpointFile(), CheckpointBytes(3, Saved(site)));
    WriteBytesTo(site.Path("MQAMtmp.1"), CheckpointBytes(3, Saved(site)));
    fs::remove(site.CheckpointFile());
    WriteBytesTo(site.Path("MQAMtmp.2"), CheckpointBytes(3, {Saved(site)[0]}));
    EXPECT_EQ(site.Run({"--accept-loss", "--yes"}).exitCode, 1);
    EXPECT_TRUE(Contains(site.Error(), "there is a temporary checkpoint file, which may contain the records"))
        << site.Error();
}

TEST_F(AcceptedLoss, WithNothingLostTheLoadRunsAsEver) {
    LoadSite& site = AddKilled("whole");
    EXPECT_EQ(site.Run({"--accept-loss", "--yes"}).exitCode, 0) << site.Error();
    EXPECT_FALSE(Contains(site.Error(), "lost")) << site.Error();
    EXPECT_TRUE(site.IsDone());
}

#if !defined(_WIN32)
TEST_F(AcceptedLoss, ASqliteTargetContinuesToo) {
    LoadSite& site = Add("sqlite", 10, "MQCMIT 8 kill after");
    site.LeaveOutJournal();
    site.LeaveOut("--restart-file");
    site.Set("--to", "sqlite:" + site.Path("db") + "?table=t");
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    site.PlanFaults("");
    fs::remove(site.CheckpointFile());
    EXPECT_EQ(site.Run({"--accept-loss", "--yes"}).exitCode, 0) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  records   8\n")) << site.Error();
    EXPECT_EQ(site.Depth(), 0);
}
#endif

}  // namespace
