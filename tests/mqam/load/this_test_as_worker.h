// SPDX-License-Identifier: Apache-2.0

// Lets a test play the worker process that it starts.
#pragma once

#include <string>
#include <vector>

#include "mqam/load/worker_process.h"
#include "tests/support/same_test_process.h"

/// From now on, a worker that RunWorker starts is this very test, which then plays `part`.
inline void MakeThisTestTheWorker(const std::string& part) {
    std::vector<std::string> words = ArgumentsForThisTest();
    words.insert(words.begin(), ThisProgram());
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    mqam::KeepArguments(static_cast<int>(arguments.size()), arguments.data());
    GiveOutPart(part);
}
