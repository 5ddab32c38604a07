// SPDX-License-Identifier: Apache-2.0

// A restartable load in a directory of its own: its queue, checkpoint file, restart file and target, and the
// command that loads, which is the same every time. A test runs several of them at the same time, because a
// load spends most of its time waiting.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"
#include "tests/support/text_search.h"

class LoadSite {
  public:
    using Arguments = std::vector<std::string>;

    /// Makes the directory below `root`, with the empty queue Q1 of QM1.
    LoadSite(const std::string& root, const std::string& name);

    /// Puts `count` more messages, which differ from each other and from all earlier ones.
    void Put(int count);
    /// Puts one message. An empty one does not count as an expected record.
    void Put(const std::string& message);

    /// Sets the fault plan of the stand-in for every process that starts from now on. An empty plan removes
    /// it.
    void PlanFaults(const std::string& plan) const;

    /// Replaces an option of the command, or adds it. Without a value, removes the option.
    void Set(const std::string& option, const std::string& value);
    void LeaveOut(const std::string& option);

    /// Lets the load do without a journal, so that it depends on what is in the checkpoint file.
    void LeaveOutJournal() { Set("--durability", "process"); }

    /// Runs the command, with more arguments after its own.
    [[nodiscard]] Arguments Command(const Arguments& more = {}) const;
    /// Starts the command. It may be called again after Wait.
    RunningProgram& Start(const Arguments& more = {});
#if !defined(_WIN32)
    /// Starts the command with a limit in KiB on the size of files: a write beyond it fails.
    RunningProgram& StartWithFileLimit(int kibibytes);
#endif
    const ProgramResult& Wait(int seconds = 150);
    const ProgramResult& Run(const Arguments& more = {});
    RunningProgram& Program() {
        return *program_;
    }
    /// Returns the result of the last command that was waited for.
    [[nodiscard]] const ProgramResult& Result() const {
        return result_;
    }
    [[nodiscard]] const std::string& Error() const {
        return result_.standardError;
    }

    [[nodiscard]] const std::string& Name() const {
        return name_;
    }
    [[nodiscard]] std::string Folder() const {
        return folder_;
    }
    [[nodiscard]] std::string Path(const std::string& name) const;
    [[nodiscard]] std::string Target() const {
        return Path("out");
    }
    [[nodiscard]] std::string RestartFile() const {
        return Path("restart");
    }
    /// The lock of the target that a command holds.
    [[nodiscard]] std::string CommandLock() const {
        return (std::filesystem::path(Target() + ".load") / "command.lock").string();
    }
    /// The lock of the directory of the checkpoint file.
    [[nodiscard]] std::string CheckpointLock() const {
        return Path("mqam-checkpoint.lock");
    }
    [[nodiscard]] std::string CheckpointFile() const {
        return Path("ck");
    }

    [[nodiscard]] const std::vector<std::string>& Messages() const {
        return messages_;
    }
    /// Returns the first `count` messages as lines, or all of them.
    [[nodiscard]] std::string Lines(std::size_t count = SIZE_MAX) const;
    /// Returns how many messages any program could get from the queue.
    [[nodiscard]] int Depth() const;
    /// Returns the value of a line of the restart file.
    [[nodiscard]] std::string Stored(const std::string& key) const;
    /// Returns what is in the directory, without the queue and the program's output, sorted and separated by
    /// blanks.
    [[nodiscard]] std::string Files() const;

    /// Checks that the load is done: every message is in the target exactly once and in order, none is on the
    /// queue, no file is left but the target and the completion marker, and the exit code is `exitCode`.
    [[nodiscard]] testing::AssertionResult IsDone(int exitCode = 0) const;

    [[nodiscard]] std::map<std::string, std::string> Environment() const;

  private:
    std::string name_;
    std::string folder_;
    std::vector<std::pair<std::string, std::string>> options_;
    std::vector<std::string> messages_;
    int puts_ = 0;
    std::unique_ptr<RunningProgram> program_;
    ProgramResult result_;
};

/// Starts all loads, then waits for all of them.
void RunAll(std::vector<std::unique_ptr<LoadSite>>& sites, const LoadSite::Arguments& more = {});

/// A test that uses any number of sites.
class LoadSites : public testing::Test {
  protected:
    /// Makes a site with `count` messages.
    LoadSite& Add(const std::string& name, int messages, const std::string& faults = "");

    /// Makes a load of 10 messages that was killed: 3 are stored, 2 more are in the checkpoint file. With the
    /// durability "process" it has no journal.
    LoadSite& AddUnfinished(const std::string& name, const std::string& durability = "power");

    /// Removes all faults and runs all loads again.
    void RunAllAgain();

    TestDirectory folder_;
    std::vector<std::unique_ptr<LoadSite>> sites_;
};

/// Checks that a message says that a process holds a lock.
[[nodiscard]] testing::AssertionResult ReportsHolder(const std::string& text, const std::string& lock);
