// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/program.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <string>
#include <vector>

#include "mqam/base/answer.h"
#include "mqam/base/exit_codes.h"
#include "mqam/cli/check_command.h"
#include "mqam/cli/checkpoint_command.h"
#include "mqam/cli/command_line.h"
#include "mqam/cli/command_pages.h"
#include "mqam/cli/config_file.h"
#include "mqam/cli/explain_command.h"
#include "mqam/cli/help_command.h"
#include "mqam/cli/load_command.h"
#include "mqam/cli/queue_command.h"
#include "mqam/cli/restart_command.h"
#include "product_version.h"

namespace mqam {

int RunProgram(int argc, char** argv) {
    int exitCode = kExitDone;
    CLI::App app{"Loads the messages of an IBM MQ queue through the access module mqamod.", "mqam"};
    app.require_subcommand(1);
    app.footer("`mqam help COMMAND` shows the options of a command with examples.\n");
    app.set_version_flag("--version", std::string("mqam ") + kProductVersion, "Print the version and exit");
    AddLoadCommand(app, exitCode);
    AddCheckCommand(app, exitCode);
    AddCheckpointCommand(app, exitCode);
    AddRestartCommand(app, exitCode);
    AddExplainCommand(app, exitCode);
    AddQueueCommand(app, exitCode);
    AddHelpCommand(app, exitCode);
    AddPageCommands(app, exitCode);
    std::vector<std::string> words(argv + 1, argv + argc);
    const Status expanded = ExpandConfigFile(app, words);
    if (!expanded.IsOk()) return RefuseCommandLine(*ReadCommandLine(app, words).command, expanded.Error());
    const CommandLine line = ReadCommandLine(app, words);
    if (line.wantsHelp) return PrintHelp(*line.command);
    if (!line.error.empty()) return RefuseCommandLine(*line.command, line.error);
    try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    } catch (const CLI::CallForVersion& version) {
        return PrintAnswer("mqam", std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        return RefuseCommandLine(*line.command, DescribeParseError(error));
    }
    return exitCode;
}

}  // namespace mqam
