// SPDX-License-Identifier: Apache-2.0

// Tests the events of a console. The tests call each handler as the system does, on a thread of its own.
#include <gtest/gtest.h>

#include <cstdio>
#include <thread>

#include "platform/clock.h"
#include "platform/console_events.h"
#include "platform/interrupts.h"
#include "tests/support/program_runner.h"
#include "tests/support/same_test_process.h"
#include "tests/support/test_directory.h"

namespace {

constexpr int kSecondExitCode = 42;
constexpr int kOrderlyExitCode = 43;

constexpr DWORD kEndsOfSession[] = {CTRL_CLOSE_EVENT, CTRL_LOGOFF_EVENT, CTRL_SHUTDOWN_EVENT};

// Delivers `event` to `handler` and waits until `isTaken` returns true. Then ends the process, with another
// exit code if the handler has returned.
template <typename IsTaken>
[[noreturn]] void EndUnlessHandled(PHANDLER_ROUTINE handler, DWORD event, IsTaken isTaken) {
    std::thread([=] {
        handler(event);
        std::fputs("returned\n", stderr);
        std::fflush(stderr);
        platform::ExitImmediately(1);
    }).detach();
    while (!isTaken())
        platform::SleepMs(1);
    platform::SleepMs(200);
    std::fputs("orderly end\n", stderr);
    std::fflush(stderr);
    platform::ExitImmediately(kOrderlyExitCode);
}

[[noreturn]] void PlayPart(const std::string& part) {
    platform::WatchInterrupts({"first\n", "second\n", kSecondExitCode});
    if (part == "key-after-close") {
        std::thread([] { platform::CountConsoleEvent(CTRL_CLOSE_EVENT); }).detach();
        while (!platform::InterruptRequested())
            platform::SleepMs(1);
        platform::SleepMs(200);
        platform::CountConsoleEvent(CTRL_C_EVENT);
    }
    const DWORD event = kEndsOfSession[part.back() - '0'];
    if (part.starts_with("watch")) {
        EndUnlessHandled(platform::CountConsoleEvent, event, platform::InterruptRequested);
    }
    EndUnlessHandled(platform::NoteConsoleEvent, event, platform::InterruptForwarded);
}

ProgramResult Play(const std::string& part) {
    const TestDirectory directory;
    GiveOutPart(part);
    RunningProgram child(ThisProgram(), ArgumentsForThisTest(), {}, directory.Root());
    GiveOutPart("");
    return child.Wait();
}

TEST(ConsoleEvents, TheEndOfASessionIsAnInterruptAndWaitsForTheOrderlyEnd) {
    if (!PartToPlay().empty()) PlayPart(PartToPlay());
    for (const char* part : {"watch0", "watch1", "watch2"}) {
        const ProgramResult result = Play(part);
        EXPECT_EQ(result.exitCode, kOrderlyExitCode) << part;
        EXPECT_EQ(result.standardError, "first\norderly end\n") << part;
    }
    for (const char* part : {"forward0", "forward1", "forward2"}) {
        const ProgramResult result = Play(part);
        EXPECT_EQ(result.exitCode, kOrderlyExitCode) << part;
        EXPECT_EQ(result.standardError, "orderly end\n") << part;
    }
}

TEST(ConsoleEvents, AKeyAfterTheEndOfASessionEndsTheProcessImmediately) {
    if (!PartToPlay().empty()) PlayPart(PartToPlay());
    const ProgramResult result = Play("key-after-close");
    EXPECT_EQ(result.exitCode, kSecondExitCode);
    EXPECT_EQ(result.standardError, "first\nsecond\n");
}

TEST(ConsoleEvents, AnUnknownEventIsLeftToOthers) {
    constexpr DWORD kUnknownEvent = 3;
    EXPECT_FALSE(platform::CountConsoleEvent(kUnknownEvent));
    EXPECT_FALSE(platform::NoteConsoleEvent(kUnknownEvent));
    EXPECT_FALSE(platform::InterruptRequested());
    EXPECT_FALSE(platform::InterruptForwarded());
}

}  // namespace
