// Programs started, waited for and killed by the tests, and their environment.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct ChildProcess {
    std::intptr_t process = -1;
};

/// What WaitForChild returns for a program that was killed, by the test or by itself.
inline constexpr int kKilled = 137;

/// Starts a program with the test's environment. Ends the test program when that is not possible.
[[nodiscard]] ChildProcess StartChild(const std::vector<std::string>& programAndArguments);
/// Waits for the end; the exit code, or kKilled.
int WaitForChild(ChildProcess* child);
/// Ends it at once, as an operator's kill -9 does. To be followed by WaitForChild.
void KillChild(const ChildProcess& child);

/// Whether the system starts every program that it is asked to start. Wine under load does not.
[[nodiscard]] bool ProcessesStartReliably();

/// Empty removes the variable.
void SetEnvironment(const std::string& name, const std::string& value);
