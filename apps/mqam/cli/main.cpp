// SPDX-License-Identifier: Apache-2.0

// mqam: plays the host of the access module on the command line, a subcommand for each task.
#include <exception>
#include <string>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/cli/program.h"
#include "mqam/load/worker_process.h"
#include "platform/standard_streams.h"

int main(int argc, char** argv) {
    platform::ReopenClosedStdStreams();
    mqam::KeepArguments(argc, argv);
    try {
        return mqam::RunProgram(argc, argv);
    } catch (const std::exception& error) {
        mqam::PrintMessage(std::string("mqam: ") + error.what() + "\n");
        return mqam::kExitModuleFailed;
    }
}
