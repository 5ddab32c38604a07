// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/worker_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "platform/interrupts.h"
#include "platform/process.h"
#include "tests/mqam/load/this_test_as_worker.h"
#include "tests/support/program_runner.h"
#include "tests/support/same_test_process.h"
#include "tests/support/test_directory.h"

using namespace mqam;

namespace {

constexpr int kAsExpected = 42;
constexpr int kNotAsExpected = 43;

WorkerEnd RunThisTestAsWorker(const std::string& part, const std::vector<std::string>& more = {}) {
    MakeThisTestTheWorker(part);
    WorkerEnd end = RunWorker(more);
    GiveOutPart("");
    return end;
}

std::vector<std::string> LastArguments(std::size_t count) {
    const std::vector<std::string> all = testing::internal::GetArgvs();
    return {all.end() - static_cast<std::ptrdiff_t>(std::min(count, all.size())), all.end()};
}

TEST(WorkerProcessTest, ItsExitCodeIsTold) {
    if (!PartToPlay().empty())
        platform::ExitImmediately(platform::MarkExitCode(std::atoi(PartToPlay().c_str())));
    for (const int code : {0, 1, 9, 65, 126}) {
        const WorkerEnd end = RunThisTestAsWorker(std::to_string(code));
        EXPECT_TRUE(end.started) << end.reason;
        EXPECT_FALSE(end.killed);
        EXPECT_EQ(end.code, code);
    }
}

TEST(WorkerProcessTest, ItGetsTheArgumentsOfTheCommandAndThoseOfItsOwn) {
    const std::vector<std::string> more = {
        "--worker-since", "with a blank", "",  "C:\\data\\",   "C:\\a folder\\", "quo\"te",
        "\\\"",           "\"",           "*", "$HOME %PATH%", "\\\\a\\b",       "a\tb'c"};
    if (!PartToPlay().empty()) {
        const bool asExpected =
            LastArguments(more.size()) == more && testing::internal::GetArgvs().front() == ThisProgram();
        platform::ExitImmediately(platform::MarkExitCode(asExpected ? kAsExpected : kNotAsExpected));
    }
    const WorkerEnd end = RunThisTestAsWorker("look", more);
    EXPECT_TRUE(end.started) << end.reason;
    EXPECT_EQ(end.code, kAsExpected);
}

TEST(WorkerProcessTest, ArgumentsOfItsOwnStandBehindTheSubcommand) {
    using Words = std::vector<std::string>;
    EXPECT_EQ(ComposeWorkerArguments({"mqam", "load", "--to", "x", "--"}, {"--worker", "1"}),
              (Words{"mqam", "load", "--worker", "1", "--to", "x", "--"}));
    EXPECT_EQ(ComposeWorkerArguments({"mqam"}, {"--worker"}), (Words{"mqam", "--worker"}));
}

TEST(WorkerProcessTest, ItHasTheStandardStreamsOfTheCommand) {
    if (PartToPlay() == "write") {
        std::fputs("from the worker", stderr);
        std::fflush(stderr);
        platform::ExitImmediately(platform::MarkExitCode(kAsExpected));
    }
    if (PartToPlay() == "command") platform::ExitImmediately(RunThisTestAsWorker("write").code);
    const TestDirectory folder;
    const ProgramResult result =
        RunProgram(ThisProgram(), ArgumentsForThisTest(), folder.Root(), {{"MQAM_TEST_PART", "command"}});
    EXPECT_EQ(result.exitCode, kAsExpected);
    EXPECT_EQ(result.standardError, "from the worker");
}

TEST(WorkerProcessTest, OneThatIsKilledIsTold) {
    if (!PartToPlay().empty()) std::abort();
    const WorkerEnd end = RunThisTestAsWorker("abort");
    EXPECT_TRUE(end.started);
    EXPECT_TRUE(end.killed);
#if !defined(_WIN32)
    EXPECT_EQ(end.code, SIGABRT);
#endif
}

// The worker writes a dot every few milliseconds until it is killed.
[[noreturn]] void WriteDots(const std::string& path) {
    std::ofstream dots(path);
    for (int i = 0; i < 6000; ++i) {
        dots << '.' << std::flush;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    platform::ExitImmediately(kNotAsExpected);
}

TEST(WorkerProcessTest, ItEndsWithTheCommandHoweverThatEnds) {
    const std::string part = PartToPlay();
    const std::size_t colon = part.find(':');
    const std::string path = part.substr(colon + 1);
    if (part.starts_with("worker:")) WriteDots(path);
    if (part.starts_with("command:")) platform::ExitImmediately(RunThisTestAsWorker("worker:" + path).code);
    const TestDirectory folder;
    const std::string dots = folder.Path("dots");
    RunningProgram command(ThisProgram(), ArgumentsForThisTest(), {{"MQAM_TEST_PART", "command:" + dots}},
                           folder.Root());
    ASSERT_TRUE(WaitForText(dots, "..."));
    static_cast<void>(command.Wait(0));  // kills it
    std::string before;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    do {
        before = ReadFileIfAny(dots);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    } while (ReadFileIfAny(dots) != before && std::chrono::steady_clock::now() < limit);
    EXPECT_EQ(ReadFileIfAny(dots), before);
}

#if !defined(_WIN32)

// A signal that is sent only to the command reaches the worker as well. The worker ends, because it has no
// handler.
TEST(WorkerProcessTest, ASignalToTheCommandIsHandedOn) {
    const TestDirectory folder;
    const std::string part = PartToPlay();
    if (part.starts_with("worker:")) WriteDots(part.substr(part.find(':') + 1));
    platform::ForwardInterrupts();
    EXPECT_FALSE(platform::InterruptForwarded());
    const std::string dots = folder.Path("dots");
    std::thread sender([&dots] {
        EXPECT_TRUE(WaitForText(dots, "..."));
        EXPECT_TRUE(platform::SignalProcess(platform::CurrentProcessId(), SIGTERM));
    });
    const WorkerEnd end = RunThisTestAsWorker("worker:" + dots);
    sender.join();
    EXPECT_TRUE(end.killed);
    EXPECT_EQ(end.code, SIGTERM);
    EXPECT_TRUE(platform::InterruptForwarded());
}

TEST(WorkerProcessTest, ASignalThatCameBeforeTheWorkerWasThereEndsIt) {
    const TestDirectory folder;
    const std::string part = PartToPlay();
    if (part.starts_with("worker:")) WriteDots(part.substr(part.find(':') + 1));
    platform::ForwardInterrupts();
    ASSERT_EQ(raise(SIGINT), 0);
    EXPECT_TRUE(platform::InterruptForwarded());
    const WorkerEnd end = RunThisTestAsWorker("worker:" + folder.Path("dots"));
    EXPECT_TRUE(end.killed);
}

#endif

}  // namespace
