// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/help_command.h"

#include <memory>
#include <string>
#include <vector>

#include "mqam/base/answer.h"
#include "mqam/cli/command_line.h"
#include "mqam/cli/help_format.h"

namespace mqam {

int PrintHelp(const CLI::App& command) {
    const std::string path = PathOf(command);
    return PrintAnswer(path, HelpFormat(HelpWidth()).make_help(&command, path, CLI::AppFormatMode::Normal));
}

void AddHelpCommand(CLI::App& program, int& exitCode) {
    CLI::App* help = program.add_subcommand("help", "Show the help of a command: mqam help load");
    const auto path = std::make_shared<std::vector<std::string>>();
    help->add_option("COMMAND", *path, "the command, with its own command if it has one: queue put");
    help->callback([&program, help, path, &exitCode] {
        std::string error;
        const CLI::App* command = FindCommand(program, *path, error);
        exitCode = command == nullptr ? RefuseCommandLine(*help, error) : PrintHelp(*command);
    });
}

}  // namespace mqam
