// SPDX-License-Identifier: Apache-2.0
#include "tests/spoolmq/support/child_process.h"

#include <cstdio>
#include <cstdlib>

#include "platform/system.h"

ChildProcess StartChild(const std::vector<std::string>& programAndArguments) {
    std::string error;
    const std::string& program = programAndArguments.front();
    const ChildProcess child = {platform::StartProcess(program, programAndArguments, {}, error)};
    if (child.process == platform::kNoProcess) {
        std::fprintf(stderr, "cannot start %s: %s\n", program.c_str(), error.c_str());
        std::abort();
    }
    return child;
}

int WaitForChild(ChildProcess* child) {
    constexpr int kFirstOfSignals = 128;
    const platform::ProcessEnd end = platform::WaitForProcess(child->process);
    child->process = platform::kNoProcess;
    return end.killed ? kFirstOfSignals + end.code : end.code;
}

void KillChild(const ChildProcess& child) {
    platform::KillProcess(child.process);
}

bool ProcessesStartReliably() {
    return !platform::kIsWindows;
}
