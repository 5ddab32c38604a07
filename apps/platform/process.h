// SPDX-License-Identifier: Apache-2.0

// Controls this process and child processes.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace platform {

[[nodiscard]] std::int64_t CurrentProcessId();

/// Ends the process without any exit routine, of this program or of a library: the exit routine of an MQ
/// library may disconnect, and that commits. What the C library buffers is lost; standard error is not
/// buffered.
[[noreturn]] void ExitImmediately(int exitCode);

/// Kills the process, as an operator does: no exit routine runs, and the parent sees a killed child.
[[noreturn]] void KillCurrentProcess();

[[nodiscard]] std::uint64_t CurrentThreadId();

/// Returns the name of this computer, or "unknown" when the system does not know it.
[[nodiscard]] std::string HostName();

/// Returns the name of the user that the process runs as.
[[nodiscard]] std::string UserName();

/// Returns the file name of the running program without its directory.
[[nodiscard]] std::string ProgramName();

/// Returns a number that differs from process to process and from call to call. It is unique enough for a
/// name, but on Windows it can be guessed.
[[nodiscard]] std::uint64_t RandomNumber();

/// From now on a crash ends the process immediately. Without this Windows may show a dialog and wait.
void SuppressCrashDialogs();

/// Lets the process open as many files as the system allows it.
void RaiseOpenFileLimit();

/// Returns a path with which the running program can be started again, on POSIX even after its file was
/// renamed or deleted. Returns an empty string if the system does not know the path.
[[nodiscard]] std::string RunningProgramPath();

struct ProcessOptions {
    /// These variables are added to those of this process, and replace the ones of the same name.
    std::map<std::string, std::string> environment;
    /// Standard output and error go to these files, which are emptied if they exist. If a path is empty, the
    /// child has this process's stream.
    std::string outputPath;
    std::string errorPath;
    bool hasEmptyInput = false;       ///< otherwise the child has this process's standard input
    bool endsWithParent = false;      ///< the system kills the child when this process ends, however it ends
    bool receivesInterrupts = false;  ///< see ForwardInterrupts; for one child at a time
};

using ProcessHandle = std::intptr_t;
inline constexpr ProcessHandle kNoProcess = -1;

/// On POSIX, this is the exit code of a child whose program could not be executed.
inline constexpr int kNotExecuted = 127;

/// Starts a program. `arguments` begin with its name. Returns kNoProcess, with the system's error in `error`,
/// if it fails. If the program is missing, it fails on Windows; on POSIX the child then ends with
/// kNotExecuted. Every process that was started must be waited for.
[[nodiscard]] ProcessHandle StartProcess(const std::string& program,
                                         const std::vector<std::string>& arguments,
                                         const ProcessOptions& options, std::string& error);

struct ProcessEnd {
    bool killed = false;  ///< a signal ended it; on Windows only ReadMarkedExit sets this
    int code = 0;         ///< the exit code, or on POSIX the number of the signal
};

/// On Windows, this is the exit code of a process that KillProcess ended.
inline constexpr int kKilledExitCode = 137;

/// Waits until a process ends. The handle is invalid afterwards.
ProcessEnd WaitForProcess(ProcessHandle process);

/// Does the same, but returns nullopt if the process has not ended after `timeoutMs`; the handle is then
/// still valid.
[[nodiscard]] std::optional<ProcessEnd> WaitForProcess(ProcessHandle process, std::int64_t timeoutMs);

/// Ends a process immediately. WaitForProcess must follow.
void KillProcess(ProcessHandle process);

/// Sends a signal to a process. Returns false if it cannot be sent, and always on Windows, which has no
/// signals.
[[nodiscard]] bool SignalProcess(ProcessHandle process, int signalNumber);

/// Returns the exit code with which a child must end so that ReadMarkedExit of its parent knows that it was
/// not killed. Windows reports the end of a killed process like an exit, so there the exit code carries a
/// mark.
[[nodiscard]] int MarkExitCode(int exitCode);

/// Returns how a child that marks its exit codes has ended. Without the mark, it was killed.
[[nodiscard]] ProcessEnd ReadMarkedExit(const ProcessEnd& end);

}  // namespace platform
