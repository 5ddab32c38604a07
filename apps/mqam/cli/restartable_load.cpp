// SPDX-License-Identifier: Apache-2.0
#include "mqam/cli/restartable_load.h"

#include <chrono>
#include <memory>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/load/supervisor.h"
#include "mqam/load/worker.h"
#include "mqam/load/worker_process.h"
#include "mqam/target/target_kind.h"
#include "platform/paths.h"

namespace mqam {

namespace {

// Refuses options that do not go together.
Status CheckOptions(const LoadOptions& options) {
    if (options.preserve) {
        return Status::Refused(
            "--preserve does not go with restart information: the checkpoint file stays until the load is done, and "
            "is of no use after that");
    }
    if (WasKeywordGiven(options.module, "HELP")) {
        return Status::Refused(
            "--keyword-help does not go with restart information: `mqam check` with it shows the help");
    }
    for (const std::string& attribute : options.attributes) {
        if (attribute.starts_with("PRESERVE_RESTART_INFO=")) {
            return Status::Refused("--attribute PRESERVE_RESTART_INFO is put by the load itself");
        }
    }
    return {};
}

TargetRequest RequestOf(const LoadOptions& options) {
    return {options.target, options.restartFile, options.format,  options.formatGiven,
            options.force,  options.append,      options.newlines};
}

// Makes the target of the load, and refuses options that do not go with it.
Status MakeTarget(const LoadOptions& options, std::unique_ptr<Target>& target) {
    const TargetRequest request = RequestOf(options);
    const TargetKind& kind = FindTargetKind(request.name);
    const Status checked = kind.checkOptions(request);
    return checked.IsOk() ? kind.make(request, target) : checked;
}

// Returns the path as the module can receive it: its keywords know no quoting. A path below the current directory need not
// name the directories above that.
std::string PathForModule(const std::string& path) {
    if (path.find(' ') == std::string::npos) return path;
    const std::string current = platform::AbsolutePath(".");
    return path.starts_with(current) && path.size() > current.size() ? path.substr(current.size() + 1) : path;
}

// Makes the initialization string. What comes first cannot be taken for the value of a keyword that the user left
// incomplete, and what the user gives counts more.
Status ComposeInitString(const LoadOptions& options, const LoadPlaces& places, std::string& initString) {
    // With an exclusive open, no attempt begins before the queue manager has put back the messages of the previous one.
    std::string beginning = "-MQEX ";
    ModuleOptions module = options.module;
    const std::string given = ValueOfKeyword(module, "CKFILE");
    if (!given.empty()) {
        SetKeyword(module, "CKFILE", {PathForModule(RealPath(given))});
    } else {
        const std::string path = PathForModule(places.checkpointFile);
        if (path.find(' ') != std::string::npos) {
            return Status::Refused(
                "the checkpoint file " + path +
                " has a blank in its path, which the module cannot receive: name one without "
                "blanks (--ckfile FILE)");
        }
        beginning += "-CKFILE " + path + " ";
    }
    Status composed = ComposeInitString(module, initString);
    initString = beginning + initString;
    return composed;
}

// Checks the options and makes of them the target and the settings of an attempt.
Status Compose(const LoadOptions& options, std::unique_ptr<Target>& target, AttemptSettings& settings) {
    Status status = CheckOptions(options);
    if (status.IsOk()) status = MakeTarget(options, target);
    if (status.IsOk()) status = CheckPathConflicts(target->Files());
    if (status.IsOk()) status = ComposeInitString(options, target->Places(), settings.initString);
    if (status.IsOk()) status = ComposeAttributes(options, settings.attributes);
    return status;
}

}  // namespace

int RunRestartableLoad(const LoadOptions& options) {
    std::unique_ptr<Target> target;
    WorkerSettings worker;
    AttemptSettings& settings = worker.attempt;
    const Status composed = Compose(options, target, settings);
    if (!composed.IsOk()) {
        PrintMessage("mqam load: " + composed.Error() + "\n" + options.usage);
        return kExitNotStarted;
    }
    settings.checkpointEveryRecords = options.checkpointEvery;
    settings.checkpointEverySeconds = options.checkpointSeconds;
    settings.timeout = std::chrono::seconds(options.timeoutSeconds);
    if (options.checkpointEvery == 0 && options.checkpointSeconds == 0) {
        settings.checkpointEveryRecords = kCheckpointEveryByDefault;
    }
    settings.durability = options.durability;
    settings.journalLibrary = FindJournalLibrary();
    settings.directory = platform::AbsolutePath(".");
    settings.command = ComposeResumeArguments(KeptArguments());
    settings.completedBefore = options.workerCompletedBefore;
    settings.followsEnd = options.workerFollowsEnd;
    settings.unfinishedOnly = options.restart == RestartPolicy::kOnly;
    if (options.workerSince < 0) {
        return SuperviseLoad({options.restart, options.retryForSeconds, options.quiet, options.acceptLoss},
                             *target);
    }
    worker.modulePath = options.module.modulePath;
    worker.commandStartedMs = options.workerSince;
    worker.progress = ChooseProgressStyle(options, false);
    worker.quiet = options.quiet;
    worker.detail = DetailOf(options);
    worker.usage = options.usage;
    worker.observer = MakeObserver(options);
    RunAsWorker(worker, *target);
}

}  // namespace mqam
