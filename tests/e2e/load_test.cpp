// SPDX-License-Identifier: Apache-2.0

// Runs mqam load and mqam check as processes, with a module that does what the test says.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "platform/system.h"
#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"
#include "tests/support/text_search.h"

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

// A worker can mark its own exit codes only on Windows.
constexpr bool kExitsAreMarked = platform::kIsWindows;

class FakeLoad : public testing::Test {
  protected:
    [[nodiscard]] std::string Path(const std::string& name) const { return folder_.Path(name); }

    // Runs an unprotected load with the fake module. `script` is what follows -QMGR and -QNM in the initialization
    // string.
    ProgramResult Load(const std::string& script, const Arguments& more = {}) {
        Arguments all = {"--unprotected"};
        all.insert(all.end(), more.begin(), more.end());
        return LoadProtected(script, all);
    }

    // The same with the options as they are.
    ProgramResult LoadProtected(const std::string& script, const Arguments& more = {}) {
        Arguments arguments = {"load", "--module", FAKE_MODULE, "--init", Script(script)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(MQAM_PROGRAM, arguments, folder_.Root());
    }

    // Waits until the module has got these requests, among others.
    [[nodiscard]] bool WaitForCalls(const std::string& calls) const {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!Contains(Calls(), calls)) {
            if (std::chrono::steady_clock::now() > limit) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return true;
    }

    [[nodiscard]] std::string Script(const std::string& script) const {
        return "-QMGR QM1 -QNM Q1 -FAKE_CALLS " + Path("calls") + " " + script;
    }

    // Returns the requests that the module received, without the initialization string.
    [[nodiscard]] std::string Calls() const {
        std::ifstream file(Path("calls"));
        std::string calls;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("Init")) line = "Init";
            calls += (calls.empty() ? "" : " ") + line;
        }
        return calls;
    }

    TestDirectory folder_;
};

TEST_F(FakeLoad, WholeLoadWritesLinesAndTellsASummary) {
    const ProgramResult result = Load("-FAKE_RECORDS 3", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "record 1\nrecord 2\nrecord 3\n");
    EXPECT_EQ(Calls(), "Init PutAttribute ZBQ_HL_LOG_HANDLE Open 1 Read Read Read Read Close Shut");
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_TRUE(Contains(result.standardError, "end of the queue\n  records   3\n  bytes     24\n"))
        << result.standardError;
}

// An MQ library may end the process, but no exit code that it chooses makes a load done.
TEST_F(FakeLoad, AWorkerThatALibraryEndsIsKilledWhateverItsExitCode) {
    for (const char* code : {"0", "64", "66"}) {
        if (std::string(code) != "0" && !kExitsAreMarked) continue;
        const ProgramResult result = LoadProtected("-FAKE_EXIT " + std::string(code),
                                                   {"--to", Path("out"), "--restart-file", Path("restart")});
        EXPECT_EQ(result.exitCode, 9) << result.standardError;
        EXPECT_EQ(result.standardError,
                  "mqam load: the worker process was killed (" + std::string(code) +
                      ")\n  safe      nothing was loaded: every message is on the queue\n"
                      "  next      run the same command again\n");
    }
}

TEST_F(FakeLoad, QuietLoadPrintsNothing) {
    const ProgramResult result = Load("-FAKE_RECORDS 3", {"--to", Path("out"), "--quiet"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.standardOutput, "");
}

TEST_F(FakeLoad, LengthFormatPutsFourBytesLittleEndianBeforeEachRecord) {
    const ProgramResult result =
        Load("-FAKE_RECORDS 2 -FAKE_RECORD_BYTES 300", {"--to", Path("out"), "--format", "length"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    const std::string bytes = ReadFileIfAny(Path("out"));
    ASSERT_EQ(bytes.size(), 608U);
    EXPECT_EQ(bytes.substr(0, 4), std::string("\x2C\x01\x00\x00", 4));
    EXPECT_EQ(bytes.substr(304, 4), std::string("\x2C\x01\x00\x00", 4));
    for (int i = 0; i < 300; ++i) {
        ASSERT_EQ(static_cast<unsigned char>(bytes[static_cast<std::size_t>(4 + i)]), (1 + i) % 256) << i;
        ASSERT_EQ(static_cast<unsigned char>(bytes[static_cast<std::size_t>(308 + i)]), (2 + i) % 256) << i;
    }
}

TEST_F(FakeLoad, RawFormatAddsNothing) {
    const ProgramResult result =
        Load("-FAKE_RECORDS 2 -FAKE_RECORD_BYTES 256", {"--to", Path("out"), "--format", "raw"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    const std::string bytes = ReadFileIfAny(Path("out"));
    ASSERT_EQ(bytes.size(), 512U);
    for (int i = 0; i < 512; ++i) {
        ASSERT_EQ(static_cast<unsigned char>(bytes[static_cast<std::size_t>(i)]),
                  (1 + i / 256 + i % 256) % 256)
            << i;
    }
}

TEST_F(FakeLoad, StandardOutputHoldsTheRecordsAloneAndInBinary) {
    const ProgramResult result =
        Load("-SRVR s -FAKE_RECORDS 2 -FAKE_RECORD_BYTES 20", {"--to", "-", "--format", "raw", "--verbose"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    std::string expected;
    for (int i = 0; i < 40; ++i)
        expected += static_cast<char>(1 + i / 20 + i % 20);
    EXPECT_EQ(result.standardOutput, expected);
    EXPECT_TRUE(Contains(result.standardError, "Queue Manager Name  'QM1'\n")) << result.standardError;
}

TEST_F(FakeLoad, KeywordHelpOfTheModuleGoesToStandardError) {
    Arguments arguments = {"load", "--module", FAKE_MODULE, "--qmgr", "QM1", "--keyword-help", "--to", "-"};
    const ProgramResult result = RunProgram(MQAM_PROGRAM, arguments, folder_.Root());
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_TRUE(Contains(result.standardError, "fake module: keyword help\n")) << result.standardError;
}

TEST_F(FakeLoad, ExistingTargetIsKeptUnlessForcedOrAppended) {
    std::ofstream(Path("out")) << "old\n";
    ProgramResult result = Load("-FAKE_RECORDS 1", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(Contains(result.standardError, "--force")) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")).substr(0, 3), "old");
    EXPECT_EQ(Calls(), "");

    result = Load("-FAKE_RECORDS 1", {"--to", Path("out"), "--append"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_TRUE(ReadFileIfAny(Path("out")).ends_with("record 1\n"));
    EXPECT_EQ(ReadFileIfAny(Path("out")).substr(0, 3), "old");

    result = Load("-FAKE_RECORDS 2", {"--to", Path("out"), "--force"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "record 1\nrecord 2\n");
}

TEST_F(FakeLoad, TargetInAMissingFolderFailsBeforeAnythingIsRead) {
    const ProgramResult result = Load("-FAKE_RECORDS 1", {"--to", Path("none/out")});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(Contains(result.standardError, "cannot open")) << result.standardError;
    EXPECT_FALSE(Contains(Calls(), "Read")) << Calls();
    EXPECT_FALSE(Contains(Calls(), "Close")) << Calls();
}

#if !defined(_WIN32)
TEST_F(FakeLoad, FullDiskIsToldAndTheModuleIsNotClosed) {
    const ProgramResult result = Load("-FAKE_RECORDS 3", {"--to", "/dev/full"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(Contains(result.standardError, "cannot write to /dev/full: No space left on device"))
        << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "  records   0\n")) << result.standardError;
    EXPECT_TRUE(
        Contains(result.standardError,
                 "  lost      3 of the 3 messages taken from the queue were not written to /dev/full\n"))
        << result.standardError;
    EXPECT_FALSE(Contains(Calls(), "Close")) << Calls();
}
#endif

TEST_F(FakeLoad, MissingModuleIsToldWithItsPath) {
    const ProgramResult result = RunProgram(
        MQAM_PROGRAM, {"load", "--module", Path("none.so"), "--qmgr", "Q", "--to", "-"}, folder_.Root());
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_TRUE(Contains(result.standardError, "none.so")) << result.standardError;
}

TEST_F(FakeLoad, FailingInitIsTakenApartAndNothingIsOpened) {
    const ProgramResult result = Load(
        "-FAKE_FAIL Init -FAKE_ERROR "
        "M/"
        "ParseParms(!ERROR!).__--ERROR:_MQA0127:_<Queue_Manager_Name_must_be_specified._Keyword:_QMGR_<name>>"
        ".",
        {"--verbose", "--to", Path("out")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(
        Contains(result.standardError,
                 "mqam load: no queue manager is named, neither in the initialization string nor in "
                 "the parameter file\n"
                 "  message   Queue Manager Name must be specified. Keyword: QMGR <name>\n"
                 "  number    MQA0127\n"
                 "  request   Init returned 34\n"
                 "  function  ParseParms\n"
                 "  next      Give `--qmgr NAME`, or put a line `QMGR NAME` into the parameter file.\n"))
        << result.standardError;
    EXPECT_EQ(Calls(), "Init Shut");
    EXPECT_FALSE(fs::exists(Path("out")));
}

TEST_F(FakeLoad, FailingOpenLeavesNoTargetAndNeitherClosesNorShuts) {
    const ProgramResult result = Load("-FAKE_FAIL Open", {"--verbose", "--to", Path("out")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "Open returned 34")) << result.standardError;
    EXPECT_EQ(Calls(), "Init PutAttribute ZBQ_HL_LOG_HANDLE Open 1");
    EXPECT_FALSE(fs::exists(Path("out")));
}

TEST_F(FakeLoad, FailingReadKeepsWhatWasReadAndNeitherClosesNorShuts) {
    const ProgramResult result = Load(
        "-FAKE_RECORDS 5 -FAKE_FAIL Read -FAKE_FAIL_AT 3 -FAKE_ERROR "
        "M/PIDMMain(!ERROR!).__--ERROR:_MQA0165:_<Reason_code_=_2009>--Failing_function:_MQGET.",
        {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "  call      MQGET\n")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "2009 MQRC_CONNECTION_BROKEN")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "  records   2\n")) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "record 1\nrecord 2\n");
    EXPECT_FALSE(Contains(Calls(), "Close")) << Calls();
    EXPECT_FALSE(Contains(Calls(), "Shut")) << Calls();
}

TEST_F(FakeLoad, FailingCloseIsToldWithEveryRecordInTheTarget) {
    const ProgramResult result = Load("-FAKE_RECORDS 2 -FAKE_FAIL Close", {"--verbose", "--to", Path("out")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(Contains(result.standardError, "Close returned 34")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "mqam load: end of the queue\n  records   2\n"))
        << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "record 1\nrecord 2\n");
    EXPECT_TRUE(Contains(Calls(), "Close Shut")) << Calls();
}

TEST_F(FakeLoad, WarningWithASuccessfulReadIsTold) {
    const ProgramResult result = Load("-FAKE_RECORDS 3 -FAKE_NOTICE 2", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 0);
    const std::string line = "note from the module (WriteLogRec): continuing without Log";
    EXPECT_TRUE(Contains(result.standardError, line)) << result.standardError;
    EXPECT_EQ(result.standardError.find(line), result.standardError.rfind(line));
}

TEST_F(FakeLoad, AttributesArePutAfterInitInOrder) {
    const ProgramResult result = Load("", {"--to", "-", "--attribute", "CHARSET_NAME=UTF=8", "--attribute",
                                           "GEN=", "--timeout", "7", "--preserve"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(
        Calls(),
        "Init PutAttribute ZBQ_HL_LOG_HANDLE PutAttribute TIMEOUT_SECONDS=7 "
        "PutAttribute CHARSET_NAME=UTF=8 PutAttribute GEN= PutAttribute PRESERVE_RESTART_INFO=YES Open 1 Read Close Shut");
}

TEST_F(FakeLoad, UnknownAttributeEndsTheLoadBeforeOpen) {
    const ProgramResult result = Load("", {"--to", "-", "--verbose", "--attribute", "UNKNOWN=1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(
        Contains(result.standardError,
                 "mqam load: --attribute UNKNOWN: the module does not know an attribute of this name\n"
                 "  request   PutAttribute UNKNOWN returned 33\n  usage     mqam load "))
        << result.standardError;
    EXPECT_FALSE(Contains(Calls(), "Open")) << Calls();
}

TEST_F(FakeLoad, TimeoutHasItsOwnExitCode) {
    const ProgramResult result = Load("-FAKE_RECORDS 1 -FAKE_END 55", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_TRUE(Contains(result.standardError, "the time-out expired")) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "record 1\n");
    EXPECT_TRUE(Contains(Calls(), "Close Shut")) << Calls();
}

TEST_F(FakeLoad, EndBeforeTheReadWaitIsTold) {
    ProgramResult result = Load("-FAKE_RECORDS 1 -FAKE_REPORT_WAIT 1", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_TRUE(Contains(result.standardError, "before the read wait interval")) << result.standardError;
    result =
        Load("-FAKE_RECORDS 1 -FAKE_REPORT_WAIT 1 -FAKE_LAST_PAUSE 2000", {"--to", Path("out"), "--force"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(Contains(result.standardError, "mqam load: end of the queue\n")) << result.standardError;
}

TEST_F(FakeLoad, EndOfAnUnlimitedWaitIsNeverTheEndOfTheQueue) {
    const ProgramResult result = Load("-FAKE_RECORDS 1 -FAKE_REPORT_WAIT indefinite", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_TRUE(Contains(result.standardError, "before the read wait interval")) << result.standardError;
}

TEST_F(FakeLoad, CheckpointsAreTakenAfterOpenAndEveryNRecords) {
    const ProgramResult result = LoadProtected("-FAKE_RECORDS 5 -FAKE_FAIL Close",
                                               {"--to", Path("out"), "--checkpoint-every", "2", "--verbose"});
    EXPECT_EQ(result.exitCode, 9) << result.standardError;
    EXPECT_EQ(
        Calls(),
        "Init PutAttribute PRESERVE_RESTART_INFO=YES PutAttribute ZBQ_HL_LOG_HANDLE Open 1 GetPos Read Read "
        "GetPos Read Read GetPos Read Read Close");
    EXPECT_TRUE(Contains(result.standardError, "checkpoint 2 after 2 records, file offset 4\n"))
        << result.standardError;
}

TEST_F(FakeLoad, FailingGetPosEndsTheLoadWithoutClose) {
    const ProgramResult result = LoadProtected("-FAKE_RECORDS 5 -FAKE_FAIL GetPos -FAKE_FAIL_AT 2",
                                               {"--to", Path("out"), "--checkpoint-every", "2"});
    EXPECT_EQ(result.exitCode, 9) << result.standardError;
    EXPECT_EQ(
        Calls(),
        "Init PutAttribute PRESERVE_RESTART_INFO=YES PutAttribute ZBQ_HL_LOG_HANDLE Open 1 GetPos Read Read "
        "GetPos");
}

TEST_F(FakeLoad, CheckpointFileOfAnEarlierLoadStopsTheLoadBeforeOpen) {
    const std::string records("\1\0\0\0\3\0\0\0\0\0\0\0abc", 15);
    std::ofstream(Path("ck"), std::ios::binary) << records;
    const ProgramResult result =
        LoadProtected("-CKFILE " + Path("ck") + " -FAKE_RECORDS 5", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(Contains(result.standardError, Path("ck"))) << result.standardError;
    EXPECT_EQ(Calls(), "Init PutAttribute PRESERVE_RESTART_INFO=YES PutAttribute ZBQ_HL_LOG_HANDLE");
    EXPECT_EQ(ReadFileIfAny(Path("ck")), records);
    EXPECT_FALSE(fs::exists(Path("out")));
}

TEST_F(FakeLoad, UnprotectedWithACheckpointFileIsRefusedBeforeOpen) {
    std::ofstream(Path("ck")) << "records";
    const ProgramResult result = Load("-CKFILE " + Path("ck") + " -FAKE_RECORDS 5", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(
        WithUnixLineEnds(result.standardError).substr(result.standardError.find("mqam load: checkpoint")),
        "mqam load: checkpoint file " + Path("ck") +
            ": an unprotected load takes no checkpoints, so leave out --unprotected or the keyword CKFILE\n");
    EXPECT_EQ(Calls(), "Init PutAttribute ZBQ_HL_LOG_HANDLE Shut");
    EXPECT_EQ(ReadFileIfAny(Path("ck")), "records");
    EXPECT_FALSE(fs::exists(Path("out")));
}

TEST_F(FakeLoad, UnprotectedWithAnOptionOfAProtectedLoadIsRefused) {
    const std::vector<Arguments> options = {
        {"--checkpoint-every", "5"},   {"--restart-file", Path("restart")},
        {"--checkpoint-seconds", "5"}, {"--restart", "only"},
        {"--retry-for", "5"},          {"--ckfile", Path("ck")}};
    for (const Arguments& option : options) {
        for (const Arguments& unprotected :
             {Arguments{"--to", "-"}, Arguments{"--to", Path("out"), "--unprotected"}}) {
            Arguments arguments = {"load", "--module", FAKE_MODULE, "--qmgr", "QM1"};
            arguments.insert(arguments.end(), unprotected.begin(), unprotected.end());
            arguments.insert(arguments.end(), option.begin(), option.end());
            const ProgramResult result = RunProgram(MQAM_PROGRAM, arguments, folder_.Root());
            EXPECT_EQ(result.exitCode, 1) << option[0];
            EXPECT_TRUE(Contains(result.standardError,
                                 "mqam load: " + option[0] + " does not go with " +
                                     (unprotected.size() == 2 ? "--to -" : "--unprotected") +
                                     ": an unprotected load takes no checkpoints and cannot be resumed"))
                << result.standardError;
        }
    }
    const ProgramResult database = Load("", {"--to", "sqlite:" + Path("db")});
    EXPECT_EQ(database.exitCode, 1);
    EXPECT_TRUE(Contains(database.standardError, "--unprotected does not go with sqlite:"))
        << database.standardError;
    EXPECT_EQ(Calls(), "");
}

TEST_F(FakeLoad, UnprotectedWarnsAtTheStartAndSaysAtTheEndWhatAFailureWouldHaveCost) {
    ProgramResult result = Load("-FAKE_RECORDS 3", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.standardError.starts_with(
        "mqam load: this load is unprotected (--unprotected): a failure loses the messages that were taken from "
        "the queue and not yet written to " +
        Path("out")))
        << result.standardError;
    EXPECT_TRUE(Contains(result.standardError,
                         "  risk      a failure could have lost 3 of the 3 messages taken from the queue"))
        << result.standardError;
    result = Load("-FAKE_RECORDS 3", {"--to", "-"});
    EXPECT_TRUE(result.standardError.starts_with(
        "mqam load: standard output cannot be truncated, so this load is unprotected: a failure loses the messages "
        "that were taken from the queue and not yet written to standard output"))
        << result.standardError;
}

TEST_F(FakeLoad, AMessageThatCannotBeConvertedIsCountedAsLost) {
    const ProgramResult result = Load(
        "-FAKE_RECORDS 5 -FAKE_FAIL Read -FAKE_FAIL_AT 3 -FAKE_ERROR "
        "M/PIDMMain(!ERROR!).__--ERROR:_MQA0165:_<Reason_code_=_2119>--Failing_function:_MQGET.",
        {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(
        Contains(result.standardError,
                 "  lost      1 of the 3 messages taken from the queue was not written to " + Path("out")))
        << result.standardError;
}

TEST_F(FakeLoad, LogOfAnEarlierLoadStopsTheLoadBeforeOpen) {
    std::ofstream(Path("log")) << "records";
    ProgramResult result = Load("-LOG " + Path("log") + " -FAKE_RECORDS 5", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(Contains(result.standardError, Path("log"))) << result.standardError;
    EXPECT_FALSE(Contains(Calls(), "Open")) << Calls();
    EXPECT_EQ(ReadFileIfAny(Path("log")), "records");

    std::ofstream(Path("log"), std::ios::trunc).flush();
    result = Load("-LOG " + Path("log") + " -FAKE_RECORDS 5", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
}

TEST_F(FakeLoad, RecordsAreInTheTargetWhileTheLoadWaits) {
    RunningProgram program(
        MQAM_PROGRAM,
        {"load", "--module", FAKE_MODULE, "--init", Script("-FAKE_RECORDS 2 -FAKE_LAST_PAUSE 60000"), "--to",
         Path("out"), "--unprotected"},
        {}, folder_.Root());
    EXPECT_TRUE(WaitForText(Path("out"), "record 1\nrecord 2\n"));
}

TEST_F(FakeLoad, InterruptEndsTheInputCleanly) {
    ASSERT_TRUE(RunningProgram::PrepareInterrupts());
    RunningProgram program(
        MQAM_PROGRAM,
        {"load", "--module", FAKE_MODULE, "--init", Script("-FAKE_RECORDS 100000 -FAKE_PAUSE 10"), "--to",
         Path("out"), "--unprotected"},
        {}, folder_.Root());
    ASSERT_TRUE(WaitForCalls("Read Read Read")) << program.Wait(0).standardError;
    ASSERT_TRUE(program.Interrupt());
    const ProgramResult result = program.Wait();
    EXPECT_EQ(result.exitCode, 5) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "press again to stop immediately")) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "on request")) << result.standardError;
    EXPECT_TRUE(Contains(Calls(), "PutAttribute GEN_EOF= Read Close Shut")) << Calls();
    EXPECT_TRUE(ReadFileIfAny(Path("out")).starts_with("record 1\nrecord 2\n"));
}

#if !defined(_WIN32)

TEST_F(FakeLoad, AClosedTerminalCostsNoRecordThatWasRead) {
    RunningProgram program(
        MQAM_PROGRAM,
        {"load", "--module", FAKE_MODULE, "--init", Script("-FAKE_RECORDS 100000 -FAKE_PAUSE 1"), "--to",
         Path("out"), "--unprotected"},
        {}, folder_.Root());
    ASSERT_TRUE(WaitForCalls(" Read Read Read Read Read Read Read Read ")) << program.Wait(0).standardError;
    ASSERT_TRUE(program.Signal(1));  // SIGHUP
    const ProgramResult result = program.Wait();
    EXPECT_EQ(result.exitCode, 5) << result.standardError;
    const std::string calls = Calls();
    ASSERT_TRUE(calls.ends_with("PutAttribute GEN_EOF= Read Close Shut")) << calls;
    std::string expected;
    for (int i = 1; i < CountOf(calls, "Read"); ++i)
        expected += "record " + std::to_string(i) + "\n";
    EXPECT_EQ(ReadFileIfAny(Path("out")), expected);
}

#endif

TEST_F(FakeLoad, SecondInterruptStopsAtOnce) {
    ASSERT_TRUE(RunningProgram::PrepareInterrupts());
    RunningProgram program(
        MQAM_PROGRAM,
        {"load", "--module", FAKE_MODULE, "--init", Script("-FAKE_RECORDS 1 -FAKE_LAST_PAUSE 60000"), "--to",
         Path("out"), "--unprotected"},
        {}, folder_.Root());
    ASSERT_TRUE(WaitForCalls("Read Read")) << program.Wait(0).standardError;
    ASSERT_TRUE(program.Interrupt());
    ASSERT_TRUE(program.WaitForError("press again"));
    // A second signal that follows immediately would count as the same one.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    ASSERT_TRUE(program.Interrupt());
    const ProgramResult result = program.Wait();
    EXPECT_EQ(result.exitCode, 7) << result.standardError;
    EXPECT_TRUE(Contains(result.standardError, "stopped immediately")) << result.standardError;
    EXPECT_FALSE(Contains(Calls(), "Close")) << Calls();
}

TEST_F(FakeLoad, PlainProgressLinesAppearEveryFewSeconds) {
    const ProgramResult result = Load("-FAKE_RECORDS 2 -FAKE_LAST_PAUSE 6000", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(Contains(result.standardError, "mqam: 2 records, 16 bytes, ")) << result.standardError;
}

TEST_F(FakeLoad, WrongOptionsAreRefusedWithCodeOne) {
    const std::vector<Arguments> wrong = {
        {},
        {"load"},
        {"load", "--to", "-"},
        {"load", "--qmgr", "Q", "--to", "-", "--no-such-option"},
        {"load", "--qmgr", "Q", "--to", "-", "--format", "xml"},
        {"load", "--qmgr", "Q", "--to", "-", "--force", "--append"},
        {"load", "--qmgr", "Q", "--to", "-", "--checkpoint-every", "0"},
        {"load", "--qmgr", "Q", "--to", "-", "--timeout", "0"},
        {"load", "--qmgr", "Q", "--to", "-", "--attribute", "=x"},
        {"load", "--qmgr", "Q", "--to", "-", "--attribute", "NAME"},
        {"load", "--qmgr", "a b", "--to", "-"},
        {"check"},
        {"no-such-command"},
    };
    for (const Arguments& arguments : wrong) {
        std::string line;
        for (const std::string& word : arguments)
            line += " " + word;
        const ProgramResult result = RunProgram(MQAM_PROGRAM, arguments, folder_.Root());
        EXPECT_EQ(result.exitCode, 1) << line;
        EXPECT_TRUE(result.standardError.starts_with("mqam")) << line << "\n" << result.standardError;
        EXPECT_TRUE(Contains(result.standardError, "\n  usage     mqam ")) << line << "\n"
                                                                           << result.standardError;
    }
}

TEST_F(FakeLoad, HelpHasSeveralNamesAndTheWidthOfTheTerminal) {
    const ProgramResult option =
        RunProgram(MQAM_PROGRAM, {"load", "--help"}, folder_.Root(), {{"COLUMNS", "60"}});
    EXPECT_EQ(option.exitCode, 0);
    for (const Arguments& other :
         std::vector<Arguments>{{"help", "load"}, {"load", "-h"}, {"load", "help"}}) {
        const ProgramResult result = RunProgram(MQAM_PROGRAM, other, folder_.Root(), {{"COLUMNS", "60"}});
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        EXPECT_EQ(result.standardOutput, option.standardOutput);
    }
    for (const char* columns : {"40", "60", "80", "120"}) {
        for (const Arguments& command :
             std::vector<Arguments>{{"help"}, {"help", "load"}, {"help", "queue", "put"}}) {
            std::istringstream lines(
                RunProgram(MQAM_PROGRAM, command, folder_.Root(), {{"COLUMNS", columns}}).standardOutput);
            std::size_t longest = 0;
            for (std::string line; std::getline(lines, line);) {
                if (line.ends_with('\r')) line.pop_back();  // on Windows
                // A single word may be longer than a line.
                const std::string text = line.substr(std::min(line.find_first_not_of(' '), line.size()));
                if (text.find(' ') != std::string::npos) longest = std::max(longest, line.size());
            }
            EXPECT_LE(longest, std::stoul(columns));
        }
    }
    EXPECT_EQ(RunProgram(MQAM_PROGRAM, {"help", "laod"}, folder_.Root()).exitCode, 1);
}

#if !defined(_WIN32)
TEST_F(FakeLoad, AnAnswerThatCannotBeWrittenIsReported) {
    for (const char* command : {"help load", "load --help", "--version", "completion bash", "explain 2085"}) {
        const ProgramResult result = RunProgram(
            "/bin/sh", {"-c", std::string(MQAM_PROGRAM) + " " + command + " >/dev/full"}, folder_.Root());
        EXPECT_EQ(result.exitCode, 3) << command;
        EXPECT_TRUE(Contains(result.standardError, "standard output"))
            << command << " " << result.standardError;
    }
}
#endif

TEST_F(FakeLoad, HelpTeachesOptionsExamplesAndExitCodes) {
    const ProgramResult result = RunProgram(MQAM_PROGRAM, {"load", "--help"}, folder_.Root());
    EXPECT_EQ(result.exitCode, 0);
    for (const char* part : {"Examples:", "Exit codes:", "--qmgr", "--trace", "a keyword given in both",
                             "  7  stopped immediately"}) {
        EXPECT_TRUE(Contains(WithUnixLineEnds(result.standardOutput), part)) << part;
    }
}

TEST_F(FakeLoad, CheckPrintsTheParametersAndOpensNothing) {
    const ProgramResult result = RunProgram(
        MQAM_PROGRAM, {"check", "--module", FAKE_MODULE, "--init", Script("-CKFILE a.ckpt -SRVR s")},
        folder_.Root());
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(result.standardOutput,
              "Fake module, Version 1\n"
              "\n"
              "Queue Manager Name  'QM1'\n"
              "Checkpoint          File-based to pathname a.ckpt\n");
    EXPECT_EQ(Calls(), "Init PutAttribute ZBQ_HL_LOG_HANDLE Shut");
}

TEST_F(FakeLoad, CheckTellsTheErrorOfInit) {
    const ProgramResult result =
        RunProgram(MQAM_PROGRAM, {"check", "--module", FAKE_MODULE, "--init", Script("-FAKE_FAIL Init")},
                   folder_.Root());
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_TRUE(Contains(result.standardError, "  message   told to fail\n")) << result.standardError;
}

}  // namespace
