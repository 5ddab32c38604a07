// SPDX-License-Identifier: Apache-2.0

// Starts a worker: this very program again, with the same arguments and some more, for one attempt at the
// load. The worker ends when the program that started it ends, however that happens.
#pragma once

#include <string>
#include <vector>

namespace mqam {

/// Keeps the program's arguments for RunWorker.
void KeepArguments(int count, char** arguments);

/// Returns the arguments that were kept.
[[nodiscard]] const std::vector<std::string>& KeptArguments();

/// Returns the arguments that resume the load of a command, after the program's name: those of the user without the
/// worker's, and without what allows only this command to accept a loss.
[[nodiscard]] std::vector<std::string> ComposeResumeArguments(const std::vector<std::string>& ofWorker);

/// Returns a worker's arguments: `more` after the program and its subcommand and before everything else, where nothing
/// that the user typed can change their meaning.
[[nodiscard]] std::vector<std::string> ComposeWorkerArguments(const std::vector<std::string>& ofCommand,
                                                              const std::vector<std::string>& more);

struct WorkerEnd {
    bool started = false;
    bool killed = false;  ///< by a signal, an exception or someone, rather than by an exit of its own
    int code = 0;         ///< exit code, or the number of what killed it
    std::string reason;   ///< the system's error if it was not started
};

/// Starts a worker and waits for its end. The worker has this program's standard streams, and receives the
/// interrupts that this program forwards. It must mark its exit code, see platform::MarkExitCode.
[[nodiscard]] WorkerEnd RunWorker(const std::vector<std::string>& moreArguments);

}  // namespace mqam
