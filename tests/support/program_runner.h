// SPDX-License-Identifier: Apache-2.0

// Runs a program with arguments and returns its exit code and what it printed: the end-to-end tests' view of
// mqam.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/process.h"

struct ProgramResult {
    int exitCode = -1;           ///< -1 when the program could not be started or did not end by itself
    std::string standardOutput;  ///< byte for byte
    std::string standardError;   ///< with Unix line ends
};

/// A running program. Its standard output and error go to files in a directory of the caller.
class RunningProgram {
  public:
    /// `environment` is added to the caller's own. Standard input is empty.
    RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                   const std::map<std::string, std::string>& environment, const std::string& folder);
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;
    ~RunningProgram();

    /// Prepares to send interrupts; must be called before the program is started. Returns false when that
    /// could not be done.
    [[nodiscard]] static bool PrepareInterrupts();

    /// Sends what Ctrl-C sends. Returns false when that could not be done.
    [[nodiscard]] bool Interrupt() const;

    /// Sends a signal to this one process. Returns false where there are no signals, and when the process has
    /// ended.
    [[nodiscard]] bool Signal(int number) const;

    /// Waits until the program's standard error contains `text`. Returns false after `seconds`.
    [[nodiscard]] bool WaitForError(const std::string& text, int seconds = 30) const;

    /// Waits for the end. A program that has not ended after `seconds` is killed.
    ProgramResult Wait(int seconds = 150);

  private:
    std::string outPath_;
    std::string errPath_;
    platform::ProcessHandle process_ = platform::kNoProcess;
};

ProgramResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& folder,
                         const std::map<std::string, std::string>& environment = {});

/// Reads a whole file. Returns an empty string when it cannot be read.
std::string ReadFileIfAny(const std::string& path);

/// Waits until a file contains `text`. Returns false after `seconds`.
[[nodiscard]] bool WaitForText(const std::string& path, const std::string& text, int seconds = 30);

/// Returns the text with each CR LF replaced by LF.
std::string WithUnixLineEnds(const std::string& text);
