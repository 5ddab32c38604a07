// SPDX-License-Identifier: Apache-2.0

// One table decides how a load ends: the exit code of a worker, the exit code of the command, and whether
// another attempt is made. Nothing else does.
#pragma once

#include <cstdint>
#include <span>

#include "mqam/base/exit_codes.h"
#include "mqam/load/worker_process.h"

namespace mqam {

/// How one attempt of a load with restart information ends.
enum class AttemptEnd : std::uint8_t {
    /// The queue was found empty twice: every message is in the target, and the files are cleaned up.
    kLoadDone,
    /// This load was already complete before the command; nothing was touched.
    kNothingToDo,
    /// Another attempt has to find out whether that was all.
    kInputEnded,
    /// The input ended early, and the previous attempt had come just as far.
    kNoProgress,
    kInterrupted,
    /// The module reported that its time-out had expired.
    kTimeout,
    /// A second interrupt ended the worker immediately.
    kStoppedImmediately,
    /// Nothing was started.
    kRefused,
    /// The module failed, and another attempt may succeed.
    kModuleFailed,
    /// The module failed, and it will fail again until someone changes something.
    kModuleRefuses,
    /// The target or another file of the load failed.
    kTargetFailed,
    /// The module could not be loaded.
    kModuleMissing,
    /// The worker ended in another way than by its own decision.
    kWorkerKilled,
    /// The worker process could not be started.
    kWorkerNotStarted,
};

/// What a command does after an attempt.
enum class AfterAttempt : std::uint8_t {
    kEndCommand,
    /// It makes another attempt if the user gave --retry-for and the time is not over.
    kRetry,
    /// It makes another attempt immediately.
    kContinue,
};

/// What a command advises the user to do next.
enum class NextHint : std::uint8_t {
    /// The message says everything that there is to do.
    kNone,
    kRunAgain,
    kFixAndRunAgain,
};

/// This is the exit code of an end that a worker cannot report itself.
inline constexpr int kNoWorkerCode = -1;

/// A worker's exit codes from 64 on are never those of a command.
enum WorkerExitCode : int {
    kWorkerInputEnded = 64,
    kWorkerNoProgress = 65,
    /// A worker returns this for kExitNotStarted, because Windows reports a bare 1 for a process that someone
    /// has ended.
    kWorkerRefused = 66,
};

struct AttemptEndRow {
    AttemptEnd end;
    int workerCode;
    /// The exit code of the command, if this is the last attempt.
    ExitCode exitCode;
    AfterAttempt after;
    NextHint hint;
};

/// Returns one row for each AttemptEnd, in the order of the enumerators.
[[nodiscard]] std::span<const AttemptEndRow> AllAttemptEnds();

[[nodiscard]] const AttemptEndRow& FindAttemptEnd(AttemptEnd end);

/// Returns how the attempt of a worker ended: the first row with its exit code, kWorkerKilled if there is none
/// or something else ended the process.
[[nodiscard]] AttemptEnd AttemptEndOf(const WorkerEnd& worker);

/// Says how a load without restart information ends.
enum class PlainLoadEnd : std::uint8_t {
    kEndOfInput,
    /// The module reported the end of the input before the read wait interval had passed.
    kEndedEarly,
    kInterrupted,
    /// The module reported that its time-out had expired.
    kTimeout,
    /// Nothing was opened: files of an earlier load prevent it, or an option is wrong.
    kNotStarted,
    kModuleFailed,
    kTargetFailed,
};

/// Returns the exit code of a load without restart information.
///   moduleFailed  a request of the module failed, whatever the end of the input was: Close or Shut, for
///                 example
[[nodiscard]] ExitCode ExitCodeOf(PlainLoadEnd end, bool moduleFailed);

}  // namespace mqam
