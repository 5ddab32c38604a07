// This very test program, started again: so a test has a second process at hand. The program is to be run for
// one test at a time, as ctest does; that test then finds out which of the two processes it is in.
#pragma once

#include <string>
#include <vector>

/// The part that the test is to play: empty in the process that the test runner started.
[[nodiscard]] std::string PartToPlay();

/// From now on a program started by this process plays `part`.
void GiveOutPart(const std::string& part);

/// Path and arguments with which this very test is started again.
[[nodiscard]] std::string ThisProgram();
[[nodiscard]] std::vector<std::string> ArgumentsForThisTest();

/// From now on a worker that RunWorker starts is this very test, and plays `part`.
void MakeThisTestTheWorker(const std::string& part);
