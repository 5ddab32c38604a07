// SPDX-License-Identifier: Apache-2.0
#include "mqam/load/worker_process.h"

#include <algorithm>

#include "mqam/load/worker.h"
#include "platform/process.h"

namespace mqam {

namespace {

std::vector<std::string> keptArguments;

}  // namespace

void KeepArguments(int count, char** arguments) {
    keptArguments.assign(arguments, arguments + count);
}

const std::vector<std::string>& KeptArguments() {
    return keptArguments;
}

std::vector<std::string> ComposeResumeArguments(const std::vector<std::string>& ofWorker) {
    std::vector<std::string> arguments;
    for (std::size_t i = 1; i < ofWorker.size(); ++i) {
        const std::string& argument = ofWorker[i];
        if (argument == kWorkerOption) {
            ++i;
        } else if (!argument.starts_with("--worker-") && argument != "--accept-loss" && argument != "--yes") {
            arguments.push_back(argument);
        }
    }
    return arguments;
}

std::vector<std::string> ComposeWorkerArguments(const std::vector<std::string>& ofCommand,
                                                const std::vector<std::string>& more) {
    constexpr std::size_t kProgramAndSubcommand = 2;
    std::vector<std::string> all = ofCommand;
    const auto place = static_cast<std::ptrdiff_t>(std::min(kProgramAndSubcommand, all.size()));
    all.insert(all.begin() + place, more.begin(), more.end());
    return all;
}

WorkerEnd RunWorker(const std::vector<std::string>& moreArguments) {
    platform::ProcessOptions options;
    options.endsWithParent = true;
    options.receivesInterrupts = true;
    WorkerEnd end;
    const platform::ProcessHandle worker =
        platform::StartProcess(platform::RunningProgramPath(),
                               ComposeWorkerArguments(keptArguments, moreArguments), options, end.reason);
    if (worker == platform::kNoProcess) return end;
    const platform::ProcessEnd processEnd = platform::ReadMarkedExit(platform::WaitForProcess(worker));
    end.killed = processEnd.killed;
    end.code = processEnd.code;
    end.started = end.killed || end.code != platform::kNotExecuted;
    if (!end.started) end.reason = "the program is not there any more, or not executable";
    return end;
}

}  // namespace mqam
