#include "mqam/cli/restartable_load.h"

#include <memory>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/load/supervisor.h"
#include "mqam/load/worker.h"
#include "mqam/target/target_kind.h"

namespace mqam {

namespace {

constexpr std::uint64_t kCheckpointEveryByDefault = 1000;

// Returns what speaks against the combination of options, or an empty string.
std::string FindContradiction(const LoadOptions& options) {
    if (options.preserve) {
        return "--preserve does not go with restart information: the checkpoint file stays until the load "
               "is done, and is of no use after that";
    }
    if (WasKeywordGiven(options.module, "HELP")) {
        return "--keyword-help does not go with restart information: `mqam check` with it shows the help";
    }
    for (const std::string& attribute : options.attributes) {
        if (attribute.starts_with("PRESERVE_RESTART_INFO=")) {
            return "--attribute PRESERVE_RESTART_INFO is put by the load itself";
        }
    }
    return "";
}

TargetRequest RequestOf(const LoadOptions& options) {
    return {options.target,      options.restartFile, options.format,
            options.formatGiven, options.force,       options.append};
}

// Makes the target of the load, and refuses options that do not go with it.
Status MakeTarget(const LoadOptions& options, std::unique_ptr<Target>& target) {
    const TargetRequest request = RequestOf(options);
    const TargetKind& kind = FindTargetKind(request.name);
    const Status checked = kind.checkOptions(request);
    return checked.IsOk() ? kind.make(request, target) : checked;
}

}  // namespace

int RunRestartableLoad(const LoadOptions& options) {
    std::string complaint = FindContradiction(options);
    std::unique_ptr<Target> target;
    if (complaint.empty()) complaint = MakeTarget(options, target).Error();
    WorkerSettings worker;
    AttemptSettings& settings = worker.attempt;
    if (target != nullptr) complaint = CheckPathConflicts(target->Files()).Error();
    if (complaint.empty() && ComposeInitString(options.module, settings.initString, complaint)) {
        static_cast<void>(ComposeAttributes(options, settings.attributes, complaint));
    }
    if (!complaint.empty()) {
        PrintMessage("mqam load: " + complaint + "\n");
        return kExitNotStarted;
    }
    // Exclusive, so that no life begins before the queue manager has put back what the one before had got.
    settings.initString += " -MQEX";
    settings.checkpointEveryRecords = options.checkpointEvery;
    settings.checkpointEverySeconds = options.checkpointSeconds;
    if (options.checkpointEvery == 0 && options.checkpointSeconds == 0) {
        settings.checkpointEveryRecords = kCheckpointEveryByDefault;
    }
    settings.completedBefore = options.workerMeetsReceipt;
    settings.followsEnd = options.workerFollowsEnd;
    settings.unfinishedOnly = options.restart == RestartPolicy::kOnly;
    if (options.workerSince < 0) {
        return SuperviseLoad({options.restart, options.retryForSeconds, options.quiet}, *target);
    }
    worker.modulePath = options.module.modulePath;
    worker.commandStartedMs = options.workerSince;
    worker.progress = ChooseProgressStyle(options, false);
    worker.quiet = options.quiet;
    worker.observer = MakeObserver(options);
    RunAsWorker(worker, *target);
}

}  // namespace mqam
