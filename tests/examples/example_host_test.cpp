// SPDX-License-Identifier: Apache-2.0

// Runs the example host with the real module and the stand-in queue manager: complete loads, and loads whose
// first attempts are killed at a planned MQ call.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "platform/process.h"
#include "tests/support/files.h"
#include "tests/support/program_runner.h"

namespace {

namespace fs = std::filesystem;

constexpr int kDone = 0;
constexpr int kFailed = 2;
constexpr int kRunAgain = 9;

class ExampleHostTest : public testing::Test {
  protected:
    void SetUp() override {
        directory_ =
            fs::path(testing::TempDir()) / ("example_host." + std::to_string(platform::CurrentProcessId()));
        fs::create_directories(directory_ / "spool" / "QM1" / "ORDERS");
    }

    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(directory_, ignored);
    }

    void Put(int count) {
        for (int i = 0; i < count; ++i) {
            char name[64];
            std::snprintf(name, sizeof name, "20260101-000000-%09d.msg", ++puts_);
            const std::string message = "record " + std::to_string(puts_);
            std::ofstream(directory_ / "spool" / "QM1" / "ORDERS" / name, std::ios::binary) << message;
            expected_ += message + "\n";
        }
    }

    // Makes one attempt. The plan of faults, if there is one, says at which MQ call the process is killed.
    int RunAttempt(const std::string& faults = "") {
        const std::map<std::string, std::string> environment = {
            {"SPOOLMQ_DIR", (directory_ / "spool").string()},
            {"MQAMOD_MQ_LIBRARY", PathOnSystem(SPOOLMQ_LIBRARY)},
            {"SPOOLMQ_FAULTS", faults},
            {"ASAN_OPTIONS", "detect_leaks=0"}};  // the example leaves its buffers to the end of the process
        const ProgramResult result =
            RunProgram(PathOnSystem(EXAMPLE_HOST),
                       {PathOnSystem(MODULE_LIBRARY), "-QMGR QM1 -QNM ORDERS", Path("orders.ckpt"),
                        Path("orders.state"), Path("orders.txt"), "3"},
                       directory_.string(), environment);
        errors_ += result.standardError;
        return result.exitCode;
    }

    // Makes attempts until one does not ask for another, but at most five.
    int RunUntilDone() {
        int exitCode = kRunAgain;
        for (int attempt = 0; attempt < 5 && exitCode == kRunAgain; ++attempt)
            exitCode = RunAttempt();
        return exitCode;
    }

    [[nodiscard]] std::string Path(const std::string& name) const { return (directory_ / name).string(); }
    [[nodiscard]] std::string Loaded() const { return ReadFileIfAny(Path("orders.txt")); }
    [[nodiscard]] std::size_t LoadedRecords() const {
        const std::string loaded = Loaded();
        return static_cast<std::size_t>(std::count(loaded.begin(), loaded.end(), '\n'));
    }

    std::string expected_;
    std::string errors_;

  private:
    fs::path directory_;
    int puts_ = 0;
};

TEST_F(ExampleHostTest, SourceHasFewerThan150Lines) {
    const std::string source = ReadFile(PathOnSystem(EXAMPLE_SOURCE));
    const auto lines = std::count(source.begin(), source.end(), '\n');
    EXPECT_GT(lines, 100) << "the source was read";
    EXPECT_LT(lines, 150);
}

TEST_F(ExampleHostTest, PlainLoadIsExactAndDoneAfterAnAttemptThatFindsNothingNew) {
    Put(10);
    EXPECT_EQ(RunAttempt(), kRunAgain) << errors_;
    EXPECT_EQ(Loaded(), expected_);
    EXPECT_EQ(RunAttempt(), kDone) << errors_;
    EXPECT_EQ(Loaded(), expected_);
}

TEST_F(ExampleHostTest, MessagesThatArriveLaterAreLoadedByALaterAttempt) {
    Put(4);
    EXPECT_EQ(RunUntilDone(), kDone) << errors_;
    Put(4);
    EXPECT_EQ(RunUntilDone(), kDone) << errors_;
    EXPECT_EQ(Loaded(), expected_);
}

TEST_F(ExampleHostTest, AQueueManagerThatIsMissingFailsTheAttempt) {
    EXPECT_EQ(RunAttempt("MQCONNX 1 fail 2 2059"), kFailed);
    EXPECT_NE(errors_.find("host: error in Open"), std::string::npos) << errors_;
    EXPECT_NE(errors_.find("2059"), std::string::npos) << errors_;
}

TEST_F(ExampleHostTest, ATargetThatHasLostRecordsIsRefusedAndNotTouched) {
    Put(10);
    EXPECT_EQ(RunAttempt(), kRunAgain) << errors_;
    std::ofstream(Path("orders.txt"), std::ios::binary | std::ios::trunc) << "record 1\n";
    EXPECT_EQ(RunAttempt(), kFailed);
    EXPECT_EQ(Loaded(), "record 1\n");
}

// Each plan kills the first attempt, and some plans kill the second one as well.
class KilledExampleHostTest : public ExampleHostTest, public testing::WithParamInterface<const char*> {};

TEST_P(KilledExampleHostTest, LoadsEveryRecordOnceInOrder) {
    Put(10);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const int exitCode = RunAttempt(GetParam());
        EXPECT_NE(exitCode, kDone);
        EXPECT_NE(exitCode, kFailed) << "killed, not failed: " << errors_;
        if (attempt == 0) {
            EXPECT_NE(exitCode, kRunAgain) << "the first attempt was killed";
            EXPECT_LT(LoadedRecords(), 10U) << "in the middle of the load";
        }
    }
    EXPECT_EQ(RunUntilDone(), kDone) << errors_;
    EXPECT_EQ(Loaded(), expected_);
}

INSTANTIATE_TEST_SUITE_P(AtAnMqCall, KilledExampleHostTest,
                         testing::Values("MQGET 1 kill before", "MQGET 1 kill after", "MQGET 5 kill before",
                                         "MQGET 5 kill after", "MQCMIT 1 kill before", "MQCMIT 1 kill after",
                                         "MQCMIT 4 kill before", "MQCMIT 4 kill after", "MQCMIT 8 kill after",
                                         "MQCONNX 1 kill after", "MQOPEN 1 kill after"));

}  // namespace
