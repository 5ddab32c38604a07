// SPDX-License-Identifier: Apache-2.0

// Tests loads that can be restarted, with the real module and the stand-in queue manager. Some run to their
// end, others are ended in the middle.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <regex>
#include <thread>

#include "platform/system.h"
#include "tests/e2e/load_site.h"

namespace {

namespace fs = std::filesystem;

// These are more messages than a load reads before a test can react.
constexpr int kManyMessages = platform::kIsWindows ? 300 : 3000;

class RestartableLoad : public LoadSites {};

TEST_F(RestartableLoad, InOneGoItLeavesTheTargetAndAReceiptAndNothingElse) {
    LoadSite& usual = Add("usual", 10);
    LoadSite& empty = Add("empty", 0);
    LoadSite& one = Add("one", 1);
    LoadSite& exactly = Add("exactly-one-checkpoint", 3);
    LoadSite& logged = Add("logged", 10);
    logged.Set("--log", logged.Path("log"));
    LoadSite& quiet = Add("quiet", 10);
    quiet.Start({"--quiet"});
    quiet.Wait();
    EXPECT_EQ(quiet.Error(), "");
    EXPECT_TRUE(quiet.IsDone());
    sites_.pop_back();
    RunAll(sites_);
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
    EXPECT_EQ(usual.Stored("lives"), "2");
    EXPECT_EQ(usual.Stored("bytes"), std::to_string(usual.Lines().size() - 10));
    EXPECT_EQ(usual.Stored("target-length"), std::to_string(usual.Lines().size()));
    // The time that the load took depends on the machine.
    const std::string withoutTime =
        std::regex_replace(usual.Error(), std::regex("elapsed   [0-9]+:[0-9][0-9]\n"), "elapsed   TIME\n");
    EXPECT_EQ(withoutTime, "mqam load: end of the queue: the load is done\n  records   10\n  bytes     " +
                               usual.Stored("bytes") + "\n  begun     " + usual.Stored("begun") +
                               "\n  attempts  2\n  elapsed   TIME\n  target    " + usual.Target() + "\n");
    EXPECT_EQ(empty.Stored("records"), "0");
    EXPECT_EQ(one.Stored("records"), "1");
    EXPECT_EQ(exactly.Stored("records"), "3");
    EXPECT_FALSE(fs::exists(logged.Path("log")));
}

TEST_F(RestartableLoad, PathsMayHoldBlanksAndBeRelative) {
    LoadSite& blanks = Add("blanks", 5, "MQCMIT 4 kill before");
    fs::create_directory(blanks.Path("a folder"));
    blanks.Set("--to", blanks.Path("a folder/the target"));
    blanks.Set("--restart-file", blanks.Path("a folder/the restart file"));
    LoadSite& relative = Add("relative", 5, "MQCMIT 4 kill before");
    relative.Set("--ckfile", "ck");
    relative.Set("--to", "./out");
    relative.Set("--restart-file", "../relative/restart");
    const fs::path before = fs::current_path();
    fs::current_path(relative.Folder());
    for (int run = 1; run <= 2; ++run) {
        RunAll(sites_);
        for (const auto& site : sites_) {
            EXPECT_EQ(site->Result().exitCode, run == 1 ? 9 : 0) << site->Error();
            site->PlanFaults("");
        }
    }
    fs::current_path(before);
    EXPECT_EQ(ReadFileIfAny(blanks.Path("a folder/the target")), blanks.Lines());
    EXPECT_EQ(relative.Stored("target"), relative.Target());
    EXPECT_EQ(relative.Stored("checkpoint-file"), relative.CheckpointFile());
    EXPECT_TRUE(relative.IsDone());
}

TEST_F(RestartableLoad, EveryFormatComesBackTheSame) {
    const std::string message("\0\n\r\x1a%", 5);
    const std::map<std::string, std::string> frames = {
        {"lines", message + "\n"}, {"length", std::string("\5\0\0\0", 4) + message}, {"raw", message}};
    for (const auto& [format, frame] : frames) {
        LoadSite& site = Add(format, 0, "MQCMIT 4 kill before");
        for (int i = 0; i < 7; ++i)
            site.Put(message + std::to_string(i));
        site.Set("--format", format);
    }
    RunAll(sites_);
    for (const auto& site : sites_)
        EXPECT_EQ(site->Result().exitCode, 9) << site->Error();
    RunAllAgain();
    for (const auto& site : sites_) {
        std::string expected;
        for (const std::string& each : site->Messages()) {
            if (site->Name() == "length") expected += std::string("\6\0\0\0", 4);
            expected += each;
            if (site->Name() == "lines") expected += "\n";
        }
        EXPECT_EQ(site->Result().exitCode, 0) << site->Error();
        EXPECT_TRUE(ReadFileIfAny(site->Target()) == expected) << site->Name();
        EXPECT_EQ(site->Stored("format"), site->Name());
    }
}

// ---- killed

// The worker is killed at each place where an attempt can end without a message, and the same command
// continues.
TEST_F(RestartableLoad, H2_T1_AKilledWorkerCostsNoMessageAndDoublesNone) {
    const char* const places[] = {
        "MQCONNX 1 kill before", "MQCONNX 1 kill after", "MQOPEN 1 kill before", "MQOPEN 1 kill after",
        "MQGET 1 kill before",   "MQGET 1 kill after",   "MQGET 2 kill after",   "MQCMIT 1 kill before",
        "MQCMIT 1 kill after",   "MQCMIT 3 kill before", "MQCMIT 3 kill after",  "MQGET 4 kill before",
        "MQCMIT 4 kill before",  "MQCMIT 7 kill before", "MQGET 8 kill before",  "MQCMIT 10 kill after",
        "MQCLOSE 1 kill before", "MQDISC 1 kill before", "MQDISC 1 kill after",
    };
    for (const char* place : places)
        Add("place" + std::to_string(sites_.size()), 10, place);
    RunAll(sites_);
    for (std::size_t i = 0; i < sites_.size(); ++i) {
        EXPECT_EQ(sites_[i]->Result().exitCode, 9) << places[i] << "\n" << sites_[i]->Error();
        EXPECT_TRUE(Contains(sites_[i]->Error(), "mqam load: the worker process was killed"))
            << places[i] << "\n"
            << sites_[i]->Error();
        EXPECT_TRUE(Contains(sites_[i]->Error(), "  next      run the same command again")) << places[i];
    }
    RunAllAgain();
    for (std::size_t i = 0; i < sites_.size(); ++i)
        EXPECT_TRUE(sites_[i]->IsDone()) << places[i];
}

// A message is in the checkpoint file and arrives from the queue once more.
TEST_F(RestartableLoad, H6_ADuplicateBetweenSaveAndCommitIsLoadedOnce) {
    LoadSite& middle = Add("middle", 10, "MQCMIT 5 kill before");
    LoadSite& last = Add("last", 10, "MQCMIT 10 kill before");
    LoadSite& boundary = Add("boundary", 9, "MQCMIT 9 kill before");
    LoadSite& first = Add("first", 10, "MQCMIT 1 kill before");
    LoadSite& broken = Add("broken", 10, "MQCMIT 5 fail 2 2009");
    RunAll(sites_);
    for (const auto& site : sites_)
        EXPECT_EQ(site->Result().exitCode, 9) << site->Error();
    RunAllAgain();
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
    // The duplicate ends an attempt, and Close removes it from the queue.
    for (LoadSite* site : {&middle, &last, &boundary, &first, &broken})
        EXPECT_GT(std::stoi(site->Stored("lives")), 2) << site->Name();
}

TEST_F(RestartableLoad, H22_ATornRecordAtTheEndOfTheCheckpointFileIsCutOff) {
    LoadSite& site = Add("torn", 10, "MQCMIT 5 kill after");
    site.LeaveOutJournal();
    ASSERT_EQ(site.Run().exitCode, 9) << site.Error();
    const auto whole = fs::file_size(site.CheckpointFile());
    std::ofstream(site.CheckpointFile(), std::ios::binary | std::ios::app)
        << std::string("\x20\0\0\0\0\0\0\0torn", 12);
    site.PlanFaults("MQGET 1 kill before");
    site.Run();
    EXPECT_TRUE(Contains(site.Error(), "mqam load: repaired: truncate " + site.CheckpointFile() + " to " +
                                           std::to_string(whole) +
                                           " bytes (an incomplete record was never committed"))
        << site.Error();
    EXPECT_FALSE(Contains(site.Error(), "note from the module")) << site.Error();
    RunAllAgain();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoad, H7_ACheckpointFileThatAnInterruptedRewriteLeftWithoutARecordIsGoneOnFrom) {
    // The load is killed before any record follows checkpoint 2, so the rewrite is the last change of the
    // file.
    const std::pair<const char*, std::string> contents[] = {
        {"empty", ""},
        {"torn-header", std::string("\3\0", 2)},
        {"header-alone", std::string("\3\0\0\0", 4)},
        {"torn-record", std::string("\3\0\0\0\x20\0\0\0\0\0\0\0mess", 16)},
    };
    for (const auto& [name, bytes] : contents)
        Add(name, 10, "MQGET 7 kill before");
    RunAll(sites_);
    for (std::size_t i = 0; i < sites_.size(); ++i) {
        LoadSite& site = *sites_[i];
        ASSERT_EQ(site.Result().exitCode, 9) << site.Error();
        ASSERT_TRUE(site.Stored("position").starts_with("03000000")) << site.Stored("position");
        std::ofstream(site.CheckpointFile(), std::ios::binary) << contents[i].second;
    }
    RunAllAgain();
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
}

TEST_F(RestartableLoad, H8_ACheckpointFileThatARewriteHadDeletedComesBackFromItsTemporaryFile) {
    LoadSite& renamed = Add("renamed", 10, "MQGET 7 kill before");
    LoadSite& incomplete = Add("incomplete", 10, "MQGET 7 kill before");
    for (const auto& site : sites_)
        site->LeaveOutJournal();
    RunAll(sites_);
    for (const auto& site : sites_)
        ASSERT_EQ(site->Result().exitCode, 9) << site->Error();
    fs::rename(renamed.CheckpointFile(), renamed.Path("MQAMtmp.4711"));
    std::ofstream(incomplete.Path("MQAMtmp.4711"), std::ios::binary) << std::string("\3\0\0\0\x20\0", 6);
    RunAllAgain();
    EXPECT_TRUE(Contains(renamed.Error(), "mqam load: repaired: rename " + renamed.Path("MQAMtmp.4711")))
        << renamed.Error();
    EXPECT_TRUE(
        Contains(incomplete.Error(), "mqam load: repaired: delete " + incomplete.Path("MQAMtmp.4711")))
        << incomplete.Error();
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
}

TEST_F(RestartableLoad, AKilledCommandTakesItsWorkerWithItAndTheSameCommandGoesOn) {
    LoadSite& site = Add("killed", 10);
    site.Set("--rwait", "600");
    site.Start({"--verbose"});
    ASSERT_TRUE(site.Program().WaitForError("checkpoint 4 after 9 records"));
    site.Wait(0);
    EXPECT_EQ(site.Stored("records"), "9");
    site.Set("--rwait", "1");
    // The lock does not make the command fail: the worker is gone, or ends before the wait for the lock does.
    site.Run();
    EXPECT_TRUE(Contains(site.Error(), "mqam load: resuming the load begun " + site.Stored("begun") +
                                           ": 9 records are in " + site.Target() + "\n"))
        << site.Error();
    EXPECT_TRUE(site.IsDone());
}

// ---- stopped

TEST_F(RestartableLoad, AnInterruptEndsItWithEverythingReadStoredAndTheSameCommandGoesOn) {
    ASSERT_TRUE(RunningProgram::PrepareInterrupts());
    LoadSite& site = Add("interrupted", kManyMessages);
    site.Set("--checkpoint-every", "20");
    site.Start({"--verbose"});
    ASSERT_TRUE(site.Program().WaitForError("checkpoint 2 "));
    ASSERT_TRUE(site.Program().Interrupt());
    site.Wait();
    ASSERT_EQ(site.Result().exitCode, 5) << site.Error();
    EXPECT_EQ(CountOf(site.Error(), "finishing"), 1) << site.Error();
    EXPECT_EQ(CountOf(site.Error(), "mqam load: ended on request\n"), 1) << site.Error();
    const auto stored = static_cast<std::size_t>(std::stoi(site.Stored("records")));
    EXPECT_GE(stored, 20U);
    EXPECT_EQ(site.Depth(), kManyMessages - static_cast<int>(stored));
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines(stored));
    EXPECT_TRUE(Contains(site.Error(), " are in " + site.Target() + "; what was read after them is in " +
                                           site.CheckpointFile() +
                                           " or back on the queue\n"
                                           "  next      run the same command again: it resumes there\n"))
        << site.Error();
    site.Set("--checkpoint-every", "1000");
    RunAllAgain();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoad, AnInterruptEndsAnUnlimitedWaitWithWhatIsStoredAndTheSameCommandGoesOn) {
    ASSERT_TRUE(RunningProgram::PrepareInterrupts());
    LoadSite& site = Add("waiting", 10);
    site.Set("--rwait", "-1");
    site.Start({"--verbose"});
    // The last record is written to the target while the next Read waits.
    ASSERT_TRUE(WaitForText(site.Target(), site.Lines()));
    ASSERT_TRUE(site.Program().Interrupt());
    site.Wait();
    EXPECT_EQ(site.Result().exitCode, 5) << site.Error();
    EXPECT_EQ(CountOf(site.Error(), "mqam load: ended on request\n"), 1) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  safe      9 records are in " + site.Target() +
                                           "; what was read after them is in " + site.CheckpointFile()))
        << site.Error();
    EXPECT_EQ(site.Stored("records"), "9");
    site.Set("--rwait", "1");
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

#if !defined(_WIN32)

TEST_F(RestartableLoad, SigtermToTheCommandReachesTheWorkerAndCountsOnceHoweverManyAreSent) {
    LoadSite& site = Add("terminated", kManyMessages);
    site.Set("--checkpoint-every", "100");
    site.Start({"--verbose"});
    ASSERT_TRUE(site.Program().WaitForError("checkpoint 3 "));
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(site.Program().Signal(15));
    site.Wait();
    EXPECT_EQ(site.Result().exitCode, 5) << site.Error();
    EXPECT_EQ(CountOf(site.Error(), "finishing"), 1) << site.Error();
    RunAllAgain();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoad, AHangupEndsItAsSigtermDoesHoweverManyAreSent) {
    LoadSite& site = Add("hung-up", kManyMessages);
    site.Set("--checkpoint-every", "100");
    site.Start({"--verbose"});
    ASSERT_TRUE(site.Program().WaitForError("checkpoint 3 "));
    constexpr int kSighup = 1;
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(site.Program().Signal(kSighup));
    site.Wait();
    EXPECT_EQ(site.Result().exitCode, 5) << site.Error();
    EXPECT_EQ(CountOf(site.Error(), "finishing"), 1) << site.Error();
    RunAllAgain();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoad, ASecondInterruptStopsAtOnceAndTheSameCommandGoesOn) {
    LoadSite& site = Add("at-once", 10);
    site.Set("--rwait", "600");
    site.Start({"--verbose"});
    // The last record is written to the target while the next Read waits.
    ASSERT_TRUE(WaitForText(site.Target(), site.Lines()));
    ASSERT_TRUE(site.Program().Interrupt());
    ASSERT_TRUE(site.Program().WaitForError("press again to stop immediately"));
    // A second signal that arrives while the handler still runs for the first is not noticed.
    for (int i = 0; i < 200 && !Contains(ReadFileIfAny(site.Path("stderr")), "stopped immediately"); ++i) {
        ASSERT_TRUE(site.Program().Interrupt());
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    site.Wait();
    EXPECT_EQ(site.Result().exitCode, 7) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  safe      9 records are in " + site.Target())) << site.Error();
    site.Set("--rwait", "1");
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoad, AnInterruptBetweenTwoAttemptsEndsTheCommandOnRequest) {
    LoadSite& site = Add("pausing", 10, "MQCONNX * fail 2 2059");
    site.Start({"--retry-for", "600"});
    ASSERT_TRUE(site.Program().WaitForError("attempt 2 in 2 s"));
    ASSERT_TRUE(site.Program().Signal(15));
    site.Wait();
    EXPECT_EQ(site.Result().exitCode, 5) << site.Error();
    EXPECT_EQ(CountOf(site.Error(), "mqam load: ended on request\n"), 1) << site.Error();
    RunAllAgain();
    EXPECT_TRUE(site.IsDone());
}

#endif

TEST_F(RestartableLoad, TheTimeOutEndsItAndTheSameCommandGoesOn) {
    LoadSite& site = Add("timed-out", 10);
    site.Set("--rwait", "-1");
    site.Run({"--timeout", "5"});
    EXPECT_EQ(site.Result().exitCode, 6) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  safe      9 records are in " + site.Target())) << site.Error();
    site.Set("--rwait", "1");
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

// ---- two at a time

TEST_F(RestartableLoad, ASecondCommandAtTheSameTimeIsRefused) {
    LoadSite& site = Add("running", 10);
    site.Set("--rwait", "600");
    site.Start({"--verbose"});
    ASSERT_TRUE(site.Program().WaitForError("checkpoint 4 after 9 records"));
    fs::create_directory(site.Path("second"));
    RunningProgram same(MQAM_PROGRAM, site.Command(), site.Environment(), site.Path("second"));
    // The load has another restart file but the same checkpoint file.
    LoadSite& other = Add("other", 0);
    other.Set("--ckfile", site.CheckpointFile());
    other.Start();
    const ProgramResult refused = same.Wait();
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(ReportsHolder(refused.standardError, site.CommandLock()));
    other.Wait();
    EXPECT_EQ(other.Result().exitCode, 1);
    EXPECT_TRUE(ReportsHolder(other.Error(), site.CheckpointLock()));
    EXPECT_EQ(other.Files(), "");
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines());
    site.Wait(0);
    site.Set("--rwait", "1");
    site.Run();
    fs::remove_all(site.Path("second"));
    EXPECT_TRUE(site.IsDone());
}

// ---- checkpoints

TEST_F(RestartableLoad, WithoutACheckpointOptionOneIsTakenAfterEveryThousandRecords) {
    if (platform::kIsWindows) {
        GTEST_SKIP() << "thousands of messages take minutes under Wine";
    }
    LoadSite& site = Add("default", 2500);
    site.LeaveOut("--checkpoint-every");
    site.Run({"--verbose"});
    EXPECT_TRUE(Contains(site.Error(), "checkpoint 2 after 1000 records")) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "checkpoint 3 after 2000 records")) << site.Error();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoad, ByTimeACheckpointIsTakenWithTheFirstRecordAfterThePause) {
    LoadSite& site = Add("by-time", 2);
    site.LeaveOut("--checkpoint-every");
    site.Set("--rwait", "600");
    site.Start({"--verbose", "--checkpoint-seconds", "1"});
    ASSERT_TRUE(WaitForText(site.Target(), site.Lines()));
    EXPECT_EQ(site.Stored("records"), "0");
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    site.Put(1);
    EXPECT_TRUE(site.Program().WaitForError("checkpoint 2 after 3 records"));
    site.Wait(0);
    site.Set("--rwait", "1");
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

// ---- empty messages

TEST_F(RestartableLoad, H20_EmptyMessagesEndALifeEachAndTheLoadGoesOn) {
    LoadSite& between = Add("between", 0);
    LoadSite& first = Add("first", 0);
    LoadSite& last = Add("last", 5);
    LoadSite& alone = Add("alone", 0);
    for (int i = 0; i < 4; ++i) {
        between.Put(2);
        between.Put("");
        alone.Put("");
    }
    first.Put("");
    first.Put("");
    first.Put(5);
    last.Put("");
    RunAll(sites_);
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
}

TEST_F(RestartableLoad, H20_TooManyInARowAreGivenUpAndTheSameCommandGoesOn) {
    LoadSite& site = Add("many", 4);
    for (int i = 0; i < 25; ++i)
        site.Put("");
    site.Put(4);
    site.Run();
    EXPECT_EQ(site.Result().exitCode, 8) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "the input ended 20 times in a row")) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  safe      ")) << site.Error();
    EXPECT_TRUE(Contains(site.Error(), "  next      look at the queue, then run the same command again"))
        << site.Error();
    EXPECT_EQ(site.Depth(), 4 + 25 - 21);
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoad, H6_AQueueThatInhibitsGetIsNotTakenForAnEmptyOne) {
    LoadSite& always = Add("always", 5, "MQGET * fail 2 2016");
    LoadSite& middle = Add("middle", 5, "MQGET 3+ fail 2 2016");
    RunAll(sites_);
    EXPECT_EQ(always.Result().exitCode, 8) << always.Error();
    EXPECT_TRUE(Contains(always.Error(), "inhibits get")) << always.Error();
    EXPECT_EQ(always.Depth(), 5);
    // Once a message has come, the module reports the reason.
    EXPECT_EQ(middle.Result().exitCode, 9) << middle.Error();
    EXPECT_TRUE(Contains(middle.Error(), "  reason    2016 ")) << middle.Error();
    EXPECT_EQ(ReadFileIfAny(always.Target()), "");
    RunAllAgain();
    for (LoadSite* site : {&always, &middle})
        EXPECT_TRUE(site->IsDone());
}

}  // namespace
