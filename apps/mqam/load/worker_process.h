// A worker: this very program, started again with the same arguments and some more, to live one life of the
// module. It ends when the program that started it ends, however that happens. worker_process_posix.cpp and
// worker_process_windows.cpp answer, but for what is the same on both.
#pragma once

#include <string>
#include <vector>

namespace mqam {

/// Keeps the program's arguments for RunWorker.
void KeepArguments(int count, char** arguments);

/// A worker's arguments: `more` behind the program and its subcommand, in front of everything else, where
/// nothing that the user typed can change what they mean.
[[nodiscard]] std::vector<std::string> ComposeWorkerArguments(const std::vector<std::string>& ofCommand,
                                                              const std::vector<std::string>& more);

struct WorkerEnd {
    bool started = false;
    bool killed = false;  ///< by a signal, an exception or somebody, not by an exit of its own
    int code = 0;         ///< exit code, or the number of what killed it
    std::string reason;   ///< the system's words, when it was not started
};

/// Starts a worker and waits for its end. The worker has this program's standard streams.
[[nodiscard]] WorkerEnd RunWorker(const std::vector<std::string>& moreArguments);

/// What a worker ends with for `exitCode`. Windows gives one that somebody ended an exit code like any other:
/// there a worker marks its own, and every code without the mark is a kill.
[[nodiscard]] int MarkWorkerExit(int exitCode);

/// From now on an interrupt (Ctrl-C, SIGTERM) is the worker's to answer; it is handed on to a worker that
/// does not see it by itself. A reader of standard error that goes away ends nothing.
void LeaveInterruptsToWorker();

/// Whether one came since.
[[nodiscard]] bool InterruptCame();

}  // namespace mqam
