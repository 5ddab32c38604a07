// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/check_command.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cerrno>
#include <cstring>
#include <memory>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/cli/command_line.h"
#include "mqam/cli/keyword_options.h"
#include "mqam/explain/advice.h"
#include "mqam/explain/failure_report.h"
#include "mqam/load/plain_load.h"
#include "mqam/module/module_session.h"
#include "platform/file.h"
#include "platform/standard_streams.h"

namespace mqam {

namespace {

constexpr const char* kCheckExamples =
    "Examples:\n"
    "  mqam check --qmgr QM1 --queue ORDERS --rwait 5\n"
    "      what a load with these options would use\n"
    "  mqam check --parmfile orders.parm\n"
    "      is the parameter file in order?\n"
    "  mqam check --qmgr QM1 --queue ORDERS --keyword-help\n"
    "      the module's own help on its keywords\n"
    "\n"
    "Neither the queue manager nor any file but a trace and the parameter file is touched.\n"
    "\n"
    "Exit codes: 0 in order, 1 an option or a parameter is wrong, 2 the module failed, 3 standard output "
    "cannot be\n"
    "written, 4 the module cannot be loaded.\n";

int WriteAnswer(int descriptor, const std::string& text) {
    if (platform::WriteWhole(descriptor, text.data(), text.size())) return kExitDone;
    PrintMessage(std::string("mqam check: cannot write to standard output: ") + std::strerror(errno) + "\n");
    return kExitTargetFailed;
}

int RunCheck(const CLI::App& command, const ModuleOptions& options, FailureDetail detail) {
    std::string initString;
    std::vector<std::string> warnings;
    Status composed = CheckParameterFile(options, warnings);
    if (composed.IsOk()) composed = ComposeInitString(options, initString);
    if (!composed.IsOk()) return RefuseCommandLine(command, composed.Error());
    PrintWarnings("mqam check", warnings);
    const bool helpWanted = WasKeywordGiven(options, "HELP");
    const int standardOutput = platform::RedirectStdout(helpWanted ? platform::ModuleOutput::kToStandardError
                                                                   : platform::ModuleOutput::kDropped);
    if (standardOutput < 0) {
        PrintMessage(std::string("mqam check: standard output: ") + std::strerror(errno) + "\n");
        return kExitTargetFailed;
    }
    PIDMMainFunction entryPoint = nullptr;
    const Status loaded = LoadModule(options.modulePath, entryPoint);
    if (!loaded.IsOk()) {
        PrintMessage("mqam check: " + loaded.Error() + "\n");
        return kExitModuleMissing;
    }
    ModuleSession session(entryPoint);
    StartupReport report;
    if (session.Init(initString) != pmrcOK || FetchReport(session, helpWanted, report) != pmrcOK) {
        PrintMessage("mqam check: " + DescribeFailure(session.LastFailure(), detail));
        if (!IsWrongOption(session.LastFailure())) return kExitModuleFailed;
        PrintMessage(UsageLineOf(command));
        return kExitNotStarted;
    }
    if (session.Shut() != pmrcOK) {
        PrintMessage("mqam check: " + DescribeFailure(session.LastFailure(), detail));
        return kExitModuleFailed;
    }
    return WriteAnswer(standardOutput, FormatReport(report, ""));
}

}  // namespace

void AddCheckCommand(CLI::App& app, int& exitCode) {
    CLI::App* command =
        app.add_subcommand("check", "Show the parameters in effect, or the error, without touching a queue");
    const auto options = std::make_shared<ModuleOptions>();
    AddModuleOptions(*command, *options);
    command->footer(kCheckExamples);
    const auto verbose = std::make_shared<bool>(false);
    command->add_flag("-v,--verbose", *verbose, "show the module's part in a failure")->group("Diagnosis");
    command->callback([command, options, verbose, &exitCode] {
        const FailureDetail detail = *verbose ? FailureDetail::kForDevelopers : FailureDetail::kForOperators;
        exitCode = RunCheck(*command, *options, detail);
    });
}

}  // namespace mqam
