// SPDX-License-Identifier: Apache-2.0

// `mqam restart` on loads that were killed.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/load_site.h"
#include "tests/support/checkpoint_bytes.h"
#include "tests/support/files.h"

namespace {

namespace fs = std::filesystem;
using Arguments = LoadSite::Arguments;

// 6 of 10 records are stored; the seventh and the eighth are only in the checkpoint file.
class RestartCommand : public LoadSites {
  protected:
    LoadSite& AddKilled(const std::string& name, const std::string& durability = "power") {
        LoadSite& site = Add(name, 10, "MQCMIT 8 kill after");
        site.Set("--durability", durability);
        EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
        EXPECT_EQ(site.Stored("records"), "6");
        site.PlanFaults("");
        return site;
    }

    // Runs `mqam restart ...` in another directory than the load.
    ProgramResult Restart(const LoadSite& site, const Arguments& more) const {
        Arguments arguments = {"restart"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ProgramResult result = RunProgram(MQAM_PROGRAM, arguments, folder_.Root(), site.Environment());
        result.standardOutput = WithUnixLineEnds(result.standardOutput);
        return result;
    }

    static std::string LinesFromTo(const LoadSite& site, std::size_t first, std::size_t last) {
        return site.Lines(last).substr(site.Lines(first - 1).size());
    }
};

TEST_F(RestartCommand, ShowReportsWhatIsLoadedAndByWhichCommand) {
    LoadSite& site = AddKilled("show");
    const ProgramResult shown = Restart(site, {"show", site.RestartFile()});
    EXPECT_EQ(shown.exitCode, 0) << shown.standardError;
    const std::string& text = shown.standardOutput;
    EXPECT_TRUE(text.starts_with(site.RestartFile() + ": unfinished\n")) << text;
    EXPECT_TRUE(Contains(text, "  begun       " + site.Stored("begun") + "\n")) << text;
    EXPECT_TRUE(Contains(text, "  loaded      6 records, ")) << text;
    EXPECT_TRUE(Contains(text, "; 2 records are not in the target yet\n")) << text;
    EXPECT_TRUE(Contains(text, "  command     mqam load ")) << text;
    // A path with backslashes is quoted.
    EXPECT_TRUE(Contains(text, "--restart-file " + site.RestartFile()) ||
                Contains(text, "--restart-file '" + site.RestartFile() + "'"))
        << text;
    EXPECT_FALSE(Contains(text, "--worker")) << text;
    const ProgramResult none = Restart(site, {"show", site.Path("none")});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_TRUE(Contains(none.standardError, "there is no restart information of a load at "))
        << none.standardError;
}

TEST_F(RestartCommand, ResumeRunsTheCommandAgainInItsDirectory) {
    LoadSite& site = AddKilled("resume");
    const ProgramResult resumed = Restart(site, {"resume", site.RestartFile()});
    EXPECT_EQ(resumed.exitCode, 0) << resumed.standardError;
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines());
    EXPECT_EQ(site.Depth(), 0);
    const ProgramResult again = Restart(site, {"resume", site.RestartFile()});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_TRUE(Contains(again.standardError, "the load is complete: every record is in " + site.Target()))
        << again.standardError;
}

TEST_F(RestartCommand, AbandonSavesTheRecordsThatAreNotLoadedAndAsks) {
    LoadSite& site = AddKilled("abandon");
    const std::string saved = site.Path("saved");
    const ProgramResult asked = Restart(site, {"abandon", site.RestartFile(), "--to", saved});
    EXPECT_EQ(asked.exitCode, 1);
    EXPECT_TRUE(Contains(asked.standardError, "the load is not given up, and the same command resumes it"))
        << asked.standardError;
    EXPECT_EQ(ReadFileIfAny(saved), LinesFromTo(site, 7, 8));
    EXPECT_EQ(site.Stored("records"), "6");
    ASSERT_TRUE(fs::exists(site.CheckpointFile()));
    EXPECT_EQ(Restart(site, {"abandon", site.RestartFile(), "--to", saved, "--yes"}).exitCode, 1);
    fs::remove(saved);

    const ProgramResult abandoned = Restart(site, {"abandon", site.RestartFile(), "--to", saved, "--yes"});
    EXPECT_EQ(abandoned.exitCode, 0) << abandoned.standardError;
    EXPECT_TRUE(Contains(abandoned.standardOutput, "  stay        6 records in " + site.Target() + "\n"))
        << abandoned.standardOutput;
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines(6));
    EXPECT_EQ(ReadFileIfAny(saved), LinesFromTo(site, 7, 8));
    EXPECT_EQ(site.Files(), "out saved");
    EXPECT_FALSE(fs::exists(site.RestartFile()));
    EXPECT_EQ(site.Depth(), 2);
}

TEST_F(RestartCommand, AbandonSavesTheRecordsOfTheJournalAfterALossOfPower) {
    LoadSite& site = AddKilled("journal");
    WriteBytesTo(site.CheckpointFile(), "");
    const ProgramResult abandoned =
        Restart(site, {"abandon", site.RestartFile(), "--to", site.Path("saved"), "--yes"});
    EXPECT_EQ(abandoned.exitCode, 0) << abandoned.standardError;
    EXPECT_EQ(ReadFileIfAny(site.Path("saved")), LinesFromTo(site, 7, 8));
    EXPECT_EQ(site.Files(), "out saved");
}

TEST_F(RestartCommand, AbandonKeepsADamagedCheckpointFile) {
    // A journal would restore the file.
    LoadSite& site = AddKilled("damaged", "process");
    const std::vector<std::string>& messages = site.Messages();
    const std::string damaged = CheckpointBytes(3, {messages[5], messages[6]}) + std::string(100, '\0');
    WriteBytesTo(site.CheckpointFile(), damaged);
    const ProgramResult abandoned =
        Restart(site, {"abandon", site.RestartFile(), "--to", site.Path("saved"), "--yes"});
    EXPECT_EQ(abandoned.exitCode, 10) << abandoned.standardError;
    EXPECT_TRUE(Contains(abandoned.standardOutput, "at most 11 records are lost"))
        << abandoned.standardOutput;
    EXPECT_EQ(ReadFileIfAny(site.Path("saved")), LinesFromTo(site, 7, 7));
    std::string kept;
    for (const auto& entry : fs::directory_iterator(site.Folder())) {
        if (Contains(entry.path().filename().string(), "ck.kept-"))
            kept = ReadFileIfAny(entry.path().string());
    }
    EXPECT_EQ(kept, damaged);
}

#if !defined(_WIN32)
TEST_F(RestartCommand, ALoadIntoATableIsShownAndGivenUp) {
    LoadSite& site = Add("table", 10, "MQCMIT 8 kill after");
    const std::string target = "sqlite:" + site.Path("db") + "?table=t";
    site.LeaveOut("--restart-file");
    site.Set("--to", target);
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    const ProgramResult shown = Restart(site, {"show", target});
    EXPECT_TRUE(Contains(shown.standardOutput, "  loaded      6 records, ")) << shown.standardError;
    const ProgramResult abandoned = Restart(site, {"abandon", target, "--to", site.Path("saved"), "--yes"});
    EXPECT_EQ(abandoned.exitCode, 0) << abandoned.standardError;
    EXPECT_TRUE(Contains(abandoned.standardOutput, "  saved       2 records that are not in the target"))
        << abandoned.standardOutput;
    EXPECT_EQ(Restart(site, {"show", target}).exitCode, 1);
}
#endif

}  // namespace
