// mqam: plays the host of the access module on the command line, a subcommand for each task.
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <exception>
#include <memory>

#include "apps/mqam/check_command.h"
#include "apps/mqam/checkpoint_command.h"
#include "apps/mqam/exit_codes.h"
#include "apps/mqam/help_format.h"
#include "apps/mqam/load_command.h"
#include "apps/mqam/platform.h"
#include "apps/mqam/progress.h"
#include "apps/mqam/queue_command.h"
#include "apps/mqam/worker_process.h"

namespace {

int RunProgram(int argc, char** argv) {
    int exitCode = kExitDone;
    CLI::App app{"Loads the messages of an IBM MQ queue through the access module mqamod.", "mqam"};
    app.require_subcommand(1);
    app.formatter(std::make_shared<HelpFormat>());
    app.footer("`mqam SUBCOMMAND --help` shows the options of a subcommand with examples.");
    AddLoadCommand(app, exitCode);
    AddCheckCommand(app, exitCode);
    AddCheckpointCommand(app, exitCode);
    AddQueueCommand(app, exitCode);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // 0 stands for --help; everything else is a wrong command line.
        return app.exit(error) == 0 ? kExitDone : kExitNotStarted;
    }
    return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    OccupyStandardStreams();
    KeepArguments(argc, argv);
    try {
        return RunProgram(argc, argv);
    } catch (const std::exception& error) {
        TellUser(std::string("mqam: ") + error.what() + "\n");
        return kExitModuleFailed;
    }
}
