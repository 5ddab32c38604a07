// SPDX-License-Identifier: Apache-2.0

// Tests what happens to an unfinished load when other programs change its files, or other commands run in
// between.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/e2e/load_site.h"

namespace {

namespace fs = std::filesystem;

class RestartableLoadMeddledWith : public LoadSites {
  protected:
    // Makes a load that has stored 3 of its 4 records and waits.
    LoadSite& AddWaiting(const std::string& name) {
        LoadSite& site = Add(name, 4);
        site.Set("--rwait", "600");
        site.Start();
        EXPECT_TRUE(WaitForText(site.Target(), site.Lines()));
        EXPECT_EQ(site.Stored("records"), "3");
        site.Set("--rwait", "1");
        return site;
    }

    static void ExpectEndByTarget(LoadSite& site) {
        site.Put(6);
        site.Wait();
        EXPECT_EQ(site.Result().exitCode, 3) << site.Error();
        EXPECT_TRUE(Contains(
            site.Error(),
            "mqam load: " + site.Target() +
                " was changed by something else while the load wrote to it: the records since the last checkpoint are not counted, and will be loaded again\n"))
            << site.Error();
        EXPECT_EQ(site.Stored("records"), "3");
    }
};

// ---- the target

TEST_F(RestartableLoadMeddledWith, T1_ATargetFilledBeforeTheLoadHasReadAnythingIsNotCut) {
    LoadSite& site = Add("filled", 4, "MQCONNX * fail 2 2059");
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    site.PlanFaults("");
    std::ofstream(site.Target(), std::ios::binary) << "somebody's\n";
    EXPECT_EQ(site.Run().exitCode, 1) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), site.Target() + " is not empty; give --force")) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), "somebody's\n");
    EXPECT_EQ(site.Depth(), 4);
    EXPECT_EQ(site.Run({"--append"}).exitCode, 0) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), "somebody's\n" + site.Lines());
}

TEST_F(RestartableLoadMeddledWith, T2_ATargetThatGrowsWhileALifeWritesToItCostsNoRecord) {
    LoadSite& site = AddWaiting("grows");
    std::ofstream(site.Target(), std::ios::binary | std::ios::app) << "foreign bytes";
    ExpectEndByTarget(site);
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadMeddledWith, T2_ATargetThatIsEmptiedWhileALifeWritesToItIsToldAndRefused) {
    LoadSite& site = AddWaiting("emptied");
    const std::string before = ReadFileIfAny(site.Target());
    fs::resize_file(site.Target(), 0);
    ExpectEndByTarget(site);
    EXPECT_EQ(site.Run().exitCode, 1) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "something else has changed the file; restore it")) << site.Error();
    std::ofstream(site.Target(), std::ios::binary) << before;
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

#if !defined(_WIN32)

TEST_F(RestartableLoadMeddledWith, T2_ATargetThatIsRenamedWhileALifeWritesToItIsToldAndRefused) {
    LoadSite& site = AddWaiting("renamed");
    fs::rename(site.Target(), site.Path("away"));
    ExpectEndByTarget(site);
    EXPECT_EQ(site.Run().exitCode, 1) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), site.Target() + " is missing, but")) << site.Error();
    fs::rename(site.Path("away"), site.Target());
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

#endif

TEST_F(RestartableLoadMeddledWith, T1_AnotherFileOfTheLengthOfTheTargetIsRefused) {
    for (const char* format : {"lines", "length", "raw"}) {
        LoadSite& site = AddUnfinished(format, "process");
        if (std::string(format) != "lines") {
            fs::remove(site.Target());
            fs::remove(site.RestartFile());
            fs::remove(site.CheckpointFile());
            site.Set("--format", format);
            site.PlanFaults("MQCMIT 4 kill after");
            ASSERT_EQ(site.Run().exitCode, 9) << site.Error();
            site.PlanFaults("");
        }
        const std::string own = ReadFileIfAny(site.Target());
        const std::string stored = site.Stored("target-length");
        const std::string records = site.Stored("records");
        std::string other = own;
        // This is the last byte of the last record that the position counts.
        other[static_cast<std::size_t>(std::stoi(stored)) - (std::string(format) == "lines" ? 2 : 1)] ^= 1;
        std::ofstream(site.Target(), std::ios::binary) << other;
        EXPECT_EQ(site.Run().exitCode, 1) << site.Error();
        EXPECT_TRUE(Contains(
            site.Error(),
            "mqam load: the first " + stored + " bytes of " + site.Target() +
                " do not end with the last record loaded: something else has changed the file; restore it and run the same command again\n"))
            << site.Error();
        EXPECT_EQ(ReadFileIfAny(site.Target()), other);
        EXPECT_EQ(site.Stored("records"), records);
        std::ofstream(site.Target(), std::ios::binary) << own;
        EXPECT_EQ(site.Run().exitCode, 0) << format << site.Error();
    }
}

// ---- other commands

TEST_F(RestartableLoadMeddledWith, H18_ASecondCommandInThePauseOfTheFirstIsRefused) {
    LoadSite& site = Add("pausing", 5, "MQCONNX * fail 2 2059");
    site.Start({"--retry-for", "600"});
    ASSERT_TRUE(site.Program().WaitForError("mqam load: attempt 3 in 4 s"));
    site.PlanFaults("");
    fs::create_directory(site.Path("second"));
    RunningProgram same(MQAM_PROGRAM, site.Command(), site.Environment(), site.Path("second"));
    const ProgramResult refused = same.Wait();
    site.Wait();
    fs::remove_all(site.Path("second"));
    EXPECT_EQ(refused.exitCode, 1) << refused.standardError;
    EXPECT_TRUE(ReportsHolder(refused.standardError, site.CommandLock()));
    EXPECT_EQ(CountOf(refused.standardError, "\n"), 1) << refused.standardError;
    EXPECT_TRUE(site.IsDone());
}

// Only the attempt right after the first empty queue uses the short wait for its second look.
TEST_F(RestartableLoadMeddledWith, G5_ALoadTakenUpLaterWaitsForTheWholeIntervalAgain) {
    LoadSite& site = Add("later", 2);
    site.Set("--rwait", "3");
    site.Start({"--verbose"});
    ASSERT_TRUE(WaitForText(site.Target(), site.Lines()));
    site.PlanFaults("MQCONNX * fail 2 2059");
    EXPECT_EQ(site.Wait().exitCode, 9) << site.Error();
    ASSERT_EQ(site.Stored("last-end"), "after-wait") << site.Error();
    constexpr char kWait[] = "MQ read wait interval";
    EXPECT_EQ(CountOf(site.Error(), kWait), 2) << site.Error();
    const auto count = [&site, &kWait](const std::string& seconds) {
        return CountOf(site.Error(), std::string(kWait) + "           " + seconds + "\n");
    };
    EXPECT_EQ(count("3"), 1) << site.Error();
    EXPECT_EQ(count("1"), 1) << site.Error();
    site.PlanFaults("");
    site.Run({"--verbose"});
    EXPECT_EQ(count("3"), 1) << site.Error();
    EXPECT_EQ(count("1"), 0) << "the queue had been found empty by an earlier command\n" << site.Error();
    EXPECT_TRUE(site.IsDone());
}

// ---- links, and closed streams

#if !defined(_WIN32)

TEST_F(RestartableLoadMeddledWith, ARestartFileBehindALinkIsReplacedWhereItIs) {
    LoadSite& site = Add("link", 5, "MQCMIT 4 kill after");
    fs::create_directory(site.Path("elsewhere"));
    fs::create_symlink("elsewhere/file", site.RestartFile());
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    EXPECT_TRUE(fs::is_symlink(site.RestartFile()));
    EXPECT_TRUE(fs::is_regular_file(site.Path("elsewhere/file")));
    site.PlanFaults("");
    site.Set("--restart-file", site.Path("elsewhere/file"));
    EXPECT_EQ(site.Run().exitCode, 0) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines());
    EXPECT_EQ(site.Stored("phase"), "complete");
}

TEST_F(RestartableLoadMeddledWith, ACheckpointFileBehindALinkAndAParentIsLookedForWhereTheModuleHasIt) {
    LoadSite& site = Add("parent", 5, "MQCMIT 4 kill after");
    fs::create_directories(site.Path("far/deep"));
    fs::create_directory_symlink(site.Path("far/deep"), site.Path("link"));
    site.Set("--ckfile", site.Path("link/../ck"));
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    EXPECT_TRUE(fs::exists(site.Path("far/ck")));
    site.PlanFaults("");
    EXPECT_EQ(site.Run().exitCode, 0) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines());
    EXPECT_FALSE(fs::exists(site.Path("far/ck")));
}

// Runs the command of a site in a shell.
ProgramResult RunBelowShell(LoadSite& site, const std::string& script) {
    std::vector<std::string> arguments = {"-c", script, MQAM_PROGRAM};
    for (const std::string& argument : site.Command())
        arguments.push_back(argument);
    return RunProgram("/bin/bash", arguments, site.Folder(), site.Environment());
}

TEST_F(RestartableLoadMeddledWith, ALoadWhoseStandardStreamsAreClosedWritesNothingElseIntoItsFiles) {
    LoadSite& site = AddUnfinished("closed");
    EXPECT_EQ(RunBelowShell(
                  site, "exec \"$0\" \"$@\" --verbose --trace 1 \"" + site.Path("trace") + "\" <&- >&- 2>&-")
                  .exitCode,
              0);
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines());
    EXPECT_EQ(site.Stored("phase"), "complete");
    EXPECT_FALSE(Contains(ReadFileIfAny(site.Path("trace")), "going on with the load"));
    EXPECT_FALSE(Contains(ReadFileIfAny(site.Path("trace")), "mqam load: "));
}

TEST_F(RestartableLoadMeddledWith, ALoadGoesOnWhenNobodyReadsWhatItTells) {
    LoadSite& site = AddUnfinished("unread");
    EXPECT_EQ(RunBelowShell(site, "{ sleep 0.3; \"$0\" \"$@\" --verbose; echo $? > \"" + site.Path("code") +
                                      "\"; } 2>&1 | true")
                  .exitCode,
              0);
    EXPECT_EQ(ReadFileIfAny(site.Path("code")), "0\n");
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines());
    EXPECT_EQ(site.Stored("phase"), "complete");
}

#endif

}  // namespace
