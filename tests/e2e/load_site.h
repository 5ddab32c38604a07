// A restartable load in a folder of its own: queue, checkpoint file, restart file, target, and the command
// that loads, the same every time. Several run side by side in a test: what a load costs is waiting.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/program_runner.h"
#include "tests/support/test_directory.h"

class LoadSite {
  public:
    using Arguments = std::vector<std::string>;

    /// Makes the folder, below `root`, with the empty queue Q1 of QM1.
    LoadSite(const std::string& root, const std::string& name);

    /// Puts so many messages, all different, behind those before.
    void Put(int count);
    /// Puts one message; an empty one is none of the expected records.
    void Put(const std::string& message);

    /// The plan of the stand-in queue manager, for each process from now on. Empty: none.
    void PlanFaults(const std::string& plan) const;

    /// Replaces an option of the command, or adds it; without a value the option is left out.
    void Set(const std::string& option, const std::string& value);
    void LeaveOut(const std::string& option);

    /// The command, with more arguments behind its own.
    [[nodiscard]] Arguments Command(const Arguments& more = {}) const;
    /// Starts it; with Wait in between, any number of times.
    RunningProgram& Start(const Arguments& more = {});
#if !defined(_WIN32)
    /// Starts it so that it can make no file larger than so many KiB: a write beyond that fails.
    RunningProgram& StartWithFileLimit(int kibibytes);
#endif
    const ProgramResult& Wait(int seconds = 50);
    const ProgramResult& Run(const Arguments& more = {});
    RunningProgram& Program() {
        return *program_;
    }
    /// Of the last command that was waited for.
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
    [[nodiscard]] std::string CheckpointFile() const {
        return Path("ck");
    }

    [[nodiscard]] const std::vector<std::string>& Messages() const {
        return messages_;
    }
    /// The first `count` messages as lines; all of them without a count.
    [[nodiscard]] std::string Lines(std::size_t count = SIZE_MAX) const;
    /// How many messages are on the queue, for any program to get.
    [[nodiscard]] int Depth() const;
    /// The value of a line of the restart file.
    [[nodiscard]] std::string Stored(const std::string& key) const;
    /// What is in the folder, beside queue and output of the program, sorted, with a blank between two.
    [[nodiscard]] std::string Files() const;

    /// Whether the load is done: every message once and in order in the target, none on the queue, no file
    /// left but target and receipt, exit code 0.
    [[nodiscard]] testing::AssertionResult IsDone() const;

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

/// Starts them all, then waits for all.
void RunAll(std::vector<std::unique_ptr<LoadSite>>& sites, const LoadSite::Arguments& more = {});

/// A test with any number of sites.
class LoadSites : public testing::Test {
  protected:
    /// A site with so many messages.
    LoadSite& Add(const std::string& name, int messages, const std::string& faults = "");

    /// A load of 10 messages that was killed: 3 are stored, 2 more are in the checkpoint file.
    LoadSite& AddUnfinished(const std::string& name);

    /// Nothing fails any more, and all are run again.
    void RunAllAgain();

    TestDirectory folder_;
    std::vector<std::unique_ptr<LoadSite>> sites_;
};

[[nodiscard]] bool Contains(const std::string& text, const std::string& part);

/// How often a text contains a part.
[[nodiscard]] int CountOf(const std::string& text, const std::string& part);
