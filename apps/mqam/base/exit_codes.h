// SPDX-License-Identifier: Apache-2.0

// Defines the exit codes of `mqam`. Their meanings are in mqam/explain/code_tables.h, from which the help and
// the documentation are generated.
#pragma once

namespace mqam {

enum ExitCode : int {
    kExitDone = 0,
    kExitNotStarted = 1,
    kExitModuleFailed = 2,
    kExitTargetFailed = 3,
    kExitModuleMissing = 4,
    kExitInterrupted = 5,
    kExitTimeout = 6,
    kExitStoppedImmediately = 7,
    kExitEndedEarly = 8,
    kExitRestart = 9,
    /// Only `mqam checkpoint` uses this: the file is incomplete, damaged or cannot be repaired.
    kExitDamaged = 10,
    kExitNothingToDo = 11,
};

}  // namespace mqam
