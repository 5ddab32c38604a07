// SPDX-License-Identifier: Apache-2.0
#include "platform/interrupts.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>

#include "platform/clock.h"
#include "platform/process.h"
#include "tests/support/program_runner.h"
#include "tests/support/same_test_process.h"
#include "tests/support/test_directory.h"

namespace {

constexpr int kSecondExitCode = 42;

[[noreturn]] void WatchForEver() {
    platform::WatchInterrupts({"first\n", "second\n", kSecondExitCode});
    std::fputs(platform::InterruptRequested() ? "interrupted too early\n" : "ready\n", stderr);
    while (!platform::InterruptRequested()) {
        platform::SleepMs(1);
    }
    std::fputs("requested\n", stderr);
    for (;;) {
        platform::SleepMs(1000);
    }
}

TEST(Interrupts, TheFirstIsReportedAndTheSecondEndsTheProcess) {
    if (!PartToPlay().empty()) {
        WatchForEver();
    }
    const TestDirectory directory;
    GiveOutPart("watch");
    RunningProgram child(ThisProgram(), ArgumentsForThisTest(), {}, directory.Root());
    GiveOutPart("");
    ASSERT_TRUE(child.WaitForError("ready\n"));
    EXPECT_TRUE(child.Signal(SIGTERM));
    EXPECT_TRUE(child.WaitForError("first\n"));
    EXPECT_TRUE(child.WaitForError("requested\n"));
    platform::SleepMs(200);  // what comes earlier counts as the same interrupt
    EXPECT_TRUE(child.Signal(SIGINT));
    const ProgramResult result = child.Wait();
    EXPECT_EQ(result.exitCode, kSecondExitCode);
    EXPECT_TRUE(result.standardError.ends_with("second\n")) << result.standardError;
}

TEST(Interrupts, AHangupCountsOnceHoweverOftenItComes) {
    if (!PartToPlay().empty()) {
        WatchForEver();
    }
    const TestDirectory directory;
    GiveOutPart("watch");
    RunningProgram child(ThisProgram(), ArgumentsForThisTest(), {}, directory.Root());
    GiveOutPart("");
    ASSERT_TRUE(child.WaitForError("ready\n"));
    EXPECT_TRUE(child.Signal(SIGHUP));
    EXPECT_TRUE(child.WaitForError("first\n"));
    EXPECT_TRUE(child.WaitForError("requested\n"));
    platform::SleepMs(200);  // what comes earlier counts as the same interrupt
    EXPECT_TRUE(child.Signal(SIGHUP));
    EXPECT_TRUE(child.Signal(SIGTERM));
    const ProgramResult result = child.Wait();
    EXPECT_EQ(result.exitCode, kSecondExitCode);
    EXPECT_TRUE(result.standardError.ends_with("requested\nsecond\n")) << result.standardError;
}

// This is how nohup starts a program.
TEST(Interrupts, AHangupThatWasIgnoredBeforeIsIgnored) {
    if (!PartToPlay().empty()) {
        std::signal(SIGHUP, SIG_IGN);
        if (PartToPlay() == "forward") platform::ForwardInterrupts();
        platform::WatchInterrupts({"first\n", "second\n", kSecondExitCode});
        std::raise(SIGHUP);
        std::fputs(platform::InterruptRequested() || platform::InterruptForwarded() ? "taken\n" : "ignored\n",
                   stderr);
        platform::ExitImmediately(0);
    }
    const TestDirectory directory;
    for (const char* part : {"watch", "forward"}) {
        GiveOutPart(part);
        RunningProgram child(ThisProgram(), ArgumentsForThisTest(), {}, directory.Root());
        GiveOutPart("");
        EXPECT_EQ(child.Wait().standardError, "ignored\n") << part;
    }
}

}  // namespace
