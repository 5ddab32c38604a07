// SPDX-License-Identifier: Apache-2.0

// mqam: plays the host of the access module on the command line, a subcommand for each task.
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <exception>
#include <memory>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/cli/check_command.h"
#include "mqam/cli/checkpoint_command.h"
#include "mqam/cli/command_pages.h"
#include "mqam/cli/explain_command.h"
#include "mqam/cli/help_format.h"
#include "mqam/cli/load_command.h"
#include "mqam/cli/queue_command.h"
#include "mqam/load/worker_process.h"
#include "platform/standard_streams.h"
#include "product_version.h"

namespace mqam {
namespace {

int RunProgram(int argc, char** argv) {
    int exitCode = kExitDone;
    CLI::App app{"Loads the messages of an IBM MQ queue through the access module mqamod.", "mqam"};
    app.require_subcommand(1);
    app.formatter(std::make_shared<HelpFormat>());
    app.footer("`mqam SUBCOMMAND --help` shows the options of a subcommand with examples.");
    app.set_version_flag("--version", std::string("mqam ") + kProductVersion, "Print the version and exit");
    AddLoadCommand(app, exitCode);
    AddCheckCommand(app, exitCode);
    AddCheckpointCommand(app, exitCode);
    AddExplainCommand(app, exitCode);
    AddQueueCommand(app, exitCode);
    AddPageCommands(app, exitCode);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // 0 stands for --help; any other value means a wrong command line.
        return app.exit(error) == 0 ? kExitDone : kExitNotStarted;
    }
    return exitCode;
}

}  // namespace
}  // namespace mqam

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
