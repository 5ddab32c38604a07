#include "apps/mqam/restartable_load.h"

#include <memory>

#include "apps/mqam/absolute_path.h"
#include "apps/mqam/exit_codes.h"
#include "apps/mqam/load_supervisor.h"
#include "apps/mqam/load_worker.h"
#include "apps/mqam/progress.h"
#include "apps/mqam/restartable_file.h"
#include "apps/mqam/restartable_sqlite.h"
#include "apps/mqam/sqlite_name.h"

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
std::unique_ptr<RestartableTarget> MakeTarget(const LoadOptions& options, std::string& complaint) {
    if (!IsSqliteName(options.target)) {
        return std::make_unique<RestartableFile>(RestartableFileSettings{
            AbsolutePath(options.target), FollowLinks(AbsolutePath(options.restartFile)), options.format,
            options.force, options.append});
    }
    SqliteName name;
    if (!ParseSqliteName(options.target, name, complaint)) return nullptr;
    name.file = AbsolutePath(name.file);
    return MakeSqliteTarget({name, options.force, options.append}, complaint);
}

}  // namespace

int RunRestartableLoad(const LoadOptions& options) {
    std::string complaint = FindContradiction(options);
    const std::unique_ptr<RestartableTarget> target =
        complaint.empty() ? MakeTarget(options, complaint) : nullptr;
    RestartLifeSettings settings;
    if (target != nullptr) complaint = FindDoubleUse(target->Files());
    if (complaint.empty() && ComposeInitString(options.module, settings.initString, complaint)) {
        static_cast<void>(ComposeAttributes(options, settings.attributes, complaint));
    }
    if (!complaint.empty()) {
        TellUser("mqam load: " + complaint + "\n");
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
    if (options.workerSince < 0) return SuperviseLoad(options, *target);
    LiveAsWorker(options, settings, *target);
}
