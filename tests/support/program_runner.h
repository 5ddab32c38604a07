// SPDX-License-Identifier: Apache-2.0

// Runs a program with arguments and returns its exit code and what it printed. The end-to-end tests run mqam
// in this way.
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

/// A running program. Its standard output and standard error go to files in the directory that the caller
/// names. The destructor kills a program that is still running.
class RunningProgram {
  public:
    /// Starts the program. It gets `environment` in addition to the caller's variables, and an empty standard
    /// input. If it cannot be started, the reason goes to the caller's standard error.
    RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                   const std::map<std::string, std::string>& environment, const std::string& folder);
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;
    ~RunningProgram();

    /// Prepares to send interrupts; must be called before the program is started. Returns false if the
    /// preparation fails.
    [[nodiscard]] static bool PrepareInterrupts();

    /// Sends the interrupt that Ctrl-C sends. Returns false if it could not be sent.
    [[nodiscard]] bool Interrupt() const;

    /// Sends a signal to this process only. Returns false if the system has no signals, and if the process
    /// has ended.
    [[nodiscard]] bool Signal(int number) const;

    /// Waits until the program's standard error contains `text`. Returns false after `seconds` without it.
    [[nodiscard]] bool WaitForError(const std::string& text, int seconds = 30) const;

    /// Waits until the program ends, and kills it if it has not ended after `seconds`.
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

/// Waits until a file contains `text`. Returns false if it does not within `seconds`.
[[nodiscard]] bool WaitForText(const std::string& path, const std::string& text, int seconds = 30);

/// Returns the text with each CR LF replaced by LF.
std::string WithUnixLineEnds(const std::string& text);
