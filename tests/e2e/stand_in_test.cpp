// SPDX-License-Identifier: Apache-2.0

// Runs mqam with the real module and the stand-in queue manager: complete loads from a queue's directory into
// a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/system.h"
#include "tests/support/json_values.h"
#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"
#include "tests/support/text_search.h"

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

// These are bytes of every value, so that line ends, NULs and Ctrl-Z are among them.
std::string BinaryMessage(std::size_t length, unsigned seed) {
    std::string bytes(length, '\0');
    for (char& c : bytes) {
        seed = seed * 1664525U + 1013904223U;
        c = static_cast<char>(seed >> 24);
    }
    return bytes;
}

std::string LengthBefore(const std::string& record) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(record.size() >> shift & 0xFF);
    return bytes + record;
}

class SpoolLoad : public testing::Test {
  protected:
    void SetUp() override { fs::create_directories(fs::path(Queue())); }

    [[nodiscard]] std::string Path(const std::string& name) const { return folder_.Path(name); }
    [[nodiscard]] std::string Queue() const { return Path("spool") + "/QM1/Q1"; }

    // Puts a message as a file in the queue's directory. The names of the files keep the order of the calls.
    void Put(const std::string& message) {
        char name[64];
        std::snprintf(name, sizeof name, "/20260101-000000-%09d.msg", ++puts_);
        std::ofstream(Queue() + name, std::ios::binary) << message;
    }

    // Returns the number of messages in the queue's directory.
    [[nodiscard]] int Depth() const {
        const auto isMessage = [](const fs::directory_entry& entry) {
            return entry.is_regular_file() && entry.path().extension() == ".msg";
        };
        return static_cast<int>(
            std::count_if(fs::directory_iterator(Queue()), fs::directory_iterator(), isMessage));
    }

    [[nodiscard]] std::map<std::string, std::string> Environment() const {
        std::map<std::string, std::string> environment = {{"SPOOLMQ_DIR", Path("spool")},
                                                          {"MQAMOD_MQ_LIBRARY", SPOOLMQ_LIBRARY}};
        if (!faults_.empty()) environment["SPOOLMQ_FAULTS"] = faults_;
        return environment;
    }

    [[nodiscard]] static Arguments LoadArguments(const Arguments& more) {
        Arguments arguments = {"load", "--qmgr", "QM1", "--queue", "Q1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    [[nodiscard]] ProgramResult Load(const Arguments& more) const {
        return RunProgram(MQAM_PROGRAM, LoadArguments(more), folder_.Root(), Environment());
    }

    TestDirectory folder_;
    std::string faults_;
    int puts_ = 0;
};

TEST_F(SpoolLoad, LinesAreByteExact) {
    Put("first");
    Put("second, with a carriage return\r");
    Put("3");
    const ProgramResult result = Load({"--rwait", "1", "--to", Path("out"), "--unprotected"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "first\nsecond, with a carriage return\r\n3\n");
    EXPECT_TRUE(Contains(result.standardError, "end of the queue\n  records   3\n")) << result.standardError;
    EXPECT_EQ(Depth(), 0);
}

TEST_F(SpoolLoad, LinesWarnAboutRecordsThatContainLineFeeds) {
    for (const Arguments& protection : std::vector<Arguments>{{}, {"--unprotected"}}) {
        Put("one\ntwo");
        Put("three");
        Put("four\n");
        Arguments arguments = {"--rwait", "1", "--to", Path("out"), "--force"};
        arguments.insert(arguments.end(), protection.begin(), protection.end());
        const ProgramResult result = Load(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        EXPECT_EQ(ReadFileIfAny(Path("out")), "one\ntwo\nthree\nfour\n\n");
        EXPECT_TRUE(Contains(
            result.standardError,
            "mqam load: warning: 2 of the records just written contain line feeds and take several lines; use "))
            << result.standardError;
    }
}

TEST_F(SpoolLoad, ALineFeedEndsTheLoadOnRequestAndTheRecordIsNotLost) {
    Put("one");
    Put("two\nthree");
    ProgramResult result = Load({"--rwait", "1", "--to", Path("out"), "--on-newline", "fail"});
    EXPECT_EQ(result.exitCode, 3) << result.standardError;
    EXPECT_TRUE(Contains(
        result.standardError,
        "mqam load: record 2 of the load contains a line feed, and --on-newline fail refuses it; use "))
        << result.standardError;
    result = Load({"--rwait", "1", "--to", Path("out"), "--on-newline", "keep"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "one\ntwo\nthree\n");
}

TEST_F(SpoolLoad, OneFileForTwoUsesIsRefused) {
    for (const Arguments& use :
         std::vector<Arguments>{{"--log", Path("out")}, {"--trace", "1", Path("out")}}) {
        Arguments arguments = {"--to", Path("out"), "--unprotected"};
        arguments.insert(arguments.end(), use.begin(), use.end());
        const ProgramResult result = Load(arguments);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(Contains(result.standardError, "cannot be both")) << result.standardError;
        EXPECT_FALSE(fs::exists(Path("out")));
    }
}

TEST_F(SpoolLoad, OnNewlineIsRefusedWhereItHasNoEffect) {
    const ProgramResult result = Load({"--to", Path("out"), "--format", "json", "--on-newline", "escape"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(
        Contains(result.standardError, "--on-newline has an effect only with --format lines; leave it out"))
        << result.standardError;
}

TEST_F(SpoolLoad, LengthFormatIsByteExactForBinaryMessages) {
    std::string expected;
    unsigned seed = 1;
    for (const std::size_t length : {1U, 2U, 255U, 256U, 4096U, 65536U, 102400U}) {
        const std::string message = BinaryMessage(length, ++seed);
        Put(message);
        expected += LengthBefore(message);
    }
    const ProgramResult result =
        Load({"--rwait", "1", "--format", "length", "--to", Path("out"), "--unprotected"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_TRUE(ReadFileIfAny(Path("out")) == expected);
}

TEST_F(SpoolLoad, RawBytesOnStandardOutputAreExactAndAlone) {
    std::string expected;
    for (unsigned i = 0; i < 20; ++i) {
        Put(BinaryMessage(700, i));
        expected += BinaryMessage(700, i);
    }
    const ProgramResult result = Load({"--rwait", "1", "--format", "raw", "--to", "-", "--verbose"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_TRUE(result.standardOutput == expected) << result.standardOutput.size();
}

TEST_F(SpoolLoad, UnknownQueueIsReason2085) {
    const ProgramResult result = RunProgram(
        MQAM_PROGRAM,
        {"load", "--qmgr", "QM1", "--queue", "NOSUCH", "--verbose", "--to", Path("out"), "--unprotected"},
        folder_.Root(), Environment());
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(
        result.standardError,
        "mqam load: the queue does not exist\n"
        "  message   MQOpen attempts exhausted. QName 'NOSUCH', reason code 2085 (Unknown queue name)\n"
        "  number    MQA0158\n"
        "  request   Open returned 34\n"
        "  function  PIDMMain\n"
        "  reason    2085 MQRC_UNKNOWN_OBJECT_NAME: "))
        << result.standardError;
    EXPECT_FALSE(fs::exists(Path("out")));
}

TEST_F(SpoolLoad, UnknownQueueManagerIsReason2058) {
    const ProgramResult result = RunProgram(
        MQAM_PROGRAM, {"load", "--qmgr", "NOSUCH", "--queue", "Q1", "--to", Path("out"), "--unprotected"},
        folder_.Root(), Environment());
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "  message   Error received from MQCONNX : 2058\n"))
        << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "  next      Check `--qmgr`")) << result.standardError;
}

TEST_F(SpoolLoad, MissingMqLibraryIsReason2495AndAdviceNamesTheVariable) {
    auto environment = Environment();
    environment["MQAMOD_MQ_LIBRARY"] = Path("none");
    const ProgramResult result = RunProgram(
        MQAM_PROGRAM, LoadArguments({"--to", Path("out"), "--unprotected"}), folder_.Root(), environment);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "  reason    2495 ")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "MQAMOD_MQ_LIBRARY")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "\n  tried     ")) << result.standardError;
    EXPECT_TRUE(
        Contains(result.standardError,
                 "\n  because   the environment variable MQAMOD_MQ_LIBRARY is set to " + Path("none") + "\n"))
        << result.standardError;
}

TEST_F(SpoolLoad, MessageLongerThanTheBufferStaysOnTheQueue) {
    Put("short");
    Put(std::string(200, 'x'));
    const ProgramResult result =
        Load({"--rwait", "1", "--max-record", "100", "--to", Path("out"), "--unprotected"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "  number    MQA0161\n")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "  call      MQGET\n")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "Raise `--max-record`")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "\n  length    the message has 200 bytes; its identifier is "))
        << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "\n  next      Run the same command with --max-record 200\n"))
        << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "short\n");
    EXPECT_EQ(Depth(), 1);
}

TEST_F(SpoolLoad, LogIsKeptWhenPreserved) {
    std::string all;
    for (int i = 1; i <= 5; ++i) {
        Put("message " + std::to_string(i));
        all += "message " + std::to_string(i);
    }
    const ProgramResult result = Load({"--rwait", "1", "--log", Path("log"), "--preserve", "--format", "raw",
                                       "--to", Path("out"), "--unprotected"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), all);
    EXPECT_EQ(ReadFileIfAny(Path("log")), all);
}

TEST_F(SpoolLoad, CheckpointFileOfAnUnfinishedLoadHasTheRecordsSinceTheLastCheckpoint) {
    for (int i = 1; i <= 5; ++i)
        Put("message " + std::to_string(i));
    faults_ = "MQCLOSE 1 kill before";
    const ProgramResult result = Load({"--rwait", "1", "--ckfile", Path("ck"), "--checkpoint-every", "2",
                                       "--verbose", "--format", "raw", "--to", Path("out")});
    EXPECT_EQ(result.exitCode, 9) << result.standardError;
    // The file consists of a header with sequence 3, the last record before that checkpoint, and the record after it.
    EXPECT_EQ(ReadFileIfAny(Path("ck")),
              std::string("\3\0\0\0\x09\0\0\0\0\0\0\0message 4\x09\0\0\0\0\0\0\0message 5", 38));
    EXPECT_TRUE(Contains(result.standardError, "checkpoint 1 after 0 records")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "checkpoint 3 after 4 records")) << result.standardError;
    EXPECT_FALSE(Contains(result.standardError, "checkpoint 4")) << result.standardError;
}

TEST_F(SpoolLoad, CheckpointFileAndLogAreGoneAfterALoadThatFinished) {
    Put("one");
    const ProgramResult result = Load({"--rwait", "1", "--ckfile", Path("ck"), "--log", Path("log"),
                                       "--checkpoint-every", "1", "--to", Path("out")});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_FALSE(fs::exists(Path("ck")));
    EXPECT_FALSE(fs::exists(Path("log")));
}

TEST_F(SpoolLoad, FilesWhosePathsHaveSlashesAreGoneAsWellAndNoneIsLeftBesideThem) {
    Put("one");
    const std::string folder = fs::path(Path("files")).generic_string();
    fs::create_directory(folder);
    const ProgramResult result =
        Load({"--rwait", "1", "--ckfile", folder + "/ck", "--log", folder + "/log", "--trace", "1",
              folder + "/trace", "--checkpoint-every", "1", "--to", Path("out")});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    std::string left;
    for (const auto& file : fs::directory_iterator(folder))
        left += file.path().filename().string() + ' ';
    EXPECT_EQ(left, "trace ");
    std::string temporary = ReadFileIfAny(folder + "/trace");
    temporary.erase(0, temporary.find("Temporary checkpoint file: '"));
    const fs::path beside = fs::path(folder).make_preferred() / "MQAMtmp.";
    EXPECT_EQ(temporary.find("Temporary checkpoint file: '" + beside.string()), 0U) << temporary;
}

TEST_F(SpoolLoad, MessageWhoseCommitFailedIsNeitherLostNorInTheTarget) {
    for (int i = 1; i <= 5; ++i)
        Put("message " + std::to_string(i));
    faults_ = "MQCMIT 3 fail 2 2009";
    const Arguments load = {"--rwait", "1",    "--ckfile", Path("ck"), "--checkpoint-every",
                            "2",       "--to", Path("out")};
    ProgramResult result = Load(load);
    EXPECT_EQ(result.exitCode, 9);
    EXPECT_TRUE(Contains(result.standardError, "  message   MQCMIT failed, reason code = 2009\n"))
        << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "back on the queue")) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "message 1\nmessage 2\n");
    EXPECT_TRUE(fs::exists(Path("ck")));

    // The checkpoint file still contains records, so a load that would destroy it is refused.
    faults_.clear();
    result = Load({"--rwait", "1", "--ckfile", Path("ck"), "--to", Path("more")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(Contains(result.standardError, "only copies")) << result.standardError;
    EXPECT_FALSE(fs::exists(Path("more")));

    result = Load(load);
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "message 1\nmessage 2\nmessage 3\nmessage 4\nmessage 5\n");
}

TEST_F(SpoolLoad, LostConnectionBeforeTheFirstMessageIsNotTakenForTheEndOfTheQueue) {
    Put("one");
    faults_ = "MQGET 1 fail 2 2009";
    const ProgramResult result = Load({"--rwait", "1", "--verbose", "--to", Path("out"), "--unprotected"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "Close returned 34")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "ended before the read wait interval"))
        << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "");
    EXPECT_EQ(Depth(), 1);
}

TEST_F(SpoolLoad, GetThatFailsWithoutDataIsNotTakenForTheEndOfTheQueue) {
    Put("one");
    faults_ = "MQGET 1 fail 2 2016";
    const ProgramResult result = Load({"--rwait", "1", "--to", Path("out"), "--unprotected"});
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_TRUE(Contains(result.standardError, "ended before the read wait interval"))
        << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "\n  reason    2016 MQRC_GET_INHIBITED: "))
        << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "");
    EXPECT_EQ(Depth(), 1);
}

TEST_F(SpoolLoad, GetThatFailsBehindAMessageTellsItsReason) {
    Put("one");
    faults_ = "MQGET 2 fail 2 2009";
    const ProgramResult result = Load({"--rwait", "1", "--to", Path("out"), "--unprotected"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "  reason    2009 MQRC_CONNECTION_BROKEN: "))
        << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "one\n");
}

TEST_F(SpoolLoad, EmptyMessageEndsTheInputEarlyAndIsTold) {
    Put("one");
    Put("");
    Put("two");
    const ProgramResult result = Load({"--rwait", "5", "--to", Path("out"), "--unprotected"});
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_TRUE(Contains(result.standardError, "an empty message")) << result.standardError;
    EXPECT_TRUE(
        Contains(result.standardError, "\n  found     the queue can be read and is not empty; run the same "))
        << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "one\n");
    EXPECT_EQ(Depth(), 1);
}

TEST_F(SpoolLoad, TimeoutEndsAnUnlimitedWait) {
    Put("one");
    const ProgramResult result =
        Load({"--rwait", "-1", "--timeout", "5", "--to", Path("out"), "--unprotected"});
    EXPECT_EQ(result.exitCode, 6) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "one\n");
}

TEST_F(SpoolLoad, AnInterruptEndsAnUnlimitedWait) {
    ASSERT_TRUE(RunningProgram::PrepareInterrupts());
    Put("one");
    RunningProgram program(
        MQAM_PROGRAM,
        LoadArguments({"--rwait", "-1", "--to", Path("out"), "--unprotected", "--trace", "1", Path("trace")}),
        Environment(), folder_.Root());
    EXPECT_TRUE(WaitForText(Path("out"), "one\n"));
    EXPECT_TRUE(program.Interrupt());
    EXPECT_TRUE(program.WaitForError("finishing"));
    const ProgramResult result = program.Wait();
    EXPECT_EQ(result.exitCode, 5) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "on request")) << result.standardError;
    // No Read was cut off: the last one returned an end of the input as it was asked to.
    EXPECT_TRUE(Contains(ReadFileIfAny(Path("trace")), "returning EOF as requested via attribute 'GEN_EOF'"));
}

TEST_F(SpoolLoad, AMessageThatArrivesAfterAShortReadIsLoaded) {
    RunningProgram program(
        MQAM_PROGRAM,
        LoadArguments({"--rwait", "5", "--unprotected", "--to", Path("out"), "--trace", "1", Path("trace")}),
        Environment(), folder_.Root());
    ASSERT_TRUE(WaitForText(Path("trace"), "EOF from MQGET"));
    Put("late");
    const ProgramResult result = program.Wait();
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "late\n");
}

TEST_F(SpoolLoad, TheTimeOutEndsALoadWithWhatItHasRead) {
    Put("one");
    for (const char* readWait : {"-1", "600"}) {
        const ProgramResult result =
            Load({"--rwait", readWait, "--timeout", "2", "--unprotected", "--append", "--to", Path("out")});
        EXPECT_EQ(result.exitCode, 6) << result.standardError;
        EXPECT_TRUE(Contains(result.standardError, "the time-out expired")) << result.standardError;
    }
    EXPECT_EQ(ReadFileIfAny(Path("out")), "one\n");
}

TEST_F(SpoolLoad, AnInterruptEndsAnUnlimitedWaitThatAParameterFileSets) {
    ASSERT_TRUE(RunningProgram::PrepareInterrupts());
    Put("one");
    std::ofstream(Path("parm")) << "RWAIT -1\n";
    RunningProgram program(MQAM_PROGRAM,
                           LoadArguments({"--parmfile", Path("parm"), "--to", Path("out"), "--unprotected"}),
                           Environment(), folder_.Root());
    EXPECT_TRUE(WaitForText(Path("out"), "one\n"));
    EXPECT_TRUE(program.Interrupt());
    const ProgramResult result = program.Wait();
    EXPECT_EQ(result.exitCode, 5) << result.standardError;
}

// The module itself reads this file, and it counts more than the keyword with which the load shortens its Reads.
TEST_F(SpoolLoad, AReadWaitFromAFileThatTheModuleReadsIsKept) {
    Put("one");
    std::ofstream(Path("parm")) << "RWAIT 2\n";
    const Arguments arguments = {"load", "--init",    "-QMGR QM1 -QNM Q1 -PARMFILE " + Path("parm"),
                                 "--to", Path("out"), "--unprotected"};
    const ProgramResult result = RunProgram(MQAM_PROGRAM, arguments, folder_.Root(), Environment());
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "one\n");
}

TEST_F(SpoolLoad, InterruptBetweenMessagesLeavesTheRestOnTheQueue) {
    ASSERT_TRUE(RunningProgram::PrepareInterrupts());
    constexpr int kMessages = 3000;
    for (int i = 1; i <= kMessages; ++i)
        Put("message " + std::to_string(i));
    RunningProgram program(MQAM_PROGRAM,
                           LoadArguments({"--rwait", "30", "--ckfile", Path("ck"), "--checkpoint-every", "1",
                                          "--verbose", "--to", Path("out")}),
                           Environment(), folder_.Root());
    ASSERT_TRUE(program.WaitForError("checkpoint 5 ")) << program.Wait(0).standardError;
    ASSERT_TRUE(program.Interrupt());
    const ProgramResult result = program.Wait();
    EXPECT_EQ(result.exitCode, 5) << result.standardError;
    std::string expected;
    int loaded = 0;
    for (; static_cast<int>(expected.size()) < static_cast<int>(fs::file_size(Path("out"))); ++loaded) {
        expected += "message " + std::to_string(loaded + 1) + "\n";
    }
    EXPECT_EQ(ReadFileIfAny(Path("out")), expected);
    EXPECT_GE(loaded, 4);
    EXPECT_EQ(Depth(), kMessages - loaded);
}

// The module reports only "Queue Manager open" in both cases.
TEST_F(SpoolLoad, AFailedOpenHasTheReasonOfMq) {
    RunningProgram reader(MQAM_PROGRAM,
                          LoadArguments({"--exclusive", "--rwait", "60", "--verbose", "--to", Path("first")}),
                          Environment(), folder_.Root());
    Put("one");
    ASSERT_TRUE(WaitForText(Path("first"), "one\n"));
    fs::create_directories(Path("second"));
    ProgramResult result = RunProgram(MQAM_PROGRAM, LoadArguments({"--unprotected", "--to", Path("out")}),
                                      Path("second"), Environment());
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "\n  reason    2042 MQRC_OBJECT_IN_USE: "))
        << result.standardError;
    faults_ = "MQOPEN 1 fail 2 2035";
    result =
        RunProgram(MQAM_PROGRAM, LoadArguments({"--otenacity", "1", "--unprotected", "--to", Path("out")}),
                   Path("second"), Environment());
    EXPECT_TRUE(Contains(result.standardError, "\n  reason    2035 MQRC_NOT_AUTHORIZED: "))
        << result.standardError;
}

TEST_F(SpoolLoad, ExclusiveOpenOfAQueueInUseIsTold) {
    RunningProgram reader(
        MQAM_PROGRAM, LoadArguments({"--rwait", "60", "--verbose", "--to", Path("first"), "--unprotected"}),
        Environment(), folder_.Root());
    Put("one");
    ASSERT_TRUE(WaitForText(Path("first"), "one\n"));
    fs::create_directories(Path("second"));
    const ProgramResult result =
        RunProgram(MQAM_PROGRAM, LoadArguments({"--exclusive", "--to", Path("out"), "--unprotected"}),
                   Path("second"), Environment());
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "  number    MQA0157\n")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "reason    2042 ")) << result.standardError;
}

// The load was killed after it had stored that it was complete.
TEST_F(SpoolLoad, LockOfACompleteLoadThatDiedIsRemovedByTheSameCommand) {
    Put("one");
    const Arguments load = {"--rwait",       "1",    "--ckfile", Path("ck"), "--restart-file",
                            Path("restart"), "--to", Path("out")};
    ASSERT_EQ(Load(load).exitCode, 0);
    std::ofstream(Path("mqam-checkpoint.lock")).flush();
    const ProgramResult again = Load(load);
    EXPECT_EQ(again.exitCode, 11) << again.standardError;
    EXPECT_TRUE(Contains(again.standardError, "this load is already complete")) << again.standardError;
    EXPECT_FALSE(fs::exists(Path("mqam-checkpoint.lock")));
}

// On Windows, a process that someone ended has an exit code like any other.
TEST_F(SpoolLoad, KilledWorkerIsToldAndTheSameCommandIsAdvised) {
    Put("one");
    const Arguments load = {"--rwait",       "1",    "--ckfile", Path("ck"), "--restart-file",
                            Path("restart"), "--to", Path("out")};
    faults_ = "MQCMIT 1 kill before";
    const ProgramResult killed = Load(load);
    EXPECT_EQ(killed.exitCode, 9) << killed.standardError;
    EXPECT_TRUE(Contains(killed.standardError, "the worker process was killed (")) << killed.standardError;
    EXPECT_TRUE(Contains(killed.standardError, "run the same command again")) << killed.standardError;
}

TEST_F(SpoolLoad, CheckAcceptsEveryOptionAndShowsWhatIsInEffect) {
    std::ofstream(Path("parm")) << "# comment\nRWAIT 7\nTDM no\n";
    const ProgramResult result = RunProgram(
        MQAM_PROGRAM,
        {"check",    "--qmgr",   "QM1",          "--queue",     "Q1",        "--channel",  "C1",
         "--server", "h(1414)",  "--exclusive",  "--otenacity", "60",        "--owait",    "5",
         "--rwait",  "3",        "--max-record", "100",         "--convert", "1208",       "--tdm",
         "yes",      "--ckfile", Path("ck"),     "--flush",     "yes",       "--log",      Path("log"),
         "--tlf",    "no",       "--trace",      "1",           Path("trc"), "--parmfile", Path("parm")},
        folder_.Root());
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(result.standardError, "");
    const std::size_t parameters = result.standardOutput.find("Queue Manager Name");
    ASSERT_NE(parameters, std::string::npos) << result.standardOutput;
    EXPECT_EQ(result.standardOutput.substr(parameters),
              "Queue Manager Name                'QM1'\n"
              "Queue Name                        'Q1'\n"
              "Checkpoint                        File-based to pathname " +
                  Path("ck") +
                  "\n"
                  "Media flush                       Yes\n"
                  "Logging pathname                  '" +
                  Path("log") +
                  "'\n"
                  "Terminate on Log failure          no\n"
                  "Terminate on duplicate message    yes\n"
                  "MQ convert message data to CCSID  1208\n"
                  "Queue open                        EXCLUSIVE.\n"
                  "BlockSize                         100\n"
                  "MQ open retry tenacity            60\n"
                  "MQ open wait interval             5\n"
                  "MQ read wait interval             3\n");
    EXPECT_TRUE(fs::exists(Path("trc")));
    EXPECT_FALSE(fs::exists(Path("ck")));
    EXPECT_FALSE(fs::exists(Path("log")));
}

TEST_F(SpoolLoad, AValueOutOfRangeIsRefusedBeforeTheModuleIsCalled) {
    for (const char* command : {"check", "load"}) {
        Arguments arguments = {command, "--qmgr", "QM1", "--queue", "Q1", "--rwait", "0"};
        if (std::string(command) == "load") arguments.insert(arguments.end(), {"--to", Path("out")});
        const ProgramResult result = RunProgram(MQAM_PROGRAM, arguments, folder_.Root());
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(Contains(result.standardError, "--rwait: '0' is out of range; use 1 to 600 seconds"))
            << result.standardError;
    }
}

TEST_F(SpoolLoad, SizesAndTimesMayHaveUnits) {
    const ProgramResult result = RunProgram(MQAM_PROGRAM,
                                            {"check", "--qmgr", "QM1", "--queue", "Q1", "--rwait", "5m",
                                             "--max-record", "2M", "--otenacity", "1h"},
                                            folder_.Root());
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_TRUE(Contains(result.standardOutput, "\nMQ read wait interval           300\n"))
        << result.standardOutput;
    EXPECT_TRUE(Contains(result.standardOutput, "\nBlockSize                       2097152\n"))
        << result.standardOutput;
    EXPECT_TRUE(Contains(result.standardOutput, "\nMQ open retry tenacity          3600\n"))
        << result.standardOutput;
}

TEST_F(SpoolLoad, ANegativeCountPutsNothing) {
    for (const char* count : {"-1", "1.5", "ten", "1000000000000000000000"}) {
        const ProgramResult result = RunProgram(MQAM_PROGRAM, {"queue", "put", "QM1", "Q1", "--count", count},
                                                folder_.Root(), Environment());
        EXPECT_EQ(result.exitCode, 1) << count;
        EXPECT_TRUE(Contains(result.standardError, "--count: '" + std::string(count) + "' is "))
            << result.standardError;
        EXPECT_TRUE(Contains(result.standardError, "use 0 to 999999999")) << result.standardError;
    }
    EXPECT_EQ(Depth(), 0);
}

// Runs mqam queue with the stand-in's directory.
class SpoolQueue : public SpoolLoad {
  protected:
    [[nodiscard]] ProgramResult Queue(const Arguments& more) const {
        Arguments arguments = {"queue"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(MQAM_PROGRAM, arguments, folder_.Root(), Environment());
    }

    void SetAttribute(const std::string& line) const {
        std::ofstream(SpoolLoad::Queue() + "/.queue.ini") << line << "\n";
    }
};

TEST_F(SpoolQueue, PutStopsAtTheDepthOfTheQueue) {
    SetAttribute("max_depth = 3");
    const ProgramResult result = Queue({"put", "QM1", "Q1", "--count", "5"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(Contains(
        result.standardError,
        "mqam queue put: the queue is full (max_depth=3); load its messages, or raise max_depth in "))
        << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "mqam queue put: put 3 messages, ")) << result.standardError;
    EXPECT_EQ(Depth(), 3);
}

TEST_F(SpoolQueue, PutObeysAQueueThatTakesNoMessages) {
    SetAttribute("put = disabled");
    const ProgramResult result = Queue({"put", "QM1", "Q1", "--count", "1"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(Contains(result.standardError,
                         "the queue does not take messages (put=disabled); set put=enabled in "))
        << result.standardError;
    EXPECT_EQ(Depth(), 0);
}

TEST_F(SpoolQueue, PutRefusesAMessageThatIsTooLongForTheQueue) {
    SetAttribute("max_message_length = 10");
    std::ofstream(Path("ten"), std::ios::binary) << "0123456789";
    std::ofstream(Path("eleven"), std::ios::binary) << "0123456789x";
    const ProgramResult result = Queue({"put", "QM1", "Q1", Path("ten"), Path("eleven")});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(Contains(result.standardError,
                         "a message of 11 bytes is too long for the queue; raise "
                         "max_message_length=10 of the queue or its queue manager"))
        << result.standardError;
    EXPECT_EQ(Depth(), 1);
}

TEST_F(SpoolQueue, ACountOfZeroPutsNothing) {
    const ProgramResult result = Queue({"put", "QM1", "Q1", "--count", "0"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "put 0 messages, 0 bytes, ")) << result.standardError;
    EXPECT_EQ(Depth(), 0);
}

TEST_F(SpoolQueue, AnEmptyMessageIsPutOnlyOnRequest) {
    std::ofstream(Path("none")).flush();
    for (const Arguments& empty : std::vector<Arguments>{{}, {Path("none")}, {"--lines", "-"}}) {
        Arguments arguments = {"put", "QM1", "Q1"};
        arguments.insert(arguments.end(), empty.begin(), empty.end());
        const ProgramResult refused = Queue(arguments);
        const bool isLines = !empty.empty() && empty.front() == "--lines";
        EXPECT_EQ(refused.exitCode, isLines ? 0 : 3) << refused.standardError;
        if (!isLines) {
            EXPECT_TRUE(Contains(refused.standardError, "use --empty to put it all the same"))
                << refused.standardError;
        }
        EXPECT_EQ(Depth(), 0);
    }
    const ProgramResult result = Queue({"put", "QM1", "Q1", "--empty", Path("none")});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "put 1 message, 0 bytes, ")) << result.standardError;
    EXPECT_EQ(Depth(), 1);
}

TEST_F(SpoolQueue, ListAndShowWithJsonAreObjects) {
    std::ofstream(SpoolLoad::Queue() + "/order.xml", std::ios::binary) << "a \"\xFF\"\n";
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const auto read = [this](const Arguments& arguments) {
        const ProgramResult result = Queue(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        auto values = ReadJson(result.standardOutput);
        EXPECT_TRUE(values.has_value()) << result.standardOutput;
        return values.value_or(std::map<std::string, std::string>());
    };
    EXPECT_EQ(read({"list", "--json"}),
              (std::map<std::string, std::string>{{"spool", Path("spool")},
                                                  {"queue_managers.0.name", "QM1"},
                                                  {"queue_managers.0.queues.0.name", "Q1"},
                                                  {"queue_managers.0.queues.0.messages", "1"},
                                                  {"queue_managers.0.queues.0.readers", "0"}}));
    auto manager = read({"show", "QM1", "--json"});
    EXPECT_EQ(manager["attributes.state"], "running");
    EXPECT_EQ(manager["attributes.ccsid"], "1208");
    EXPECT_EQ(manager["queues.0.name"], "Q1");
    auto queue = read({"show", "QM1", "Q1", "--json"});
    EXPECT_EQ(queue["queue"], "Q1");
    EXPECT_EQ(queue["messages"], "1");
    EXPECT_EQ(queue["attributes.get"], "enabled");
    EXPECT_EQ(queue["listed.0.message"], "order.xml");
    EXPECT_EQ(queue["listed.0.begins"], "a \"\xEF\xBF\xBD\"\n");
    EXPECT_EQ(queue["more"], "false");
    EXPECT_EQ(read({"show", "QM1", "Q1", "--json", "--limit", "0"})["more"], "true");
    auto message = read({"show", "QM1", "Q1", "order.xml", "--json"});
    EXPECT_EQ(message["bytes"], "6");
    EXPECT_TRUE(message["descriptor.PutDate"].starts_with("20")) << message["descriptor.PutDate"];
    EXPECT_EQ(Queue({"show", "QM1", "Q1", "order.xml", "--json", "--body"}).exitCode, 1);
}

TEST_F(SpoolQueue, ShowSaysWhenACopiedInFileArrived) {
    std::ofstream(SpoolLoad::Queue() + "/order.xml") << "<order/>";
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const ProgramResult result = Queue({"show", "QM1", "Q1", "order.xml"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_TRUE(Contains(result.standardOutput, "order.xml, 8 bytes, backed out 0 times"))
        << result.standardOutput;
    EXPECT_TRUE(Contains(result.standardOutput, "PutDate=20")) << result.standardOutput;
    EXPECT_FALSE(Contains(result.standardOutput, "PutDate=1970")) << result.standardOutput;
}

#if !defined(_WIN32)
TEST_F(SpoolQueue, AListThatCannotBeWrittenIsReported) {
    for (const std::string& command : {std::string("list"), std::string("show QM1 Q1"),
                                       std::string("show QM1"), std::string("create QM1 Q2")}) {
        const ProgramResult result =
            RunProgram("/bin/sh", {"-c", std::string(MQAM_PROGRAM) + " queue " + command + " >/dev/full"},
                       folder_.Root(), Environment());
        EXPECT_EQ(result.exitCode, 3) << command;
        EXPECT_TRUE(
            Contains(result.standardError, ": standard output cannot be written: No space left on device"))
            << command << result.standardError;
    }
}
#endif

TEST_F(SpoolLoad, CheckTellsARefusedValueWithItsOption) {
    const ProgramResult result =
        RunProgram(MQAM_PROGRAM, {"check", "--init", "-QMGR QM1 -QNM Q1 -RWAIT 0", "-v"}, folder_.Root());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(
        Contains(result.standardError,
                 "  number    MQA0107\n  request   Init returned 34\n  function  CheckParm\n"
                 "  next      Give 1 to 600 seconds, or -1 to wait for messages without end: "
                 "`--rwait SECONDS` (keyword RWAIT).\n  usage     mqam check --qmgr NAME --queue NAME "
                 "[OPTIONS]; `mqam help check` shows more\n"))
        << result.standardError;
}

// Whoever notices that an option is wrong, the exit code is 1 and the usage line follows.
TEST_F(SpoolLoad, AWrongOptionHasOneExitCode) {
    const std::vector<Arguments> wrong = {{"--to", Path("out"), "--timeout", "0"},
                                          {"--to", Path("out"), "--rwait", "0"},
                                          {},
                                          {"--to", Path("out"), "--channel", "C1"},
                                          {"--to", Path("out"), "--attribute", "COLOUR=red"},
                                          {"--to", Path("out"), "--parmfile", Path("none")},
                                          {"--to", Path("out"), "--parmfile", Path("none"), "--ckfile",
                                           Path("ck"), "--restart-file", Path("r")},
                                          {"--to", Path("out"), "--attribute", "COLOUR=red", "--ckfile",
                                           Path("ck"), "--restart-file", Path("r")}};
    for (const Arguments& more : wrong) {
        const ProgramResult result = Load(more);
        EXPECT_EQ(result.exitCode, 1) << result.standardError;
        EXPECT_TRUE(result.standardError.starts_with("mqam load: ")) << result.standardError;
        EXPECT_TRUE(
            Contains(result.standardError,
                     "\n  usage     mqam load --qmgr NAME --queue NAME --to TARGET [OPTIONS]; `mqam help "
                     "load` shows more\n"))
            << result.standardError;
        EXPECT_FALSE(Contains(result.standardError, "the module failed")) << result.standardError;
        EXPECT_EQ(ReadFileIfAny(Path("out")), "");
    }
}

TEST_F(SpoolLoad, TheCommandLineOverridesParameterFileConfigurationFileAndEnvironment) {
    std::ofstream(Path("parm")) << "QNM Q1\nRWAIT 5\nCKFILE my file.ckpt\n";
    std::ofstream(Path("config")) << "[load]\nrwait = 8\n[check]\nrwait = 9\nmax-record = 2M\nparmfile = \"" +
                                         fs::path(Path("parm")).generic_string() + "\"\n";
    std::map<std::string, std::string> environment = Environment();
    environment["MQAM_QMGR"] = "QM7";
    const auto check = [&](const Arguments& more) {
        Arguments arguments = {"check", "--config", Path("config")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ProgramResult result = RunProgram(MQAM_PROGRAM, arguments, folder_.Root(), environment);
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        EXPECT_TRUE(Contains(result.standardError, "mqam check: warning: ")) << result.standardError;
        EXPECT_TRUE(Contains(result.standardError, ", line 3: CKFILE my: the module ignores 'file.ckpt'; "))
            << result.standardError;
        return result.standardOutput;
    };
    const std::string fromFiles = check({});
    EXPECT_TRUE(Contains(fromFiles, "\nMQ read wait interval           9\n")) << fromFiles;
    EXPECT_TRUE(Contains(fromFiles, "\nBlockSize                       2097152\n")) << fromFiles;
    EXPECT_TRUE(Contains(fromFiles, "\nQueue Manager Name              'QM7'\n")) << fromFiles;
    const std::string fromLine = check({"--rwait", "77", "--qmgr", "QM8"});
    EXPECT_TRUE(Contains(fromLine, "\nMQ read wait interval           77\n")) << fromLine;
    EXPECT_TRUE(Contains(fromLine, "\nQueue Manager Name              'QM8'\n")) << fromLine;
    EXPECT_TRUE(Contains(fromLine, "\nQueue Name                      'Q1'\n")) << fromLine;
}

TEST_F(SpoolLoad, AParameterFileThatIsADirectoryIsNamed) {
    for (const char* command : {"check", "load"}) {
        Arguments arguments = {command, "--parmfile", folder_.Root()};
        if (std::string(command) == "load") arguments.insert(arguments.end(), {"--to", Path("out")});
        const ProgramResult result = RunProgram(MQAM_PROGRAM, arguments, folder_.Root());
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(Contains(
            result.standardError,
            "--parmfile " + folder_.Root() + " is a directory; name the file in it\n  usage     mqam "))
            << result.standardError;
    }
}

TEST_F(SpoolLoad, CheckShowsTheModulesKeywordHelp) {
    const ProgramResult result = RunProgram(
        MQAM_PROGRAM, {"check", "--qmgr", "QM1", "--queue", "Q1", "--keyword-help"}, folder_.Root());
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "Command help;")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardOutput, "Queue Name ")) << result.standardOutput;
}

// A parameter file that is cut at any byte, or has any bit flipped, is either accepted as it is or refused
// with the reason.
TEST_F(SpoolLoad, CheckTellsWhatIsWrongWithADamagedParameterFile) {
    const std::string good = "RWAIT 7\nTDM no\n";
    const auto check = [this](const std::string& bytes) {
        std::ofstream(Path("parm"), std::ios::binary) << bytes;
        ProgramResult result =
            RunProgram(MQAM_PROGRAM, {"check", "--qmgr", "QM1", "--queue", "Q1", "--parmfile", Path("parm")},
                       folder_.Root());
        EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode << " " << bytes;
        const std::string& wanted = result.exitCode == 0 ? result.standardOutput : result.standardError;
        // mqam refuses a number that the module would misread.
        const bool isMisread = Contains(result.standardError, "parm, line 1: RWAIT ");
        EXPECT_TRUE(isMisread ||
                    Contains(wanted, result.exitCode == 0 ? "\nMQ read wait interval " : "  message   "))
            << bytes << "\n"
            << result.standardOutput << result.standardError;
        return result;
    };
    EXPECT_TRUE(Contains(check(good).standardOutput, "\nMQ read wait interval           7\n"));
    for (std::size_t bytes = 0; bytes < good.size(); ++bytes)
        static_cast<void>(check(good.substr(0, bytes)));
    // Under Wine this runs only a sample, because a process takes long to start.
    constexpr std::size_t kStep = platform::kIsWindows ? 19 : 1;
    for (std::size_t bit = 0; bit < good.size() * 8; bit += kStep) {
        std::string turned = good;
        turned[bit / 8] = static_cast<char>(turned[bit / 8] ^ (1 << bit % 8));
        // A keyword that the change has turned into another name is never taken for the original one.
        const ProgramResult result = check(turned);
        if (bit / 8 < 5 && bit % 8 != 5) {
            EXPECT_FALSE(Contains(result.standardOutput, "\nMQ read wait interval           7\n")) << turned;
        }
    }
}

}  // namespace
