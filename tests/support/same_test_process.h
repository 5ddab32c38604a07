// SPDX-License-Identifier: Apache-2.0

// Lets a test start its own program again, so that it runs in two processes. The new process runs only this
// test, which calls PartToPlay to learn which of the two it is in.
#pragma once

#include <string>
#include <vector>

/// Returns the part that the test must play, which is empty in the process that the test runner started.
[[nodiscard]] std::string PartToPlay();

/// Makes every program that this process starts from now on play `part`.
void GiveOutPart(const std::string& part);

/// These return the path and the arguments that start the running test again.
[[nodiscard]] std::string ThisProgram();
[[nodiscard]] std::vector<std::string> ArgumentsForThisTest();
