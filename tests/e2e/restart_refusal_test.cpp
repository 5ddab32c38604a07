// SPDX-License-Identifier: Apache-2.0

// Tests what a restartable load refuses, and what it does when the same or another command is run again.
#include <gtest/gtest.h>
#include <algorithm>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/e2e/load_site.h"
#include "tests/support/checkpoint_bytes.h"

namespace {

namespace fs = std::filesystem;
using Arguments = LoadSite::Arguments;

constexpr int kNothingToDo = 11;

class RestartableLoadRefusal : public LoadSites {
  protected:
    // The lock of a killed worker remains as an empty file that locks no one out.
    static std::string FilesWithoutLocks(const LoadSite& site) {
        std::string files;
        std::istringstream names(site.Files());
        for (std::string name; names >> name;)
            if (!name.ends_with(".lock") && !name.ends_with(".load")) files += name + " ";
        return files;
    }

    // Checks that the command refuses immediately and says so, and that nothing on the disk or the queue
    // changes.
    static void ExpectRefusal(LoadSite& site, const Arguments& more, const std::string& words) {
        const std::string files = FilesWithoutLocks(site);
        const std::string target = ReadFileIfAny(site.Target());
        const std::string restart = ReadFileIfAny(site.RestartFile());
        const std::string checkpoint = ReadFileIfAny(site.CheckpointFile());
        const int depth = site.Depth();
        site.Run(more);
        EXPECT_EQ(site.Result().exitCode, 1) << site.Error();
        EXPECT_TRUE(Contains(site.Error(), words)) << words << "\n" << site.Error();
        EXPECT_TRUE(site.Error().starts_with("mqam load: ")) << site.Error();
        EXPECT_EQ(FilesWithoutLocks(site), files) << site.Error();
        EXPECT_TRUE(ReadFileIfAny(site.Target()) == target) << site.Error();
        EXPECT_TRUE(ReadFileIfAny(site.RestartFile()) == restart) << site.Error();
        EXPECT_TRUE(ReadFileIfAny(site.CheckpointFile()) == checkpoint) << site.Error();
        EXPECT_EQ(site.Depth(), depth);
    }
};

// ---- options

// The module reports a parameter in a line of at most 1,023 characters. A path that is cut there names
// another file.
TEST_F(RestartableLoadRefusal, ACheckpointPathThatTheModuleCannotReportInFull) {
    LoadSite& site = Add("long_path", 3);
    std::string path = site.Path("long");
    while (path.size() < 1100)
        path += "/" + std::string(std::min<std::size_t>(200, 1100 - path.size()), 'x');
    site.Set("--ckfile", path);
    ExpectRefusal(site, {}, "the value of 'Checkpoint' is too long");
    EXPECT_FALSE(std::filesystem::exists(site.Path("long")));
}

TEST_F(RestartableLoadRefusal, OptionsThatDoNotGoTogether) {
    LoadSite& site = Add("options", 3);
    ExpectRefusal(site, {"--preserve"},
                  "--preserve does not go with restart information: the checkpoint file stays "
                  "until the load is done, and is of no use after that\n");
    ExpectRefusal(site, {"--tdm", "no"}, "needs --tdm yes");
    ExpectRefusal(site, {"--keyword-help"}, "--keyword-help does not go with restart information");
    ExpectRefusal(site, {"--attribute", "PRESERVE_RESTART_INFO=NO"},
                  "--attribute PRESERVE_RESTART_INFO is put by the load itself");
    ExpectRefusal(site, {"--attribute", "nonsense"}, "'nonsense' is not of the form NAME=VALUE");
    ExpectRefusal(site, {"--log", site.CheckpointFile()}, "cannot be both checkpoint file and log");
    ExpectRefusal(site, {"--log", site.Target()}, "cannot be both target and log of the load");
    ExpectRefusal(site, {"--log", site.RestartFile()}, "cannot be both restart file and log of the load");
    site.Set("--ckfile", site.Target());
    ExpectRefusal(site, {}, "cannot be both target and checkpoint file of the load");
    site.Set("--ckfile", site.RestartFile());
    ExpectRefusal(site, {}, "cannot be both restart file and checkpoint file of the load");
    site.LeaveOut("--ckfile");
    site.Set("--ckfile", site.CheckpointFile());
    site.Set("--to", "-");
    ExpectRefusal(site, {}, "--ckfile does not go with --to -");
    site.Set("--to", site.RestartFile());
    ExpectRefusal(site, {}, "cannot be both target and restart file");
    site.Set("--to", site.Folder());
    ExpectRefusal(site, {}, "is not a file: a load that can be restarted needs one that can be truncated; ");
    site.Set("--to", site.Target());
    site.LeaveOut("--restart-file");
    site.LeaveOut("--ckfile");
    site.LeaveOut("--checkpoint-every");
    ExpectRefusal(
        site, {"--unprotected", "--checkpoint-seconds", "1"},
        "--checkpoint-seconds does not go with --unprotected: an unprotected load takes no checkpoints and "
        "cannot be resumed\n");
    ExpectRefusal(site, {"--unprotected", "--retry-for", "1"}, "--retry-for does not go with --unprotected");
    ExpectRefusal(site, {"--unprotected", "--restart", "only"}, "--restart does not go with --unprotected");
    EXPECT_EQ(site.Files(), "");
    EXPECT_EQ(site.Depth(), 3);
}

TEST_F(RestartableLoadRefusal, ValuesThatTheCommandLineDoesNotKnow) {
    LoadSite& site = Add("values", 1);
    const std::pair<const char*, const char*> values[] = {
        {"--restart", "sometimes"},  {"--checkpoint-seconds", "0"}, {"--checkpoint-seconds", "x"},
        {"--checkpoint-every", "0"}, {"--retry-for", "0"},          {"--retry-for", "-1"},
    };
    for (const auto& [option, value] : values) {
        site.LeaveOut("--checkpoint-every");
        site.Run({option, value});
        EXPECT_EQ(site.Result().exitCode, 1) << option << " " << value;
        EXPECT_TRUE(Contains(site.Error(), option)) << site.Error();
    }
    EXPECT_EQ(site.Files(), "");
}

TEST_F(RestartableLoadRefusal, HelpShowsTheOptionsAndNotThoseOfTheWorker) {
    const ProgramResult help = RunProgram(MQAM_PROGRAM, {"load", "--help"}, folder_.Root());
    EXPECT_EQ(help.exitCode, 0);
    for (const char* option : {"--restart-file FILE", "--restart auto|never|only", "--retry-for SECONDS",
                               "--checkpoint-seconds S", "sqlite:FILE?table=NAME", "\n  9  "})
        EXPECT_TRUE(Contains(help.standardOutput, option)) << option;
    EXPECT_FALSE(Contains(help.standardOutput, "--worker"));
}

// ---- --restart

TEST_F(RestartableLoadRefusal, RestartNeverAndOnlyInEveryState) {
    LoadSite& none = Add("none", 4);
    ExpectRefusal(
        none, {"--restart", "only"},
        "mqam load: no load is unfinished (--restart only): there is none in " + none.RestartFile() + "\n");

    LoadSite& unfinished = AddUnfinished("unfinished");
    ExpectRefusal(
        unfinished, {"--restart", "never"},
        "mqam load: a load begun " + unfinished.Stored("begun") +
            " is unfinished (--restart never): 3 records are loaded; run the command without --restart never to resume it\n");

    // No record was read with this state yet.
    LoadSite& notBegun = Add("not-begun", 4, "MQCONNX 1 fail 2 2059");
    EXPECT_EQ(notBegun.Run().exitCode, 9) << notBegun.Error();
    notBegun.PlanFaults("");
    ExpectRefusal(notBegun, {"--restart", "only"}, "no load is unfinished (--restart only)");

    none.Start({"--restart", "never"});
    unfinished.Start({"--restart", "only"});
    notBegun.Start({"--restart", "never"});
    for (LoadSite* site : {&none, &unfinished, &notBegun}) {
        site->Wait();
        EXPECT_TRUE(site->IsDone());
    }
    // Now all loads are complete: either command finds the completion marker.
    for (const char* policy : {"only", "never", "auto"}) {
        none.Run({"--restart", policy});
        EXPECT_TRUE(none.IsDone(kNothingToDo));
        EXPECT_TRUE(Contains(none.Error(), "this load is already complete, so nothing was loaded now"))
            << none.Error();
    }
    fs::remove(none.Target());
    none.Run({"--restart", "only"});
    EXPECT_EQ(none.Result().exitCode, 1);
    EXPECT_TRUE(Contains(none.Error(), "no load is unfinished (--restart only): the one in " +
                                           none.RestartFile() + " is complete\n"))
        << none.Error();
}

// The load itself creates files next to those that it was given, and replaces or deletes them.
TEST_F(RestartableLoadRefusal, AFileThatTheLoadMakesBesideItsOwnAsAFileOfTheLoad) {
    LoadSite& site = Add("beside", 3);
    const std::string words = " of the load: give each a name of its own\n";
    for (const char* suffix : {".new", ".lock", ".life.lock"}) {
        const std::string path = site.RestartFile() + suffix;
        site.Set("--to", path);
        ExpectRefusal(
            site, {},
            "mqam load: " + path + " cannot be both target and work file of the restart file" + words);
        site.Set("--to", site.Target());
        site.Set("--ckfile", path);
        ExpectRefusal(site, {},
                      path + " cannot be both work file of the restart file and checkpoint file" + words);
        site.Set("--ckfile", site.CheckpointFile());
        ExpectRefusal(site, {"--log", path},
                      path + " cannot be both work file of the restart file and log" + words);
    }
    const std::string lock = site.CheckpointLock();
    site.Set("--to", lock);
    ExpectRefusal(site, {}, lock + " cannot be both target and lock of the checkpoint file" + words);
    site.Set("--to", site.Target());
    ExpectRefusal(site, {"--log", lock},
                  lock + " cannot be both lock of the checkpoint file and log" + words);
    EXPECT_EQ(site.Files(), "");
    EXPECT_EQ(site.Depth(), 3);

    // The file has another name, which the module does not report.
    std::ofstream(site.Target()) << "";
    fs::create_hard_link(site.Target(), site.Path("another-name"));
    site.Set("--ckfile", site.Path("another-name"));
    ExpectRefusal(site, {"--force"}, " cannot be both target and checkpoint file" + words);
    fs::remove(site.Path("another-name"));
    site.Set("--ckfile", site.CheckpointFile());
    std::ofstream(site.RestartFile() + ".life.lock") << "somebody's";
    ExpectRefusal(site, {}, ".life.lock is not the lock of a load, because it has other contents");
    EXPECT_EQ(ReadFileIfAny(site.RestartFile() + ".life.lock"), "somebody's");
}

// ---- which load it is

TEST_F(RestartableLoadRefusal, H18_TheRestartFileOfAnotherLoad) {
    LoadSite& site = AddUnfinished("first");
    fs::create_directories(fs::path(site.Folder()) / "spool" / "QM1" / "Q2");
    fs::create_directories(fs::path(site.Folder()) / "spool" / "QM2" / "Q1");
    const std::string other = site.Path("other");
    std::ofstream(other) << "somebody's";
    const auto expect = [&site](const char* option, const std::string& value, const std::string& words) {
        const auto before = site.Command();
        const auto at = std::find(before.begin(), before.end(), option);
        ASSERT_NE(at, before.end());
        site.Set(option, value);
        ExpectRefusal(site, {"--force"},
                      "mqam load: " + site.RestartFile() + " belongs to an unfinished load with " + words +
                          ": finish that load with its own command first, or keep the restart information of "
                          "this load elsewhere\n");
        site.Set(option, *(at + 1));
    };
    expect("--queue", "Q2", "queue Q1, not Q2");
    expect("--qmgr", "QM2", "queue manager QM1, not QM2");
    expect("--ckfile", other, "checkpoint file " + site.CheckpointFile() + ", not " + other);
    expect("--to", other, "target " + site.Target() + ", not " + other);
    site.Set("--format", "lines");
    expect("--format", "raw", "format lines, not raw");
    EXPECT_EQ(ReadFileIfAny(other), "somebody's");
    fs::remove(other);
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadRefusal, H18_TheCheckpointFileOfAnotherLoad) {
    LoadSite& foreign = AddUnfinished("foreign", "process");
    LoadSite& backup = AddUnfinished("backup", "process");
    LoadSite& newer = AddUnfinished("newer", "process");
    const std::string good = ReadFileIfAny(foreign.CheckpointFile());

    // The checkpoint is the same, but the record is another one.
    std::string bytes = good;
    bytes[bytes.find("message 3")] = 'M';
    WriteBytesTo(foreign.CheckpointFile(), bytes);
    ExpectRefusal(
        foreign, {},
        "the first record of the checkpoint file is not the last one loaded: the checkpoint file or " +
            foreign.RestartFile() +
            " is another load's or a backup; nothing was loaded. Restore the right file and run "
            "the same command again\n");
    WriteBytesTo(foreign.CheckpointFile(), good);

    const std::string ofBackup = ReadFileIfAny(backup.CheckpointFile());
    WriteBytesTo(backup.CheckpointFile(), CheckpointBytes(-1, {"x"}));
    ExpectRefusal(backup, {}, "the file is older than the position, another load's or a backup");
    WriteBytesTo(backup.CheckpointFile(), ofBackup);

    const std::string ofNewer = ReadFileIfAny(newer.CheckpointFile());
    WriteBytesTo(newer.CheckpointFile(), CheckpointBytes(3, {"x"}));
    ExpectRefusal(newer, {}, "the file is newer");
    WriteBytesTo(newer.CheckpointFile(), ofNewer);

    RunAll(sites_);
    for (const auto& site : sites_)
        EXPECT_TRUE(site->IsDone());
}

TEST_F(RestartableLoadRefusal, RecordsInACheckpointFileWithoutRestartInformation) {
    LoadSite& records = Add("records", 3);
    WriteBytesTo(records.CheckpointFile(), CheckpointBytes(4, {"a", "b"}));
    ExpectRefusal(records, {}, "contains 2 records, possibly the only copies, but no position is stored");
    LoadSite& temporary = Add("temporary", 3);
    WriteBytesTo(temporary.Path("MQAMtmp.77"), CheckpointBytes(4, {"a", "b"}));
    ExpectRefusal(temporary, {}, "may contain records of another load");
    LoadSite& log = Add("log", 3);
    std::ofstream(log.Path("log")) << "messages";
    ExpectRefusal(log, {"--log", log.Path("log")}, "the log of another load would be overwritten");
    EXPECT_EQ(ReadFileIfAny(log.Path("log")), "messages");
    // The same holds for a load that was begun without the log and is resumed with it.
    LoadSite& later = AddUnfinished("later");
    std::ofstream(later.Path("log")) << "messages";
    ExpectRefusal(later, {"--log", later.Path("log")}, "the log of another load would be overwritten");
    EXPECT_EQ(ReadFileIfAny(later.Path("log")), "messages");
}

TEST_F(RestartableLoadRefusal, H8_ACheckpointFileThatIsMissingAlthoughAPositionIsStored) {
    LoadSite& site = AddUnfinished("missing", "process");
    fs::rename(site.CheckpointFile(), site.Path("aside"));
    ExpectRefusal(
        site, {},
        site.CheckpointFile() +
            " is missing although a position is stored: it contained the records that came after the position; restore the file at this path and run the same command again, or add --accept-loss to continue "
            "without the records that are lost\n");
    EXPECT_FALSE(fs::exists(site.CheckpointFile()));
    fs::rename(site.Path("aside"), site.CheckpointFile());
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadRefusal, ADamagedRestartFileOrCheckpointFile) {
    LoadSite& site = AddUnfinished("damaged", "process");
    const std::string restart = ReadFileIfAny(site.RestartFile());
    const std::string checkpoint = ReadFileIfAny(site.CheckpointFile());
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{1}, restart.size() / 2, restart.size() - 1}) {
        WriteBytesTo(site.RestartFile(), restart.substr(0, bytes));
        ExpectRefusal(site, {"--force"}, "mqam load: restart file " + site.RestartFile() + " is ");
        EXPECT_TRUE(Contains(site.Error(), "restore an undamaged copy")) << site.Error();
    }
    std::string turned = restart;
    turned[turned.find("records=3") + 8] = '2';
    WriteBytesTo(site.RestartFile(), turned);
    ExpectRefusal(site, {}, "is damaged: its checksum does not match its lines");
    WriteBytesTo(site.RestartFile(), restart);

    std::string length = checkpoint;
    length[5] = '\x7F';
    WriteBytesTo(site.CheckpointFile(), length);
    ExpectRefusal(site, {}, site.CheckpointFile() + " is damaged: ");
    EXPECT_TRUE(Contains(site.Error(), "`mqam checkpoint verify " + site.CheckpointFile() + "`"))
        << site.Error();
    WriteBytesTo(site.CheckpointFile(), checkpoint);
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

// ---- the target

TEST_F(RestartableLoadRefusal, T1_ATargetThatIsShorterThanStoredOrGone) {
    LoadSite& site = AddUnfinished("shorter");
    const std::string target = ReadFileIfAny(site.Target());
    const std::string stored = site.Stored("target-length");
    ASSERT_EQ(stored, std::to_string(site.Lines(3).size()));
    fs::resize_file(site.Target(), site.Lines(3).size() - 1);
    ExpectRefusal(site, {"--force"},
                  "mqam load: " + site.Target() + " has " + std::to_string(site.Lines(3).size() - 1) +
                      " bytes, but the load had written " + stored +
                      " bytes to disk: something else has changed the file; restore it and run the same "
                      "command again\n");
    fs::remove(site.Target());
    ExpectRefusal(site, {}, site.Target() + " is missing, but the load had written ");
    WriteBytesTo(site.Target(), target);
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadRefusal, T1_ATargetThatIsLongerThanStoredIsCutBack) {
    LoadSite& site = AddUnfinished("longer");
    std::ofstream(site.Target(), std::ios::app) << std::string(5000, 'x');
    site.Run();
    EXPECT_TRUE(site.IsDone());
}

TEST_F(RestartableLoadRefusal, ATargetThatHoldsSomethingNeedsForceOrAppend) {
    LoadSite& forced = Add("forced", 4);
    LoadSite& appended = Add("appended", 4, "MQCMIT 4 kill before");
    LoadSite& empty = Add("empty", 4);
    for (LoadSite* site : {&forced, &appended})
        std::ofstream(site->Target(), std::ios::binary) << "earlier\n";
    std::ofstream(empty.Target()) << "";
    ExpectRefusal(forced, {},
                  "mqam load: " + forced.Target() +
                      " is not empty; give --force to replace it, or --append to add to it\n");
    forced.Start({"--force"});
    empty.Start();
    EXPECT_EQ(appended.Run({"--append"}).exitCode, 9) << appended.Error();
    appended.PlanFaults("");
    appended.Run({"--append"});
    for (LoadSite* site : {&forced, &empty}) {
        site->Wait();
        EXPECT_TRUE(site->IsDone());
    }
    EXPECT_EQ(appended.Result().exitCode, 0) << appended.Error();
    EXPECT_EQ(ReadFileIfAny(appended.Target()), "earlier\n" + appended.Lines());
}

// ---- a load that is complete

TEST_F(RestartableLoadRefusal, TheSameCommandAgainTellsThatTheLoadIsCompleteAndDestroysNothing) {
    LoadSite& site = Add("complete", 4);
    site.Run();
    ASSERT_TRUE(site.IsDone());
    const std::string receipt = ReadFileIfAny(site.RestartFile());
    for (const Arguments& more : {Arguments{}, Arguments{"--force"}, Arguments{"--quiet"}}) {
        site.Run(more);
        EXPECT_TRUE(site.IsDone(kNothingToDo));
        EXPECT_EQ(
            site.Error(),
            "mqam load: this load is already complete, so nothing was loaded now: it began " +
                site.Stored("begun") + " and put 4 records into " + site.Target() +
                "\n  next      to load more into it, give --append; to load from scratch, move it away, and leave what is kept of the load (" +
                site.RestartFile() + ")\n");
        EXPECT_EQ(ReadFileIfAny(site.RestartFile()), receipt);
    }
    // Messages that arrived in the meantime stay on the queue until someone decides.
    site.Put(2);
    site.Run();
    EXPECT_EQ(site.Result().exitCode, kNothingToDo);
    EXPECT_EQ(site.Depth(), 2);
    site.Run({"--append"});
    EXPECT_EQ(site.Result().exitCode, 0) << site.Error();
    EXPECT_EQ(ReadFileIfAny(site.Target()), site.Lines());
    EXPECT_EQ(site.Stored("records"), "2");
}

TEST_F(RestartableLoadRefusal, AReceiptDoesNotStandInTheWayOfAnotherLoad) {
    LoadSite& moved = Add("moved", 4);
    LoadSite& queue = Add("queue", 4);
    LoadSite& restart = Add("restart", 4);
    RunAll(sites_);
    for (const auto& site : sites_)
        ASSERT_TRUE(site->IsDone());
    // The target was moved away, so a new load can use its name.
    fs::rename(moved.Target(), moved.Path("archive"));
    // Nothing was loaded from the other queue into this target, so the load must not be called complete.
    fs::create_directory(fs::path(queue.Folder()) / "spool" / "QM1" / "Q2");
    queue.Set("--queue", "Q2");
    ExpectRefusal(queue, {}, queue.Target() + " is not empty; give --force to replace it");
    // The completion marker was deleted, so the target counts as any other that is not empty.
    fs::remove(restart.RestartFile());
    ExpectRefusal(restart, {}, restart.Target() + " is not empty");
    RunAll(sites_, {"--force"});
    for (const auto& site : sites_) {
        EXPECT_EQ(site->Result().exitCode, 0) << site->Error();
        EXPECT_EQ(ReadFileIfAny(site->Target()), "") << site->Name();
        EXPECT_EQ(site->Stored("records"), "0");
    }
    EXPECT_EQ(ReadFileIfAny(moved.Path("archive")), moved.Lines());
}

// The command was killed after the last record: the state that is stored is complete, and only the output is
// missing.
TEST_F(RestartableLoadRefusal, H24_ALoadThatIsFinishedIsCleanedUpByTheNextCommand) {
    LoadSite& site = Add("finished", 4);
    site.Set("--log", site.Path("log"));
    site.Run();
    ASSERT_TRUE(site.IsDone());
    std::string text = ReadFileIfAny(site.RestartFile());
    const std::size_t phase = text.find("phase=complete");
    ASSERT_NE(phase, std::string::npos);
    text.replace(phase, 14, "phase=finished");
    text.resize(text.rfind("checksum="));
    char checksum[32];
    std::uint64_t digest = 0xcbf29ce484222325U;
    for (const char c : text)
        digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    std::snprintf(checksum, sizeof checksum, "checksum=%016llx\n", static_cast<unsigned long long>(digest));
    WriteBytesTo(site.RestartFile(), text + checksum);
    WriteBytesTo(site.CheckpointFile(), CheckpointBytes(3, {"message 4 of finished"}));
    std::ofstream(site.Path("log")) << "messages";
    site.Run();
    EXPECT_TRUE(Contains(site.Error(), "this load is already complete")) << site.Error();
    EXPECT_TRUE(site.IsDone(kNothingToDo));
}

}  // namespace
