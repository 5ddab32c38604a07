// SPDX-License-Identifier: Apache-2.0

// Runs `mqam load` on a terminal: standard error is a pseudo-terminal, which only POSIX systems have.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"

namespace {

// Runs a load with standard error on a terminal and returns what the terminal showed.
std::string LoadOnTerminal(const std::string& script, const std::string& target, unsigned short columns) {
    int master = -1;
    int slave = -1;
    winsize size{};
    size.ws_col = columns;
    size.ws_row = 25;
    if (openpty(&master, &slave, nullptr, nullptr, &size) != 0) return "no terminal";
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(slave, STDERR_FILENO);
        close(master);
        execl(MQAM_PROGRAM, MQAM_PROGRAM, "load", "--module", FAKE_MODULE, "--init", script.c_str(), "--to",
              target.c_str(), "--unprotected", nullptr);
        _exit(127);
    }
    close(slave);
    std::string shown;
    char bytes[4096];
    // Reading fails once the other end is closed, which happens when the program ends.
    for (ssize_t count = 0; (count = read(master, bytes, sizeof bytes)) > 0;) {
        shown.append(bytes, static_cast<std::size_t>(count));
    }
    close(master);
    waitpid(pid, nullptr, 0);
    return shown;
}

TEST(LoadOnATerminal, OneLiveLineShowsTheProgress) {
    const TestDirectory folder;
    const std::string shown = LoadOnTerminal("-FAKE_RECORDS 2 -FAKE_LAST_PAUSE 1500", folder.Path("out"), 80);
    EXPECT_NE(shown.find("\r2 records, 16 bytes, "), std::string::npos) << shown;
    EXPECT_EQ(shown.find("mqam: 2 records"), std::string::npos) << shown;
    // The first line that ends with a line end belongs to the summary. The live line before it was erased.
    EXPECT_NE(shown.find(" \rmqam load: end of the queue\r\n"), std::string::npos) << shown;
    EXPECT_EQ(ReadFileIfAny(folder.Path("out")), "record 1\nrecord 2\n");
}

// A line that is longer than the terminal would scroll it with every update.
TEST(LoadOnATerminal, TheLiveLineFitsANarrowTerminal) {
    const TestDirectory folder;
    const std::string shown = LoadOnTerminal("-FAKE_RECORDS 2 -FAKE_LAST_PAUSE 1500", folder.Path("out"), 24);
    EXPECT_NE(shown.find("2 records, 16 bytes\r"), std::string::npos) << shown;
    EXPECT_EQ(shown.find("records/s,"), std::string::npos) << shown;
}

}  // namespace
