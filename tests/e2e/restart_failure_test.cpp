// SPDX-License-Identifier: Apache-2.0

// Tests failures of the queue manager, the target and the disk in the middle of a load that is restarted.
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tests/e2e/load_site.h"

namespace {

namespace fs = std::filesystem;

class RestartableLoadFailure : public LoadSites {};

// ---- the queue manager

struct Fault {
    const char* plan;
    int reason;
    int loaded;  // records stored by the end of the attempt
};

// The first MQGETs of a load precede the Read that carries out its first checkpoint.
constexpr Fault kPassingFaults[] = {
    {"MQCONNX 1 fail 2 2059", 2059, 0}, {"MQCONNX 1 fail 2 2009", 2009, 0},
    {"MQCONNX 1 fail 2 2161", 2161, 0}, {"MQCONNX 1 fail 2 2162", 2162, 0},
    {"MQOPEN * fail 2 2009", 2009, 0},  {"MQOPEN * fail 2 2059", 2059, 0},
    {"MQOPEN * fail 2 2161", 2161, 0},  {"MQOPEN * fail 2 2162", 2162, 0},
    {"MQOPEN * fail 2 2035", 2035, 0},  {"MQGET 2 fail 2 2009", 2009, 0},
    {"MQGET 5 fail 2 2009", 2009, 3},   {"MQGET 5 fail 2 2161", 2161, 3},
    {"MQGET 5 fail 2 2162", 2162, 3},   {"MQGET 10 fail 2 2009", 2009, 9},
    {"MQCMIT 1 fail 2 2003", 2003, 0},  {"MQCMIT 1 fail-after 2 2003", 2003, 0},
    {"MQCMIT 5 fail 2 2003", 2003, 3},  {"MQCMIT 5 fail-after 2 2003", 2003, 3},
    {"MQCMIT 5 fail 2 2009", 2009, 3},  {"MQCMIT 5 fail-after 2 2009", 2009, 3},
    {"MQCMIT 10 fail 2 2009", 2009, 9}, {"MQCMIT 10 fail-after 2 2009", 2009, 9},
    {"MQCMIT 6 fail 2 2009", 2009, 3},  {"MQCMIT 6 fail-after 2 2009", 2009, 3},
};

TEST_F(RestartableLoadFailure, H9_AFailedQueueManagerEndsTheLifeWithWhatIsSafeAndTheSameCommandCompletes) {
    for (const Fault& fault : kPassingFaults)
        Add("fault" + std::to_string(sites_.size()), 10, fault.plan);
    RunAll(sites_, {"--verbose"});
    for (std::size_t i = 0; i < sites_.size(); ++i) {
        const Fault& fault = kPassingFaults[i];
        LoadSite& site = *sites_[i];
        EXPECT_EQ(site.Result().exitCode, 9) << fault.plan << "\n" << site.Error();
        EXPECT_EQ(CountOf(site.Error(), "\n  request   "), 1) << fault.plan << site.Error();
        // For most files that cannot be opened, the module does not report the reason.
        const bool isOpen = std::string(fault.plan).starts_with("MQOPEN");
        EXPECT_TRUE(Contains(site.Error(), isOpen
                                               ? "\n  message   Queue Manager open\n"
                                               : "\n  reason    " + std::to_string(fault.reason) + " MQRC_"))
            << fault.plan << "\n"
            << site.Error();
        const std::string safe = !fs::exists(site.RestartFile())
                                     ? "  safe      nothing was loaded: every message is on the queue\n"
                                       "  next      run the same command again\n"
                                     : "  safe      " + std::to_string(fault.loaded) + " records are in " +
                                           site.Target() + "; what was read after them is in " +
                                           site.CheckpointFile() +
                                           " or back on the queue\n"
                                           "  next      run the same command again: it resumes there\n";
        EXPECT_TRUE(site.Error().ends_with(safe)) << fault.plan << "\n" << site.Error();
    }
    RunAllAgain();
    for (std::size_t i = 0; i < sites_.size(); ++i)
        EXPECT_TRUE(sites_[i]->IsDone()) << kPassingFaults[i].plan;
}

// Each of these faults makes every attempt of one command fail.
TEST_F(RestartableLoadFailure, WithRetryForTheCommandGoesOnByItselfUntilItIsDone) {
    LoadSite& commits = Add("commits", 10, "MQCMIT 5 fail 2 2009");
    LoadSite& after = Add("after", 10, "MQCMIT 5 fail-after 2 2009");
    LoadSite& killed = Add("killed", 10, "MQCMIT 6 kill after");
    LoadSite& gets = Add("gets", 10, "MQGET 6 fail 2 2162");
    RunAll(sites_, {"--retry-for", "60"});
    for (const auto& site : sites_) {
        EXPECT_TRUE(site->IsDone());
        const int attempts = CountOf(site->Error(), "mqam load: attempt ");
        EXPECT_GT(attempts, 0) << site->Error();
        EXPECT_EQ(CountOf(site->Error(), " in 1 s; "), attempts) << site->Error();
        EXPECT_FALSE(Contains(site->Error(), "  safe      ")) << site->Error();
        EXPECT_FALSE(Contains(site->Error(), "going on with")) << site->Error();
    }
    EXPECT_TRUE(Contains(commits.Error(), "mqam load: attempt 1 in 1 s; 3 records are loaded\n"))
        << commits.Error();
    EXPECT_TRUE(Contains(killed.Error(), "the worker process was killed")) << killed.Error();
    EXPECT_GT(CountOf(after.Error() + gets.Error(), "attempt 1 in 1 s"), 1);
}

TEST_F(RestartableLoadFailure, RetriesPauseLongerAndLongerUntilTheQueueManagerIsBack) {
    LoadSite& site = Add("back", 10, "MQCONNX * fail 2 2059");
    site.Start({"--retry-for", "60"});
    ASSERT_TRUE(site.Program().WaitForError("attempt 2 in 2 s; 0 records are loaded"));
    site.PlanFaults("");
    site.Wait();
    EXPECT_TRUE(site.IsDone());
    EXPECT_EQ(CountOf(site.Error(), "mqam load: attempt "), 2) << site.Error();
}

TEST_F(RestartableLoadFailure, RetriesAreGivenUpAfterTheTimeAndTheSameCommandCompletes) {
    LoadSite& site = Add("given-up", 10, "MQCONNX * fail 2 2059");
    const auto begin = std::chrono::steady_clock::now();
    site.Run({"--retry-for", "2"});
    EXPECT_EQ(site.Result().exitCode, 9) << site.Error();
    // The last attempt is made when the time is over. It is not skipped because the next pause would take
    // longer than the time left.
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2)) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "mqam load: attempt 1 in 1 s; ")) << site.Error();
    EXPECT_FALSE(Contains(site.Error(), " in 2 s; ")) << site.Error();
    EXPECT_TRUE(Contains(site.Error(),
                         "mqam load: no new checkpoint for 2 s (--retry-for): giving up\n"
                         "  safe      nothing was loaded"))
        << site.Error();
    RunAllAgain();
    EXPECT_TRUE(site.IsDone());
}

// A failure that someone has to fix is not retried. The corrected command, or the same one, completes the
// load.
TEST_F(RestartableLoadFailure, ReasonsThatStayAreNotTriedAgain) {
    constexpr std::pair<const char*, int> kFaults[] = {
        {"MQCONNX 1 fail 2 2035", 2035},
        {"MQCONNX 1 fail 2 2058", 2058},
        {"MQOPEN * fail 2 2085", 2085},
        {"MQGET 5 fail 2 2120", 2120},
    };
    for (const auto& [plan, reason] : kFaults)
        Add("fault" + std::to_string(sites_.size()), 10, plan);
    RunAll(sites_, {"--retry-for", "600"});
    for (std::size_t i = 0; i < sites_.size(); ++i) {
        LoadSite& site = *sites_[i];
        EXPECT_EQ(site.Result().exitCode, 2) << kFaults[i].first << "\n" << site.Error();
        EXPECT_TRUE(Contains(site.Error(), "\n  reason    " + std::to_string(kFaults[i].second)))
            << site.Error();
        EXPECT_FALSE(Contains(site.Error(), "attempt ")) << site.Error();
        EXPECT_TRUE(Contains(site.Error(), "  next      fix that, then run the same command again"))
            << site.Error();
    }
    RunAllAgain();
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
}

TEST_F(RestartableLoadFailure, ACommandWithAWrongQueueNameDoesNotStandInTheWayOfTheRightOne) {
    LoadSite& site = Add("typo", 10);
    site.Set("--queue", "Q11");
    site.Run();
    EXPECT_EQ(site.Result().exitCode, 2) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  reason    2085 ")) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  safe      nothing was loaded")) << site.Error();
    site.Set("--queue", "Q1");
    site.Run({"--restart", "never"});
    EXPECT_FALSE(Contains(site.Error(), "going on with")) << site.Error();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadFailure, AMessageLongerThanTheBufferStaysOnTheQueueUntilTheBufferIsLarger) {
    LoadSite& site = Add("long", 4);
    site.Put(std::string(200, 'x'));
    site.Put(2);
    site.Set("--max-record", "100");
    site.Run({"--retry-for", "600"});
    EXPECT_EQ(site.Result().exitCode, 2) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  number    MQA0161\n")) << site.Error();
    EXPECT_FALSE(Contains(site.Error(), "attempt ")) << site.Error();
    EXPECT_EQ(site.Depth(), 3);
    site.Set("--max-record", "200");
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

// ---- no room, as on a full disk

#if defined(__linux__)

const std::string kNoSpace = std::strerror(ENOSPC);

TEST_F(RestartableLoadFailure, T2_AFullTargetDiskEndsTheLifeAndTheSameCommandCompletesWhenThereIsRoom) {
    LoadSite& first = Add("first", 10);
    fs::create_symlink("/dev/full", first.Path("full"));
    first.Set("--to", first.Path("full"));
    first.Run();
    EXPECT_EQ(first.Result().exitCode, 1);
    EXPECT_TRUE(Contains(first.Error(), "is not a file")) << first.Error();

    // The load reaches a limit on the size of a file in the middle. Only the error differs from that of a
    // full disk.
    LoadSite& site = Add("limited", 0);
    for (int i = 0; i < 300; ++i)
        site.Put(std::to_string(i) + std::string(100, 'x'));
    site.Set("--checkpoint-every", "20");
    site.StartWithFileLimit(16);
    site.Wait();
    EXPECT_EQ(site.Result().exitCode, 3) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "mqam load: cannot write to " + site.Target() + ": ")) << site.Error();
    EXPECT_TRUE(
        Contains(site.Error(), "  next      fix that, then run the same command again: it resumes there\n"))
        << site.Error();
    EXPECT_GT(std::stoi(site.Stored("records")), 0);
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadFailure, AFullDiskUnderTheRestartFileEndsTheLifeAndTheSameCommandCompletes) {
    LoadSite& begin = Add("begin", 10);
    fs::create_symlink("/dev/full", begin.RestartFile() + ".new");
    begin.Run();
    EXPECT_EQ(begin.Result().exitCode, 3);
    EXPECT_TRUE(Contains(begin.Error(),
                         "mqam load: cannot replace restart file " + begin.RestartFile() + ": " + kNoSpace +
                             "\n  safe      nothing was loaded: every message is on the queue\n  next      "
                             "fix that, then run the same command again\n"))
        << begin.Error();
    EXPECT_EQ(begin.Depth(), 10);
    EXPECT_FALSE(fs::exists(begin.Target()));

    LoadSite& middle = Add("middle", 10, "MQCMIT 5 kill after");
    ASSERT_EQ(middle.Run().exitCode, 9) << middle.Error();
    const std::string before = ReadFileIfAny(middle.RestartFile());
    fs::create_symlink("/dev/full", middle.RestartFile() + ".new");
    middle.PlanFaults("");
    middle.Run();
    EXPECT_EQ(middle.Result().exitCode, 3) << middle.Error();
    EXPECT_TRUE(Contains(middle.Error(), kNoSpace)) << middle.Error();
    EXPECT_EQ(ReadFileIfAny(middle.RestartFile()), before);

    // A full disk may have room again. With --retry-for the command waits for that, even before the first
    // attempt has begun anything.
    begin.Start({"--retry-for", "60"});
    ASSERT_TRUE(begin.Program().WaitForError("mqam load: attempt 1 in 1 s"));
    for (LoadSite* site : {&begin, &middle})
        fs::remove(site->RestartFile() + ".new");
    begin.Wait();
    EXPECT_TRUE(begin.IsDone());
    RunAllAgain();
    EXPECT_TRUE(begin.IsDone(11));
    EXPECT_TRUE(middle.IsDone());
}

// The target may exist nevertheless: with --append it would be cut back to nothing, and without it a new file
// would replace it.
TEST_F(RestartableLoadFailure, ATargetThatTheSystemDoesNotTellAboutIsNotTakenForNone) {
    LoadSite& site = Add("loop", 3);
    for (const char* option : {"--append", "--force"}) {
        fs::create_symlink(site.Target(), site.Target());
        site.Run({option});
        EXPECT_EQ(site.Result().exitCode, 3) << site.Error();
        EXPECT_EQ(site.Error(), "mqam load: " + site.Target() +
                                    " cannot be examined: " + std::strerror(ELOOP) +
                                    "\n  safe      nothing was loaded: every message is on the queue\n"
                                    "  next      fix that, then run the same command again\n");
        EXPECT_EQ(site.Depth(), 3);
        fs::remove(site.Target());
    }
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadFailure, ALockThatCannotBeMadeIsTriedAgain) {
    LoadSite& site = Add("lock", 3);
    fs::create_directory(site.CheckpointLock());
    site.Start({"--retry-for", "60"});
    ASSERT_TRUE(site.Program().WaitForError(
        "mqam-checkpoint.lock cannot be created or locked: Is a directory; check that "));
    fs::remove(site.CheckpointLock());
    site.Wait();
    EXPECT_TRUE(site.IsDone());
    EXPECT_GE(CountOf(site.Error(), "mqam load: attempt "), 1) << site.Error();
}

TEST_F(RestartableLoadFailure, RestartInformationThatCannotBeReadIsTriedAgainAndNothingIsSaidOfWhatIsLoaded) {
    LoadSite& site = Add("unread", 10, "MQCMIT 5 kill after");
    ASSERT_EQ(site.Run().exitCode, 9) << site.Error();
    site.PlanFaults("");
    const std::string aside = site.RestartFile() + ".aside";
    fs::rename(site.RestartFile(), aside);
    fs::create_symlink(site.RestartFile(), site.RestartFile());
    const std::string complaint =
        "mqam load: restart file " + site.RestartFile() + " cannot be read: " + std::strerror(ELOOP) + "\n";
    site.Run();
    EXPECT_EQ(site.Result().exitCode, 3) << site.Error();
    EXPECT_EQ(site.Error(),
              complaint +
                  "  safe      what is loaded stays loaded; how much that is cannot be known while the "
                  "restart information cannot be read\n"
                  "  next      fix that, then run the same command again\n");
    site.Start({"--retry-for", "60"});
    ASSERT_TRUE(site.Program().WaitForError(complaint + "mqam load: attempt 1 in 1 s\n"));
    fs::rename(aside, site.RestartFile());
    site.Wait();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadFailure, H10_AFullDiskUnderTheCheckpointFileEndsTheLifeAndTheSameCommandCompletes) {
    // The program buffers the target, but not the checkpoint file.
    LoadSite& site = Add("saved", 0);
    for (int i = 0; i < 300; ++i)
        site.Put(std::to_string(i) + std::string(100, 'x'));
    site.Set("--checkpoint-every", "1000");
    site.LeaveOutJournal();
    site.StartWithFileLimit(16);
    site.Wait();
    EXPECT_EQ(site.Result().exitCode, 9) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  file      Checkpoint\n")) << site.Error();
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadFailure, AFullDiskUnderTheJournalCommitsNothingAndTheSameCommandCompletes) {
    LoadSite& site = Add("journal", 0);
    for (int i = 0; i < 300; ++i)
        site.Put(std::to_string(i) + std::string(100, 'x'));
    site.Set("--checkpoint-every", "1000");
    site.StartWithFileLimit(16);
    site.Wait();
    EXPECT_EQ(site.Result().exitCode, 3) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "the journal of the checkpoint file cannot be written: " +
                                           site.CheckpointFile() + ".journal: "))
        << site.Error();
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

#endif

}  // namespace
