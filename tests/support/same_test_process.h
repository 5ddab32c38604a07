// SPDX-License-Identifier: Apache-2.0

// Starts the running test program a second time, so that a test has two processes. The program must be run
// for one test at a time. That test then finds out which of the two processes it is in.
#pragma once

#include <string>
#include <vector>

/// Returns the part that the test must play, which is empty in the process that the test runner started.
[[nodiscard]] std::string PartToPlay();

/// Makes every program that this process starts from now on play `part`.
void GiveOutPart(const std::string& part);

/// Returns the path and the arguments with which the running test is started again.
[[nodiscard]] std::string ThisProgram();
[[nodiscard]] std::vector<std::string> ArgumentsForThisTest();
