#include "mqam/cli/restartable_load.h"

#include <memory>

#include "mqam/base/exit_codes.h"
#include "mqam/base/progress.h"
#include "mqam/load/supervisor.h"
#include "mqam/load/worker.h"
#include "mqam/target/file/file_target.h"
#include "mqam/target/sqlite/sqlite_name.h"
#include "mqam/target/sqlite/sqlite_target.h"
#include "platform/paths.h"

namespace mqam {

namespace {

constexpr std::uint64_t kCheckpointEveryByDefault = 1000;

// Returns what speaks against the combination of options, or an empty string.
std::string FindContradiction(const LoadOptions& options) {
    if (options.target == "-") {
        return "standard output cannot be cut back: a load that can be restarted needs a file (--to FILE)";
    }
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
    if (!IsSqliteName(options.target)) return "";
    if (!options.restartFile.empty()) {
        return "--restart-file does not go with a SQLite target: the database keeps the restart information";
    }
    if (options.formatGiven) return "--format does not go with a SQLite target: a row is a record";
    return "";
}

// Returns the target, or null with a complaint.
std::unique_ptr<Target> MakeTarget(const LoadOptions& options, std::string& complaint) {
    if (!IsSqliteName(options.target)) {
        return std::make_unique<FileTarget>(
            FileTargetSettings{platform::AbsolutePath(options.target),
                               platform::FollowLinks(platform::AbsolutePath(options.restartFile)),
                               options.format, options.force, options.append});
    }
    SqliteName name;
    if (!ParseSqliteName(options.target, name, complaint)) return nullptr;
    name.file = platform::AbsolutePath(name.file);
    return MakeSqliteTarget({name, options.force, options.append}, complaint);
}

}  // namespace

int RunRestartableLoad(const LoadOptions& options) {
    std::string complaint = FindContradiction(options);
    const std::unique_ptr<Target> target = complaint.empty() ? MakeTarget(options, complaint) : nullptr;
    WorkerSettings worker;
    AttemptSettings& settings = worker.attempt;
    if (target != nullptr) complaint = FindPathConflict(target->Files());
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
    settings.meetsReceipt = options.workerMeetsReceipt;
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
