// SPDX-License-Identifier: Apache-2.0

// Runs `mqam checkpoint` as a process.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "mqam/target/lock_file.h"
#include "mqam/target/restart_state.h"
#include "tests/support/checkpoint_bytes.h"
#include "tests/support/json_values.h"
#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"

#if !defined(_WIN32)
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace mqam;

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

const std::string kTorn = LengthBytes(50) + "torn";

class CheckpointCommand : public testing::Test {
  protected:
    [[nodiscard]] std::string Path(const std::string& name = "load.ckpt") const { return folder_.Path(name); }

    // Runs `mqam checkpoint COMMAND load.ckpt MORE`.
    ProgramResult Run(const std::string& command, const Arguments& more = {}) const {
        Arguments arguments = {"checkpoint", command, Path()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ProgramResult result = RunProgram(MQAM_PROGRAM, arguments, folder_.Root());
        result.standardOutput = WithUnixLineEnds(result.standardOutput);
        return result;
    }

    TestDirectory folder_;
};

TEST_F(CheckpointCommand, ShowListsEachRecordWithOffsetLengthAndFirstBytes) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one", std::string("\0\xFFtwo", 5)}) + kTorn);
    const ProgramResult result = Run("show");
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(
        result.standardOutput,
        Path() +
            ": 40 bytes, checkpoint 5, 2 records (8 bytes of data); 12 bytes from offset 28 to the end are not a complete record\n"
            "      offset     length  begins\n"
            "           4          3  6f 6e 65                                         |one|\n"
            "          15          5  00 ff 74 77 6f                                   |..two|\n"
            "(give --position or --restart-file to see what a restart would do)\n");
}

TEST_F(CheckpointCommand, ShowWithJsonIsOneObject) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one", std::string("\0\xFFtwo", 5)}) + kTorn);
    WriteBytesTo(Path("MQAMtmp.77"), CheckpointBytes(4, {"old"}));
    const ProgramResult result = Run("show", {"--json", "--first", "1"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    auto values = ReadJson(result.standardOutput);
    ASSERT_TRUE(values.has_value()) << result.standardOutput;
    EXPECT_EQ(*values, (std::map<std::string, std::string>{{"file", Path()},
                                                           {"verdict", "incomplete"},
                                                           {"checkpoint", "5"},
                                                           {"bytes", "40"},
                                                           {"intact_bytes", "28"},
                                                           {"records", "2"},
                                                           {"record_bytes", "8"},
                                                           {"listed.0.offset", "4"},
                                                           {"listed.0.length", "3"},
                                                           {"listed.0.begins", "6f6e65"},
                                                           {"temporary_files.0.file", Path("MQAMtmp.77")},
                                                           {"temporary_files.0.verdict", "intact"},
                                                           {"temporary_files.0.checkpoint", "4"},
                                                           {"temporary_files.0.bytes", "15"},
                                                           {"temporary_files.0.intact_bytes", "15"},
                                                           {"temporary_files.0.records", "1"},
                                                           {"temporary_files.0.record_bytes", "3"},
                                                           {"restart", "null"}}));
}

TEST_F(CheckpointCommand, ShowWithJsonSaysWhatARestartWouldDo) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one", "two"}));
    const std::string position = std::string("05000000080000000400000000000000");
    auto values = ReadJson(Run("show", {"--json", "--position", position}).standardOutput);
    ASSERT_TRUE(values.has_value());
    EXPECT_EQ((*values)["restart.refused"], "false");
    EXPECT_TRUE((*values)["restart.text"].starts_with("A restart with the position " + position));
    auto refused = ReadJson(Run("show", {"--json", "--position", "04" + position.substr(2)}).standardOutput);
    ASSERT_TRUE(refused.has_value());
    EXPECT_EQ((*refused)["restart.refused"], "true");
}

TEST_F(CheckpointCommand, VerifyWithJsonHasTheVerdictTheLossAndTheSameExitCode) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one"}));
    const ProgramResult intact = Run("verify", {"--json"});
    EXPECT_EQ(intact.exitCode, 0);
    auto values = ReadJson(intact.standardOutput);
    ASSERT_TRUE(values.has_value()) << intact.standardOutput;
    EXPECT_EQ((*values)["verdict"], "intact");
    EXPECT_FALSE(values->contains("lost.from"));

    WriteBytesTo(Path(), CheckpointBytes(5, {"one"}) + std::string(100, '\0'));
    const ProgramResult damaged = Run("verify", {"--json"});
    EXPECT_EQ(damaged.exitCode, 10);
    values = ReadJson(damaged.standardOutput);
    ASSERT_TRUE(values.has_value()) << damaged.standardOutput;
    EXPECT_EQ((*values)["verdict"], "damaged");
    EXPECT_EQ((*values)["lost.from"], "15");
    EXPECT_EQ((*values)["lost.to"], "115");
    EXPECT_NE(Run("verify").standardOutput.find("at most " + (*values)["lost.records_at_most"] +
                                                " records are lost"),
              std::string::npos);

    fs::remove(Path());
    const ProgramResult missing = Run("verify", {"--json"});
    EXPECT_EQ(missing.exitCode, 1);
    values = ReadJson(missing.standardOutput);
    ASSERT_TRUE(values.has_value()) << missing.standardOutput;
    EXPECT_EQ((*values)["verdict"], "missing");
}

TEST_F(CheckpointCommand, ShowLeavesOutTheMiddleOfALongFileUnlessAllIsGiven) {
    std::vector<std::string> records;
    records.reserve(1025);
    for (int i = 0; i < 1025; ++i)
        records.push_back("r" + std::to_string(i));
    WriteBytesTo(Path(), CheckpointBytes(1, records));
    const auto has = [](const ProgramResult& result, const std::string& part) {
        return result.standardOutput.find(part) != std::string::npos;
    };
    const ProgramResult usual = Run("show");
    EXPECT_TRUE(has(usual, "|r9|\n             (1,005 records left out; --all lists them)\n"));
    EXPECT_TRUE(has(usual, "|r1015|\n") && has(usual, "|r1024|\n"));
    EXPECT_FALSE(has(usual, "|r10|\n") || has(usual, "|r1014|\n"));
    const ProgramResult ends = Run("show", {"--first", "1", "--last", "2"});
    EXPECT_TRUE(has(ends, "|r0|\n             (1,022 records left out; --all lists them)\n"));
    EXPECT_TRUE(has(ends, "|r1023|\n") && !has(ends, "|r1|\n") && !has(ends, "|r1022|\n"));
    const ProgramResult all = Run("show", {"--all"});
    EXPECT_TRUE(has(all, "|r512|\n") && !has(all, "left out"));
}

TEST_F(CheckpointCommand, ShowTellsWhatARestartWithAPositionWouldDo) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one", "two"}));
    WriteBytesTo(Path("MQAMtmp.4711"), CheckpointBytes(6, {"two"}));
    const std::string position = "06000000090000000F00000000000000";
    const ProgramResult result = Run("show", {"--position", position});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    const std::string expected =
        "temporary file " + Path("MQAMtmp.4711") +
        ": 15 bytes, checkpoint 6, 1 record (3 bytes of data)\n"
        "A restart with the position 06000000090000000f00000000000000 (checkpoint 6, taken after 9 records, "
        "offset "
        "15):\n"
        "  first: delete " +
        Path("MQAMtmp.4711") +
        " (a rewrite was interrupted; its records are in the checkpoint file)\n"
        "  the load resumes after checkpoint 6: " +
        Path() + " returns the last record loaded, to be compared, then the queue is read\n";
    EXPECT_TRUE(result.standardOutput.ends_with(expected)) << result.standardOutput;
    const ProgramResult refused = Run("show", {"--position", "04" + position.substr(2)});
    EXPECT_EQ(refused.exitCode, 0);
    EXPECT_NE(refused.standardOutput.find("\n  refused: " + Path() +
                                          " belongs to checkpoint 5, the stored position to "
                                          "checkpoint 4: the file is newer"),
              std::string::npos)
        << refused.standardOutput;
    EXPECT_TRUE(fs::exists(Path("MQAMtmp.4711")));
}

TEST_F(CheckpointCommand, ShowOfAMissingFileTellsItsTemporaryFilesAndFails) {
    WriteBytesTo(Path("MQAMtmp.1"), CheckpointBytes(5, {"one"}));
    const ProgramResult result = Run("show", {"--position", "05000000090000000F00000000000000"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.standardOutput.starts_with(Path() + ": missing\ntemporary file "))
        << result.standardOutput;
    EXPECT_NE(result.standardOutput.find("  first: rename "), std::string::npos) << result.standardOutput;
}

TEST_F(CheckpointCommand, PositionThatIsNoneIsRefused) {
    WriteBytesTo(Path(), "");
    for (const char* position :
         {"", "05", "0500000009000000000000000000000g", "050000000900000000000000000000000"}) {
        const ProgramResult result = Run("show", {std::string("--position=") + position});
        EXPECT_EQ(result.exitCode, 1) << position;
        EXPECT_NE(result.standardError.find("--position"), std::string::npos) << result.standardError;
    }
}

TEST_F(CheckpointCommand, VerifyOfAnIntactFileNamesWhatCannotBeKnown) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one", "two"}));
    const ProgramResult result = Run("verify");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(
        result.standardOutput,
        Path() +
            " is intact\n"
            "  bytes 0 to 3: the sequence number: checkpoint 5\n"
            "  bytes 4 to 25: 2 complete records\n"
            "Not known: the format has no checksum. Changed bytes inside a record or in the sequence number\n"
            "cannot be detected, and neither can the loss of complete records at the end of the file.\n");
}

TEST_F(CheckpointCommand, VerifyTellsATornRecord) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one"}) + kTorn);
    const ProgramResult result = Run("verify");
    EXPECT_EQ(result.exitCode, 10);
    EXPECT_TRUE(
        result.standardOutput.starts_with(Path() +
                                          " is incomplete\n"
                                          "  bytes 0 to 3: the sequence number: checkpoint 5\n"
                                          "  bytes 4 to 14: 1 complete record\n"
                                          "  bytes 15 to 26: a record length of 50, and 4 bytes after it\n"
                                          "Known: a crash in the middle of an append leaves exactly this."))
        << result.standardOutput;
}

TEST_F(CheckpointCommand, VerifyNamesTheDamagedBitOfALengthAndWhatIsMisread) {
    // The damaged length of "two" leads into the middle of "four", where no record begins.
    std::string bytes = CheckpointBytes(5, {"one", "two", "three", "four and more"});
    bytes[15] = static_cast<char>(bytes[15] ^ 32);
    WriteBytesTo(Path(), bytes);
    const ProgramResult result = Run("verify");
    EXPECT_EQ(result.exitCode, 10);
    EXPECT_TRUE(result.standardOutput.starts_with(
        Path() +
        " is damaged\n"
        "  bytes 0 to 3: the sequence number: checkpoint 5\n"
        "  bytes 4 to 14: 1 complete record\n"
        "  bytes 15 to 57: read as 1 complete record, probably wrongly\n"
        "  bytes 58 to 59: the beginning of a record length (8 bytes)\n"
        "Known: one bit of the record length at offset 15 is probably "
        "wrong. With the length 3, 2 complete\n"
        "records from offset 26 would lead exactly to the end of the file.\n"))
        << result.standardOutput;
}

TEST_F(CheckpointCommand, VerifyTellsALengthThatNoRecordHas) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one"}) + LengthBytes(0x7777777777) + "xyz");
    const ProgramResult result = Run("verify", {"--bksz", "100"});
    EXPECT_EQ(result.exitCode, 10);
    EXPECT_NE(result.standardOutput.find(
                  "  bytes 15 to 25: a record length of 513105426295, above the largest record "
                  "(100), and what follows it\n"
                  "Known: no crash of the module leaves this. The start of the next record"),
              std::string::npos)
        << result.standardOutput;
}

TEST_F(CheckpointCommand, VerifyReportsWhereZerosBeginAndWhatTheyCost) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one", "two" + std::string(5, '\0')}) + std::string(3000, '\0'));
    const ProgramResult result = Run("verify");
    EXPECT_EQ(result.exitCode, 10);
    EXPECT_TRUE(result.standardOutput.starts_with(
        Path() +
        " is damaged\n"
        "  bytes 0 to 3: the sequence number: checkpoint 5\n"
        "  bytes 4 to 30: 2 complete records\n"
        "  bytes 31 to 3030: zeros\n"
        "Known: no crash of the module leaves the zeros from offset 31 to the end of the file. A file system\n"
        "shows them where data never reached the disk, for example after a power failure.\n"
        "Not known: the complete record before them ends in zeros too, from offset 26. They can be its own,\n"
        "or it is incomplete.\n"
        "Lost: between offset 31 and offset 3031, at most 334 records are lost (231 if they were as long as\n"
        "the intact ones).\n"
        "Not known: the format has no checksum."))
        << result.standardOutput;
}

TEST_F(CheckpointCommand, VerifyListsTheRecordsOnBothSidesOfTheDamage) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one"}) + std::string(100, '\xE5') + LengthBytes(5) + "three" +
                             LengthBytes(4) + "four");
    const ProgramResult result = Run("verify");
    EXPECT_EQ(result.exitCode, 10);
    EXPECT_NE(result.standardOutput.find("  bytes 4 to 14: 1 complete record\n"
                                         "  bytes 15 to 114: bytes E5\n"
                                         "  bytes 115 to 139: 2 complete records\n"),
              std::string::npos)
        << result.standardOutput;
    EXPECT_NE(
        result.standardOutput.find("Lost: between offset 15 and offset 115, at most 11 records are lost"),
        std::string::npos)
        << result.standardOutput;
}

TEST_F(CheckpointCommand, VerifyReportsASequenceNumberThatNeverReachedTheDisk) {
    WriteBytesTo(Path(), HeaderBytes(0));
    const ProgramResult result = Run("verify");
    EXPECT_EQ(result.exitCode, 10);
    EXPECT_NE(result.standardOutput.find("Known: no checkpoint has the number 0."), std::string::npos)
        << result.standardOutput;
    EXPECT_EQ(result.standardOutput.find("Lost:"), std::string::npos) << result.standardOutput;
}

TEST_F(CheckpointCommand, VerifyOfAMissingFileFails) {
    const ProgramResult result = Run("verify");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.standardError, "mqam checkpoint: " + Path() + ": missing\n");
}

TEST_F(CheckpointCommand, RepairWithoutATerminalShowsItsStepsAndChangesNothing) {
    const std::string bytes = CheckpointBytes(5, {"one"});
    WriteBytesTo(Path(), bytes + kTorn);
    const ProgramResult result = Run("repair");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.standardOutput.starts_with("copy " + Path() + ", from offset 15 to its end, to " +
                                                  Path() + ".torn\ntruncate " + Path() + " to 15 bytes"))
        << result.standardOutput;
    EXPECT_NE(result.standardError.find("nothing was changed"), std::string::npos) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path()), bytes + kTorn);
    EXPECT_FALSE(fs::exists(Path("load.ckpt.torn")));
}

TEST_F(CheckpointCommand, RepairWithYesMakesItsStepsAndThenFindsNothing) {
    const std::string bytes = CheckpointBytes(5, {"one"});
    WriteBytesTo(Path(), "");
    WriteBytesTo(Path("MQAMtmp.1"), bytes);
    const ProgramResult result = Run("repair", {"--yes", "--position", "05000000090000000000000000000000"});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_NE(result.standardOutput.find("\ndone\nA restart with the position"), std::string::npos)
        << result.standardOutput;
    EXPECT_NE(result.standardOutput.find("  the load resumes after checkpoint 5"), std::string::npos);
    EXPECT_EQ(ReadFileIfAny(Path()), bytes);
    EXPECT_TRUE(fs::exists(Path("load.ckpt.kept")));
    const ProgramResult again = Run("repair");
    EXPECT_EQ(again.exitCode, 0) << again.standardError;
    EXPECT_EQ(again.standardOutput, Path() + ": nothing to repair\n");
}

TEST_F(CheckpointCommand, RepairOfADamagedFileChangesNothing) {
    const std::string bytes =
        CheckpointBytes(5, {"one"}) + LengthBytes(99) + "two" + LengthBytes(5) + "three";
    WriteBytesTo(Path(), bytes);
    const ProgramResult result = Run("repair", {"--yes"});
    EXPECT_EQ(result.exitCode, 10);
    EXPECT_NE(result.standardError.find("is damaged, so nothing is changed"), std::string::npos)
        << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path()), bytes);
}

#if !defined(_WIN32)
// Runs `mqam checkpoint repair` on a terminal, calls `meanwhile` and answers the question. Returns the exit
// code.
int RepairOnATerminal(
    const std::string& path, const std::string& answer, const std::function<void()>& meanwhile = [] {}) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        execl(MQAM_PROGRAM, MQAM_PROGRAM, "checkpoint", "repair", path.c_str(), nullptr);
        _exit(127);
    }
    std::string shown;
    char piece[512];
    // Reading the terminal fails once the program has ended.
    for (bool answered = false;;) {
        const ssize_t got = read(terminal, piece, sizeof piece);
        if (got <= 0) break;
        shown.append(piece, static_cast<std::size_t>(got));
        if (!answered && shown.find("[y/N] ") != std::string::npos) {
            meanwhile();
            answered = write(terminal, answer.data(), answer.size()) == static_cast<ssize_t>(answer.size());
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    close(terminal);
    EXPECT_NE(shown.find("No load may be using this file. Make these changes?"), std::string::npos) << shown;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(CheckpointCommand, RepairOnATerminalAsksFirst) {
    const std::string bytes = CheckpointBytes(5, {"one"});
    WriteBytesTo(Path(), bytes + kTorn);
    EXPECT_EQ(RepairOnATerminal(Path(), "\n"), 1);
    EXPECT_EQ(ReadFileIfAny(Path()), bytes + kTorn);
    EXPECT_EQ(RepairOnATerminal(Path(), "y\n"), 0);
    EXPECT_EQ(ReadFileIfAny(Path()), bytes);
    EXPECT_EQ(ReadFileIfAny(Path("load.ckpt.torn")), kTorn);
}

TEST_F(CheckpointCommand, RepairOfFilesThatChangedWhileItAskedChangesNothing) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one"}) + kTorn);
    const std::string later = CheckpointBytes(5, {"one", "two"}) + kTorn;
    EXPECT_EQ(RepairOnATerminal(Path(), "y\n", [this, &later] { WriteBytesTo(Path(), later); }), 1);
    EXPECT_EQ(ReadFileIfAny(Path()), later);
    EXPECT_FALSE(fs::exists(Path("load.ckpt.torn")));
    EXPECT_FALSE(fs::exists(Path("mqam-checkpoint.lock")));
    EXPECT_EQ(RepairOnATerminal(Path(), "y\n"), 0);
}

TEST_F(CheckpointCommand, RepairThatCannotKeepTheTornBytesDoesNotCutThemOff) {
    // The name leaves room for the first such suffix, which is in use, but not for the second.
    const std::string path = Path(std::string(250, 'x'));
    WriteBytesTo(path + ".torn", "of another repair");
    const std::string bytes = CheckpointBytes(5, {"one"}) + kTorn;
    WriteBytesTo(path, bytes);
    const ProgramResult result =
        RunProgram(MQAM_PROGRAM, {"checkpoint", "repair", path, "--yes"}, folder_.Root());
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.standardError.find("could not copy "), std::string::npos) << result.standardError;
    EXPECT_NE(result.standardError.find("File name too long"), std::string::npos) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(path), bytes);
}
#endif

TEST_F(CheckpointCommand, ExportOfAnIntactFileWritesAllRecords) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one", "two"}));
    const ProgramResult result = Run("export", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(result.standardOutput, Path() + ": 2 records (6 bytes) written to " + Path("out") +
                                         "\n  written: 2 records, from offset 4 to offset 26\n");
    EXPECT_EQ(ReadFileIfAny(Path("out")), "one\ntwo\n");
    EXPECT_FALSE(fs::exists(Path("mqam-checkpoint.lock")));
    const ProgramResult again = Run("export", {"--to", Path("out")});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_EQ(again.standardError,
              "mqam checkpoint: nothing was exported: " + Path("out") +
                  " exists and is not overwritten: choose another name, or move it away\n");
}

TEST_F(CheckpointCommand, ExportOfADamagedFileWritesAPartAndReportsTheRest) {
    const std::string bytes =
        CheckpointBytes(5, {"one", "t\nwo"}) + std::string(100, '\0') + LengthBytes(5) + "three";
    WriteBytesTo(Path(), bytes);
    const ProgramResult result = Run("export", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 10) << result.standardError;
    EXPECT_EQ(
        result.standardOutput,
        Path() + ": 3 records (12 bytes) written to " + Path("out") +
            "; the file is damaged\n"
            "  written: 2 records before the damage, from offset 4 to offset 27\n"
            "  written: 1 record after the damage, from offset 127 to offset 140\n"
            "  (probable: one length leads to the end of the file)\n"
            "  missing: between offset 27 and offset 127, at most 11 records are lost (9 if they were as long as "
            "the intact ones)\n"
            "  note: 1 record is of several lines, because the data contains line feeds; --format length keeps "
            "records apart\n");
    EXPECT_EQ(ReadFileIfAny(Path("out")), "one\nt\nwo\nthree\n");
    EXPECT_EQ(ReadFileIfAny(Path()), bytes);
}

TEST_F(CheckpointCommand, ExportThatCannotReadOrWriteLeavesNothing) {
    EXPECT_EQ(Run("export", {"--to", Path("out")}).exitCode, 1);
    EXPECT_FALSE(fs::exists(Path("out")));
    WriteBytesTo(Path(), CheckpointBytes(5, {"one"}));
    EXPECT_EQ(Run("export", {"--to", Path("none") + "/out"}).exitCode, 3);
    EXPECT_EQ(Run("export").exitCode, 1);
    EXPECT_EQ(Run("export", {"--to", Path("out"), "--format", "lines2"}).exitCode, 1);
    ASSERT_EQ(AcquireLockFile(CheckpointLockPath(Path()), 0).Error(), "");
    const ProgramResult result = Run("export", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.standardError.find("mqam checkpoint: nothing was exported: another load is running"),
              std::string::npos)
        << result.standardError;
    EXPECT_FALSE(fs::exists(Path("out")));
    ReleaseLockFile(CheckpointLockPath(Path()));
}

// ---- with the restart file of the load

// A load that stored checkpoint 5 after 8 records, the last of which was "one".
class CheckpointOfALoad : public CheckpointCommand {
  protected:
    void SetUp() override {
        state_.checkpointFile = Path();
        state_.target = "/data/orders.txt";
        state_.position = MakePosition(5, 8, 77);
        state_.lastRecordLength = 3;
        state_.lastRecordDigest = DigestOf("one", 3);
        WriteBytesTo(Path(), CheckpointBytes(5, {"one", "two"}));
    }
    [[nodiscard]] std::string RestartFile() const { return Path("a load.restart"); }

    ProgramResult RunWithState(const std::string& command, const Arguments& more = {}) const {
        WriteBytesTo(RestartFile(), FormatRestartState(state_));
        Arguments arguments = {"--restart-file", RestartFile()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Run(command, arguments);
    }

    // Checks that each of the three commands refuses with 1 and this text, and that the file does not change.
    void ExpectRefusal(const std::string& words, const Arguments& more = {}) const {
        const std::string before = ReadFileIfAny(Path());
        for (const char* command : {"show", "verify", "repair"}) {
            Arguments arguments = {"--restart-file", RestartFile()};
            arguments.insert(arguments.end(), more.begin(), more.end());
            const ProgramResult result = Run(command, arguments);
            EXPECT_EQ(result.exitCode, 1) << command << result.standardOutput;
            EXPECT_EQ(result.standardOutput, "");
            EXPECT_NE(result.standardError.find(words), std::string::npos) << result.standardError;
        }
        EXPECT_EQ(ReadFileIfAny(Path()), before);
    }

    RestartState state_;
};

TEST_F(CheckpointOfALoad, ShowTellsWhatARestartWouldDoWithTheStoredPosition) {
    const ProgramResult result = RunWithState("show");
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_TRUE(result.standardOutput.ends_with(
        "A restart with the position 05000000080000004d00000000000000 (checkpoint 5, taken after 8 records, "
        "offset 77):\n"
        "  the load resumes after checkpoint 5: " +
        Path() +
        " returns the last record loaded, to be compared, and replays 1 record after it, then the queue is "
        "read\n"))
        << result.standardOutput;
}

TEST_F(CheckpointOfALoad, VerifyTellsWhetherTheLoadCanGoOnWithAnIntactFile) {
    ProgramResult result = RunWithState("verify");
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_NE(result.standardOutput.find(" is intact\n"), std::string::npos);
    EXPECT_NE(result.standardOutput.find("  the load resumes after checkpoint 5"), std::string::npos)
        << result.standardOutput;
    state_.position = MakePosition(9, 8, 77);
    result = RunWithState("verify");
    EXPECT_EQ(result.exitCode, 10) << result.standardError;
    EXPECT_NE(result.standardOutput.find("\n  refused: " + Path() + " belongs to checkpoint 5"),
              std::string::npos)
        << result.standardOutput;
}

TEST_F(CheckpointOfALoad, ARecordThatIsNotTheLastOneLoadedIsTold) {
    state_.lastRecordDigest = DigestOf("two", 3);
    const std::string words = "  then refused: the record at offset 4 of " + Path() +
                              " is not the last one loaded: the checkpoint file or the restart file is "
                              "another load's or a backup; restore the right file\n";
    ProgramResult result = RunWithState("show");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.standardOutput.ends_with(words)) << result.standardOutput;
    result = RunWithState("verify");
    EXPECT_EQ(result.exitCode, 10);
    EXPECT_TRUE(result.standardOutput.ends_with(words)) << result.standardOutput;
    // The checkpoint was stored but not carried out, so its offset identifies the record.
    state_.position = MakePosition(6, 9, 15);
    EXPECT_EQ(RunWithState("verify").exitCode, 0);
    state_.lastRecordLength = 4;
    EXPECT_EQ(RunWithState("verify").exitCode, 10);
}

TEST_F(CheckpointOfALoad, RepairTakesTheTemporaryFileOfTheStoredCheckpoint) {
    fs::remove(Path());
    WriteBytesTo(Path("MQAMtmp.1"), CheckpointBytes(4, {"zero", "one"}));
    WriteBytesTo(Path("MQAMtmp.2"), CheckpointBytes(5, {"one", "two"}));
    const ProgramResult result = RunWithState("repair", {"--yes"});
    EXPECT_EQ(result.exitCode, 10) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path()), CheckpointBytes(5, {"one", "two"}));
    EXPECT_TRUE(fs::exists(Path("MQAMtmp.1")));
    EXPECT_FALSE(fs::exists(Path("mqam-checkpoint.lock")));
}

TEST_F(CheckpointOfALoad, ALoadThatHasStoredNothingYetBegins) {
    state_.position.reset();
    WriteBytesTo(Path(), "");
    const ProgramResult result = RunWithState("show");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(
        result.standardOutput.ends_with("A restart without a stored position:\n"
                                        "  nothing is stored and no record waits in " +
                                        Path() + ": a new load begins\n"))
        << result.standardOutput;
}

TEST_F(CheckpointOfALoad, ExportLeavesOutWhatIsLoaded) {
    const ProgramResult result = RunWithState("export", {"--to", Path("out")});
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path("out")), "two\n");
    EXPECT_NE(result.standardOutput.find("  left out: 1 record that the load has loaded already\n"),
              std::string::npos)
        << result.standardOutput;
}

TEST_F(CheckpointOfALoad, ARestartFileOfNoUseIsRefused) {
    ExpectRefusal("mqam checkpoint: restart file " + RestartFile() + " is missing\n");
    const std::string good = FormatRestartState(state_);
    WriteBytesTo(RestartFile(), good.substr(0, good.size() - 1));
    ExpectRefusal("mqam checkpoint: restart file " + RestartFile() + " is cut short; restore");
    WriteBytesTo(RestartFile(), "");
    ExpectRefusal(" is empty; restore");
    state_.phase = LoadPhase::kComplete;
    WriteBytesTo(RestartFile(), FormatRestartState(state_));
    ExpectRefusal(" is over: every record is in /data/orders.txt, and no checkpoint file belongs to it");
    state_.phase = LoadPhase::kLoading;
    state_.checkpointFile = "/elsewhere/orders.ckpt";
    WriteBytesTo(RestartFile(), FormatRestartState(state_));
    ExpectRefusal(" belongs to the load with checkpoint file /elsewhere/orders.ckpt, not " + Path() +
                  "; to examine a copy of that file give --position 05000000080000004d00000000000000\n");
}

TEST_F(CheckpointOfALoad, PositionAndRestartFileExcludeEachOther) {
    for (const char* command : {"show", "repair"}) {
        const ProgramResult result =
            RunWithState(command, {"--position", "05000000080000004d00000000000000"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_NE(result.standardError.find("--position"), std::string::npos) << result.standardError;
    }
}

TEST_F(CheckpointOfALoad, RepairChangesNothingWhileALoadIsRunning) {
    WriteBytesTo(Path(), CheckpointBytes(5, {"one"}) + kTorn);
    ASSERT_EQ(AcquireLockFile(CheckpointLockPath(Path()), 0).Error(), "");
    const ProgramResult result = RunWithState("repair", {"--yes"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.standardError.find("mqam checkpoint: nothing was changed: another load is running"),
              std::string::npos)
        << result.standardError;
    EXPECT_EQ(ReadFileIfAny(Path()), CheckpointBytes(5, {"one"}) + kTorn);
    ReleaseLockFile(CheckpointLockPath(Path()));
    EXPECT_EQ(RunWithState("repair", {"--yes"}).exitCode, 0);
}

}  // namespace
