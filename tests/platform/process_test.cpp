// SPDX-License-Identifier: Apache-2.0
#include "platform/process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "tests/support/program_runner.h"
#include "tests/support/same_test_process.h"
#include "tests/support/test_directory.h"

namespace {

constexpr char kPartVariable[] = "MQAM_TEST_PART";
constexpr int kExitCode = 42;

// Starts this test again in a child process that plays `part`.
platform::ProcessHandle StartChild(const std::string& part, platform::ProcessOptions options = {}) {
    std::vector<std::string> arguments = ArgumentsForThisTest();
    arguments.insert(arguments.begin(), ThisProgram());
    options.environment[kPartVariable] = part;
    std::string error;
    const platform::ProcessHandle child =
        platform::StartProcess(platform::RunningProgramPath(), arguments, options, error);
    EXPECT_NE(child, platform::kNoProcess) << error;
    return child;
}

[[noreturn]] void SleepForEver() {
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

TEST(Process, TheExitCodeOfAChildIsReturned) {
    if (!PartToPlay().empty()) {
        platform::ExitImmediately(kExitCode);
    }
    const platform::ProcessEnd end = platform::WaitForProcess(StartChild("exit"));
    EXPECT_FALSE(end.killed);
    EXPECT_EQ(end.code, kExitCode);
}

TEST(Process, AWaitEndsAfterItsTimeWhileTheChildRuns) {
    if (!PartToPlay().empty()) {
        SleepForEver();
    }
    const platform::ProcessHandle child = StartChild("sleep");
    EXPECT_FALSE(platform::WaitForProcess(child, 1).has_value());
    platform::KillProcess(child);
    const platform::ProcessEnd end = platform::WaitForProcess(child);
    EXPECT_TRUE(end.killed || end.code == platform::kKilledExitCode) << end.code;
    EXPECT_TRUE(platform::ReadMarkedExit(end).killed);
}

TEST(Process, AnExitThatIsMarkedIsNoKill) {
    if (!PartToPlay().empty()) {
        platform::ExitImmediately(platform::MarkExitCode(kExitCode));
    }
    const platform::ProcessEnd end = platform::ReadMarkedExit(platform::WaitForProcess(StartChild("exit")));
    EXPECT_FALSE(end.killed);
    EXPECT_EQ(end.code, kExitCode);
}

TEST(Process, TheStreamsOfAChildAreTheFilesThatAreGiven) {
    if (!PartToPlay().empty()) {
        std::fputs(std::getchar() == EOF ? "no input" : "input", stdout);
        std::fputs("error", stderr);
        std::fflush(stdout);
        std::fflush(stderr);
        platform::ExitImmediately(0);
    }
    const TestDirectory directory;
    platform::ProcessOptions options;
    options.outputPath = directory.Path("output");
    options.errorPath = directory.Path("error");
    options.hasEmptyInput = true;
    EXPECT_EQ(platform::WaitForProcess(StartChild("print", options)).code, 0);
    const std::string output = ReadFileIfAny(options.outputPath);
    // The test runner prints its own lines first.
    EXPECT_TRUE(output.ends_with("no input")) << output;
    EXPECT_TRUE(ReadFileIfAny(options.errorPath).ends_with("error"));
}

TEST(Process, VariablesOfAChildReplaceThoseOfTheParentOnlyInTheChild) {
    if (!PartToPlay().empty()) {
        platform::ExitImmediately(PartToPlay() == "second" ? kExitCode : 1);
    }
    EXPECT_EQ(platform::WaitForProcess(StartChild("second")).code, kExitCode);
    EXPECT_EQ(PartToPlay(), "");
    GiveOutPart("first");
    EXPECT_EQ(platform::WaitForProcess(StartChild("second")).code, kExitCode);
    EXPECT_EQ(PartToPlay(), "first");
    GiveOutPart("");
}

TEST(Process, OneThatKillsItselfIsKilled) {
    if (!PartToPlay().empty()) {
        platform::KillCurrentProcess();
    }
    const platform::ProcessEnd end = platform::WaitForProcess(StartChild("kill"));
    EXPECT_TRUE(end.killed || end.code == platform::kKilledExitCode) << end.code;
}

TEST(Process, ItsProgramAndUserHaveNames) {
    EXPECT_TRUE(platform::ProgramName().starts_with("platform_test")) << platform::ProgramName();
    EXPECT_EQ(platform::ProgramName().find_first_of("/\\"), std::string::npos);
    EXPECT_NE(platform::UserName(), "");
}

TEST(Process, RandomNumbersDiffer) {
    EXPECT_NE(platform::RandomNumber(), platform::RandomNumber());
}

TEST(Process, AnotherThreadHasAnotherId) {
    std::uint64_t other = 0;
    std::thread([&other] { other = platform::CurrentThreadId(); }).join();
    EXPECT_NE(other, platform::CurrentThreadId());
    EXPECT_NE(other, 0U);
}

TEST(Process, AProgramThatIsMissingIsAnError) {
    const TestDirectory directory;
    std::string error;
    const std::string program = directory.Path("missing.exe");
    const platform::ProcessHandle child = platform::StartProcess(program, {program}, {}, error);
    if (child == platform::kNoProcess) {
        EXPECT_NE(error, "");
    } else {
        EXPECT_EQ(platform::WaitForProcess(child).code, platform::kNotExecuted);
    }
}

}  // namespace
