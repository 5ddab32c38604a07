#include "apps/mqam/check_command.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cerrno>
#include <cstring>
#include <memory>

#include "apps/mqam/exit_codes.h"
#include "apps/mqam/keyword_options.h"
#include "apps/mqam/load_life.h"
#include "apps/mqam/module_requests.h"
#include "apps/mqam/platform.h"
#include "apps/mqam/progress.h"

namespace {

constexpr const char* kExamples =
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
    "Exit codes: 0 in order, 1 an option is wrong, 2 the module refuses the parameters, 3 standard output "
    "cannot be\n"
    "written, 4 the module cannot be loaded.\n";

int WriteAnswer(int descriptor, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        const long written = WriteBytes(descriptor, text.data() + done, text.size() - done);
        if (written <= 0) {
            TellUser(std::string("mqam check: cannot write to standard output: ") + std::strerror(errno) +
                     "\n");
            return kExitTargetFailed;
        }
        done += static_cast<std::size_t>(written);
    }
    return kExitDone;
}

int RunCheck(const ModuleOptions& options) {
    std::string initString;
    std::string complaint;
    if (!ComposeInitString(options, initString, complaint)) {
        TellUser("mqam check: " + complaint + "\n");
        return kExitNotStarted;
    }
    const bool helpWanted = WasKeywordGiven(options, "HELP");
    const int standardOutput =
        ClaimStandardOutput(helpWanted ? ModuleOutput::kToStandardError : ModuleOutput::kDropped);
    if (standardOutput < 0) {
        TellUser(std::string("mqam check: standard output: ") + std::strerror(errno) + "\n");
        return kExitTargetFailed;
    }
    const PIDMMainFunction entryPoint = LoadModule(options.modulePath, complaint);
    if (entryPoint == nullptr) {
        TellUser("mqam check: the module cannot be loaded: " + complaint + "\n");
        return kExitModuleMissing;
    }
    ModuleSession session(entryPoint);
    StartupReport report;
    if (session.AskInit(initString) != pmrcOK || FetchReport(session, helpWanted, report) != pmrcOK) {
        TellUser("mqam check: " + DescribeFailure(session.LastOutcome()));
        return kExitModuleFailed;
    }
    if (session.AskShut() != pmrcOK) {
        TellUser("mqam check: " + DescribeFailure(session.LastOutcome()));
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
    command->footer(kExamples);
    command->callback([options, &exitCode] { exitCode = RunCheck(*options); });
}
