// SPDX-License-Identifier: Apache-2.0

// The plainest command, `mqam load --qmgr QM1 --queue Q1 --to out`: its directory, its locks, and what a crash leaves.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "platform/system.h"
#include "tests/e2e/load_site.h"

namespace {

namespace fs = std::filesystem;

class PlainestLoad : public LoadSites {
  protected:
    LoadSite& AddPlain(const std::string& name, int messages, const std::string& faults = "") {
        LoadSite& site = Add(name, messages, faults);
        for (const char* option : {"--ckfile", "--restart-file", "--checkpoint-every"})
            site.LeaveOut(option);
        return site;
    }

    static std::string NamesIn(const std::string& directory) {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(directory))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        std::string all;
        for (const std::string& name : names)
            all += (all.empty() ? "" : " ") + name;
        return all;
    }

    static testing::AssertionResult IsPlainlyDone(const LoadSite& site) {
        const auto fail = [&site](const std::string& what) {
            return testing::AssertionFailure() << site.Name() << ": " << what << "\n" << site.Error();
        };
        if (site.Result().exitCode != 0) return fail("exit code " + std::to_string(site.Result().exitCode));
        if (ReadFileIfAny(site.Target()) != site.Lines()) return fail("the target differs");
        if (site.Depth() != 0) return fail(std::to_string(site.Depth()) + " messages are left");
        if (site.Files() != "out out.load") return fail("files: " + site.Files());
        if (NamesIn(site.Target() + ".load") != "restart") return fail(NamesIn(site.Target() + ".load"));
        return testing::AssertionSuccess();
    }
};

TEST_F(PlainestLoad, ItLeavesTheTargetAndAMarkerForItsOwnerOnly) {
    LoadSite& some = AddPlain("some", 10);
    LoadSite& none = AddPlain("none", 0);
    RunAll(sites_);
    EXPECT_TRUE(IsPlainlyDone(some));
    EXPECT_TRUE(IsPlainlyDone(none));
    if (platform::kIsWindows) return;
    constexpr fs::perms kOwnerOnly = fs::perms::owner_read | fs::perms::owner_write;
    EXPECT_EQ(fs::status(some.Target() + ".load").permissions(), kOwnerOnly | fs::perms::owner_exec);
    for (const char* file : {"out", "out.load/restart"})
        EXPECT_EQ(fs::status(some.Path(file)).permissions(), kOwnerOnly) << file;
}

TEST_F(PlainestLoad, KilledAnywhereTheSameCommandCompletesIt) {
    const char* const places[] = {
        "MQCONNX 1 kill before", "MQOPEN 1 kill after",  "MQGET 1 kill before",  "MQGET 1 kill after",
        "MQCMIT 1 kill before",  "MQCMIT 1 kill after",  "MQCMIT 5 kill before", "MQGET 11 kill before",
        "MQCLOSE 1 kill before", "MQDISC 1 kill before", "MQDISC 1 kill after",
    };
    for (const char* place : places)
        AddPlain("place" + std::to_string(sites_.size()), 10, place);
    RunAll(sites_);
    for (std::size_t i = 0; i < sites_.size(); ++i) {
        EXPECT_EQ(sites_[i]->Result().exitCode, 9) << places[i] << sites_[i]->Error();
        // Before anything is stored, nothing is left.
        if (platform::kIsWindows || !fs::exists(sites_[i]->Target() + ".load")) continue;
        for (const auto& entry : fs::directory_iterator(sites_[i]->Target() + ".load")) {
            EXPECT_EQ(entry.status().permissions() & (fs::perms::group_all | fs::perms::others_all),
                      fs::perms::none)
                << entry.path();
        }
    }
    RunAllAgain();
    for (std::size_t i = 0; i < sites_.size(); ++i)
        EXPECT_TRUE(IsPlainlyDone(*sites_[i])) << places[i];
}

// The other load has other files, but the target is the same.
TEST_F(PlainestLoad, ASecondLoadIntoTheSameTargetIsRefusedWhateverItsOtherFiles) {
    LoadSite& site = AddPlain("running", 10);
    site.Set("--rwait", "600");
    site.Start({"--verbose", "--checkpoint-every", "5"});
    ASSERT_TRUE(site.Program().WaitForError("checkpoint 3 after 10 records"));
    LoadSite& other = Add("other", 4);
    other.Set("--to", site.Target());
    EXPECT_EQ(other.Run({"--append"}).exitCode, 1);
    EXPECT_TRUE(ReportsHolder(other.Error(), site.CommandLock()));
    EXPECT_EQ(other.Depth(), 4);
    EXPECT_EQ(other.Files(), "");
    site.Wait(0);
    site.Set("--rwait", "1");
    site.Run();
    EXPECT_TRUE(IsPlainlyDone(site));
}

TEST_F(PlainestLoad, CheckpointFilesOfTwoLoadsInOneDirectoryAreRefused) {
    LoadSite& site = Add("first", 10);
    site.Set("--rwait", "600");
    site.Start({"--verbose"});
    ASSERT_TRUE(site.Program().WaitForError("checkpoint 4 after 9 records"));
    LoadSite& other = AddPlain("second", 4);
    other.Set("--ckfile", site.Path("another.ck"));
    EXPECT_EQ(other.Run().exitCode, 1);
    EXPECT_TRUE(ReportsHolder(other.Error(), site.CheckpointLock()));
    EXPECT_EQ(other.Depth(), 4);
    site.Wait(0);
    site.Set("--rwait", "1");
    EXPECT_EQ(site.Run().exitCode, 0) << site.Error();
    other.Run();
    EXPECT_TRUE(IsPlainlyDone(other));
}

TEST_F(PlainestLoad, TheDirectoryCanHaveNoOtherName) {
    LoadSite& site = AddPlain("name", 3);
    std::ofstream(site.Target() + ".load") << "someone's";
    EXPECT_EQ(site.Run().exitCode, 1);
    EXPECT_TRUE(Contains(site.Error(), site.Target() + ".load is not a directory: ")) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target() + ".load"), "someone's");
    EXPECT_EQ(site.Depth(), 3);
}

// The module cannot receive a path with a blank.
TEST_F(PlainestLoad, APathWithABlankWorksFromItsDirectoryAndIsRefusedFromElsewhere) {
    LoadSite& site = AddPlain("a blank", 5, "MQCMIT 4 kill before");
    EXPECT_EQ(site.Run().exitCode, 1);
    EXPECT_TRUE(
        Contains(site.Error(), "has a blank in its path, which the module cannot receive: name one without"))
        << site.Error();
    EXPECT_EQ(site.Files(), "");
    const fs::path before = fs::current_path();
    fs::current_path(site.Folder());
    EXPECT_EQ(site.Run().exitCode, 9) << site.Error();
    site.PlanFaults("");
    site.Set("--to", "out");
    site.Run();
    fs::current_path(before);
    EXPECT_TRUE(IsPlainlyDone(site));
}

TEST_F(PlainestLoad, AKeywordWithoutItsValueDoesNotSwallowTheExclusiveOpen) {
    LoadSite& site = AddPlain("swallow", 3);
    for (const char* option : {"--qmgr", "--queue", "--rwait"})
        site.LeaveOut(option);
    site.Set("--init", "-QMGR QM1 -QNM Q1 -RWAIT 1 -TRCL 2");
    site.Run();
    EXPECT_NE(site.Result().exitCode, 0);
    EXPECT_FALSE(fs::exists("-MQEX"));
    EXPECT_FALSE(fs::exists(site.Path("-MQEX")));
    EXPECT_EQ(site.Depth(), 3);
    site.Set("--init", "-QMGR QM1 -QNM Q1 -RWAIT 1");
    site.Run();
    EXPECT_TRUE(IsPlainlyDone(site));
}

// The queue or the queue manager does not exist, so there is nothing to load.
TEST_F(PlainestLoad, ATypoLeavesTheTargetAsItWasAndTheNextCommandUndisturbed) {
    const std::pair<const char*, const char*> typos[] = {{"--queue", "TYPO"}, {"--qmgr", "TYPO"}};
    for (const auto& [option, value] : typos) {
        LoadSite& fresh = AddPlain(std::string("fresh") + option, 3);
        LoadSite& forced = AddPlain(std::string("forced") + option, 3);
        std::ofstream(forced.Target(), std::ios::binary) << "precious\n";
        fresh.Set(option, value);
        forced.Set(option, value);
        EXPECT_EQ(fresh.Run().exitCode, 2) << fresh.Error();
        EXPECT_EQ(forced.Run({"--force"}).exitCode, 2) << forced.Error();
        EXPECT_EQ(fresh.Files(), "");
        EXPECT_EQ(forced.Files(), "out");
        EXPECT_EQ(ReadFileIfAny(forced.Target()), "precious\n");
        for (LoadSite* site : {&fresh, &forced})
            site->Set(option, std::string(option) == "--queue" ? "Q1" : "QM1");
        fresh.Start();
        forced.Run({"--force"});
        fresh.Wait();
        EXPECT_TRUE(IsPlainlyDone(fresh));
        EXPECT_TRUE(IsPlainlyDone(forced));
    }
}

TEST_F(PlainestLoad, ForceKeepsTheOldTargetUntilThereIsAPosition) {
    LoadSite& before = AddPlain("before", 5, "MQOPEN 1 kill after");
    LoadSite& after = AddPlain("after", 5, "MQGET 1 kill before");
    for (LoadSite* site : {&before, &after}) {
        std::ofstream(site->Target(), std::ios::binary) << "precious\n";
        EXPECT_EQ(site->Run({"--force"}).exitCode, 9) << site->Error();
    }
    EXPECT_EQ(ReadFileIfAny(before.Target()), "precious\n");
    EXPECT_EQ(ReadFileIfAny(after.Target()), "");
    before.PlanFaults("");
    EXPECT_EQ(before.Run().exitCode, 1) << "without --force the old target is still in the way";
    for (LoadSite* site : {&before, &after}) {
        site->PlanFaults("");
        site->Run({"--force"});
        EXPECT_TRUE(IsPlainlyDone(*site));
    }
}

TEST_F(PlainestLoad, AfterItIsCompleteThereIsNothingToDoAndThatIsNoSuccess) {
    LoadSite& site = AddPlain("again", 3);
    site.Run();
    ASSERT_TRUE(IsPlainlyDone(site));
    site.Put(2);
    EXPECT_EQ(site.Run().exitCode, 11) << site.Error();
    EXPECT_EQ(site.Depth(), 2);
    EXPECT_TRUE(Contains(site.Error(), "  next      to load more into it, give --append; ")) << site.Error();
}

// Each night messages arrive, the load is killed somewhere, and the same command completes it.
TEST_F(PlainestLoad, TenNightsWithACrashInEachLoseAndDoubleNothing) {
    const char* const crashes[] = {
        "MQGET 1 kill after",    "MQCMIT 3 kill before", "MQCMIT 3 kill after",  "MQGET 8 kill before",
        "MQCLOSE 1 kill before", "MQDISC 1 kill after",  "MQCONNX 1 kill after", "MQOPEN 1 kill after",
        "MQCMIT 7 kill before",  "MQCMIT 1 kill after",
    };
    LoadSite& site = AddPlain("nights", 0);
    for (const char* crash : crashes) {
        site.Put(7);
        site.PlanFaults(crash);
        EXPECT_EQ(site.Run({"--append", "--checkpoint-every", "3"}).exitCode, 9) << crash << site.Error();
        site.PlanFaults("");
        site.Run({"--append", "--checkpoint-every", "3"});
        EXPECT_TRUE(IsPlainlyDone(site)) << crash;
    }
    EXPECT_EQ(site.Messages().size(), 70U);
}

#if !defined(_WIN32)

TEST_F(PlainestLoad, LinksAreFollowedOnceSoNeitherLockNorDiskIsBypassed) {
    LoadSite& site = AddPlain("links", 10, "MQCMIT 5 kill after");
    fs::create_directory(site.Path("disk"));
    fs::create_symlink("disk/out", site.Target());
    fs::create_symlink("disk/ck", site.Path("ck"));
    site.Set("--ckfile", site.Path("ck"));
    EXPECT_EQ(site.Run({"--checkpoint-every", "3"}).exitCode, 9) << site.Error();
    EXPECT_EQ(NamesIn(site.Path("disk")), "ck ck.journal mqam-checkpoint.lock out out.load");
    site.PlanFaults("");
    // The real names are those of the same load.
    site.Set("--to", site.Path("disk/out"));
    EXPECT_EQ(site.Run({"--checkpoint-every", "3"}).exitCode, 0) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Path("disk/out")), site.Lines());
    EXPECT_TRUE(fs::is_symlink(site.Target()));
    EXPECT_TRUE(fs::is_symlink(site.Path("ck")));
    EXPECT_EQ(NamesIn(site.Path("disk")), "out out.load");
}

TEST_F(PlainestLoad, ALinkAsCheckpointFileInAParameterFileIsRefused) {
    LoadSite& site = AddPlain("parm", 3);
    fs::create_symlink("real", site.Path("link"));
    std::ofstream(site.Path("parm")) << "CKFILE " << site.Path("link") << "\n";
    site.Set("--parmfile", site.Path("parm"));
    EXPECT_EQ(site.Run().exitCode, 1);
    EXPECT_TRUE(Contains(site.Error(), site.Path("link") + " is a link to " + site.Path("real")))
        << site.Error();
    EXPECT_EQ(site.Depth(), 3);
}

#endif

}  // namespace
