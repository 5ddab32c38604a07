// SPDX-License-Identifier: Apache-2.0

// Starts programs, waits for them and kills them.
#pragma once

#include <string>
#include <vector>

#include "platform/process.h"

struct ChildProcess {
    platform::ProcessHandle process = platform::kNoProcess;
};

/// WaitForChild returns this for a program that was killed by the test or killed itself.
inline constexpr int kKilled = platform::kKilledExitCode;

/// Starts a program with the environment of the test. Aborts the test program if that is not possible.
[[nodiscard]] ChildProcess StartChild(const std::vector<std::string>& programAndArguments);
/// Waits for the end of the program and returns its exit code, or kKilled.
int WaitForChild(ChildProcess* child);
/// Kills the program as kill -9 does. WaitForChild must follow.
void KillChild(const ChildProcess& child);

/// Returns whether the system starts every program that it is asked to start. Under load, Wine sometimes
/// fails to start one.
[[nodiscard]] bool ProcessesStartReliably();
